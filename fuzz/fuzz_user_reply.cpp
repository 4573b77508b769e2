// The service's reply about the user whose key it was asked about.
#include "fuzz/abort_unless.h"
#include "service/authentication.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto user = service::parseUserReply(text);
    if (user) { fuzz::abortUnless(!user->username.isEmpty()); }
    return 0;
}
