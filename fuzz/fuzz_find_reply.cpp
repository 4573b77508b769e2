// The service's reply to a search for a disc.
#include "fuzz/abort_unless.h"
#include "service/configurations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto reply = service::parseConfigurationReply(text);
    if (reply && !reply->isFound) {
        fuzz::abortUnless(reply->configurations.isEmpty() && reply->discId == 0);
    }
    return 0;
}
