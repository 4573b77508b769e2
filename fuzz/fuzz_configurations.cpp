// The service's list of a disc's configurations.
#include "fuzz/target.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
    const QByteArray text(reinterpret_cast<const char*>(input.data()), static_cast<qsizetype>(input.size()));
    const auto [isArray, configurations] = service::parseConfigurationArray(text);
    require(isArray || !configurations);
    require(!configurations || configurations->size() <= service::kMaximumConfigurations);
}
