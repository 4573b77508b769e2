// The document inside a configuration, which the reply carries as a text. Whatever is in it, the configuration is there.
#include "fuzz/target.h"
#include "service/configurations.h"

void fuzz::target(Input input)
{
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
