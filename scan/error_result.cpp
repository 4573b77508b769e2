#include "scan/error_result.h"

#include "base/log.h"

namespace scan {

QString noMemoryText()
{
    return QStringLiteral(QT_TRANSLATE_NOOP("Messages", "There is not enough memory to read the disc."));
}

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
