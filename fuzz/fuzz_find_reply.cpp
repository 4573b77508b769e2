// The service's reply to a search for a disc.
#include "fuzz/reply_text.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
    const auto reply = service::parseConfigurationReply(textOf(input));
    require(!reply || reply->isFound || (reply->configurations.isEmpty() && reply->discId == 0));
}
