#include "scan/error_result.h"

#include "app/log.h"

namespace scan {

DiscScanResult errorResult(const char* message)
{
    return errorResult(QString::fromUtf8(message));
}

DiscScanResult errorResult(const QString& message)
{
    logging::log(logging::kPlatterscope, logging::kError, message);
    DiscScanResult result;
    result.errorMessage = message;
    return result;
}

}  // namespace scan
