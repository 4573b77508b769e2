// The service's list of a disc's configurations.
#include "fuzz/abort_unless.h"
#include "service/configurations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto [isArray, configurations] = service::parseConfigurationArray(text);
    fuzz::abortUnless(isArray || !configurations);
    if (configurations) { fuzz::abortUnless(configurations->size() <= service::kMaximumConfigurations); }
    return 0;
}
