// The service's replies: a text is read as each kind of reply, and as the document inside a configuration.
#include "fuzz/target.h"
#include "service/authentication.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
    const QByteArray text(reinterpret_cast<const char*>(input.data()), static_cast<qsizetype>(input.size()));
    const auto user = service::parseUserReply(text);
    require(!user || !user->username.isEmpty());
    const auto found = service::parseConfigurationReply(text);
    require(!found || found->isFound || (found->configurations.isEmpty() && found->discId == 0));
    const auto [isArray, list] = service::parseConfigurationArray(text);
    require(isArray ? !list || list->size() <= service::kMaximumConfigurations : !list);

    QByteArray quoted;
    for (const std::uint8_t byte : input) {
        quoted += byte < 0x80 ? "\\u00" + QByteArray::number(byte, 16).rightJustified(2, '0')
                              : QByteArray(1, static_cast<char>(byte));
    }
    const auto reply = service::parseConfigurationReply(
        R"({"Disc ID": 17, "Configurations": [{"UID": 3, "Data": ")" + quoted + R"("}]})");
    require(reply && reply->isFound && reply->configurations.size() == 1);
    require(reply->configurations.first().uid == 3);
}
