#include "scan/error_result.h"

#include "base/log.h"

namespace scan {

void setError(DiscScanResult& result, const Message& error)
{
    result.error = error;
    result.errorMessage = error.english();
}

DiscScanResult errorResult(const Message& message)
{
    DiscScanResult result;
    setError(result, message);
    logging::log(logging::kPlatterscope, logging::kError, result.errorMessage);
    return result;
}

}  // namespace scan
