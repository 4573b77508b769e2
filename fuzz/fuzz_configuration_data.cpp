// The document inside a configuration, which the reply carries as a text: the input is that document.
#include "fuzz/abort_unless.h"
#include "service/configurations.h"

#include <cstdio>

namespace {

QByteArray quoted(const QByteArray& text)
{
    QByteArray quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c >= 0 && c < ' ') {
            quoted += "\\u00" + QByteArray::number(c, 16).rightJustified(2, '0');
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray document(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto reply = service::parseConfigurationReply(
        R"({"Disc ID": 17, "Configurations": [{"UID": 3, "Data": )" + quoted(document) + "}]}");
    // Whatever is in it, the configuration is there.
    fuzz::abortUnless(reply && reply->isFound && reply->configurations.size() == 1);
    fuzz::abortUnless(reply->configurations.first().uid == 3);
    return 0;
}
