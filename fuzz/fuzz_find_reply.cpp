// The service's reply to a search for a disc.
#include "fuzz/target.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
    const QByteArray text(reinterpret_cast<const char*>(input.data()), static_cast<qsizetype>(input.size()));
    const auto reply = service::parseConfigurationReply(text);
    require(!reply || reply->isFound || (reply->configurations.isEmpty() && reply->discId == 0));
}
