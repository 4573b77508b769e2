// The service's list of a disc's configurations.
#include "fuzz/abort_unless.h"
#include "service/configurations.h"
#include "service/json_value.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto text =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto document = service::JsonDocument::parse(text);
    if (!document) { return 0; }
    const auto configurations = service::readConfigurations(document->root());
    if (configurations) { fuzz::abortUnless(configurations->size() <= service::kMaximumConfigurations); }
    return 0;
}
