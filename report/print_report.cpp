#include "report/print_report.h"

#include "base/log.h"
#include "report/json_report.h"
#include "report/standard_output.h"
#include "report/text_report.h"
#include "scan/disc_path.h"
#include "scan/disc_reader.h"
#include "scan/error_result.h"

#include <QFile>

#include <new>
#include <system_error>

namespace report {

namespace {

constexpr int kFailed = 1;

int fail(const QString& message)
{
    logging::log(logging::kPlatterscope, logging::kError, message);
    return kFailed;
}

// The disc's path in the file system's encoding. Cut out of `given` if possible, because a conversion would change
// bytes that are not valid text.
QByteArray localPathOf(const scan::DiscPath& disc, const QByteArray& given)
{
    const QString decoded = QFile::decodeName(given);
    if (!decoded.startsWith(disc.path)) { return QFile::encodeName(disc.path); }
    return given.chopped(QFile::encodeName(decoded.sliced(disc.path.size())).size());
}

}  // namespace

int printReport(const QByteArray& given, Format format)
{
    try {
        const scan::DiscPath found = scan::discPathOf(QFile::decodeName(given));
        if (!found.problem.isEmpty()) { return fail(found.problem.english()); }
        const QByteArray localPath = localPathOf(found, given);
        const scan::ParsedDisc disc = scan::readDisc(localPath);
        const DiscScanResult result = scan::describeDisc(disc);
        if (result.discType == DiscType::None) { return kFailed; }  // logged by describeDisc()

        const QString path = QString::fromLocal8Bit(localPath);
        const QByteArray report = format == Format::Json ? jsonReport(path, disc, result)
                                                         : textReport(path, disc, result).toLocal8Bit();
        const int error = writeStandardOutput({report.constData(), static_cast<std::size_t>(report.size())});
        if (error == 0) { return 0; }
        return fail(QStringLiteral("cannot write to standard output: %1")
                        .arg(QString::fromStdString(std::generic_category().message(error))));
    } catch (const std::bad_alloc&) {
        return fail(QString::fromLatin1(scan::kNoMemory));
    }
}

}  // namespace report
