// The service's list of a disc's configurations.
#include "fuzz/reply_text.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
    const auto [isArray, configurations] = service::parseConfigurationArray(textOf(input));
    require(isArray || !configurations);
    require(!configurations || configurations->size() <= service::kMaximumConfigurations);
}
