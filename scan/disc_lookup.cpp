#include "scan/disc_lookup.h"

#include "base/log.h"
#include "package/encoding.h"
#include "service/disc_requests.h"

namespace scan {

namespace {

// The words of a disc kind's flow.
struct LookupTexts {
    const char* lookupStarted;
    const char* found;
    const char* notFound;
    const char* addStarted;
    const char* addFinished;
    const char* findFailed;
    const char* addFailed;
};

constexpr LookupTexts kDvdTexts = {
    "DVD lookup started",
    "DVD lookup finished: disc found",
    "DVD lookup finished: disc not found",
    "DVD add started",
    "DVD add finished",
    QT_TRANSLATE_NOOP("Messages", "Error querying Tessera for DVD."),
    QT_TRANSLATE_NOOP("Messages", "Failed to add DVD to database."),
};

constexpr LookupTexts kBlurayTexts = {
    "Blu-ray lookup started",
    "Blu-ray lookup finished: disc found",
    "Blu-ray lookup finished: disc not found",
    "Blu-ray add started",
    "Blu-ray add finished",
    QT_TRANSLATE_NOOP("Messages", "Error querying Tessera for Blu-ray."),
    QT_TRANSLATE_NOOP("Messages", "Failed to add Blu-ray to database."),
};

void logProgress(const char* message)
{
    logging::log(logging::kTessera, logging::kInfo, QString::fromUtf8(message));
}

void setFailure(DiscScanResult& result, const QString& text, const char* fallback)
{
    result.errorMessage = text.isEmpty() ? QString::fromUtf8(fallback) : text;
    logging::logLines(logging::kTessera, logging::kError, result.errorMessage);
}

}  // namespace

void lookUpDisc(DiscScanResult& result, const QString& apiKey, bool addIfMissing)
{
    const bool isDvd = result.discType == DiscType::Dvd;
    const LookupTexts& texts = isDvd ? kDvdTexts : kBlurayTexts;
    const service::TitlePackage package = {
        isDvd ? service::DiscKind::Dvd : service::DiscKind::Bluray,
        isDvd ? result.dvdPackage : result.blurayPackage,
        isDvd ? result.dvdPackageSha256 : result.blurayPackageSha256,
    };
    if (package.sha256.size() != package::kSha256Size) {
        setFailure(result, {}, texts.findFailed);
        return;
    }

    logProgress(texts.lookupStarted);
    const service::FindOutcome found = service::findDisc(package, apiKey);
    if (!found.ok) {
        setFailure(result, found.errorText, texts.findFailed);
        return;
    }
    result.discId = found.reply.discId;
    result.inDatabase = found.reply.isFound;
    result.configurations = found.reply.configurations;
    result.newDiscUrl = service::newDiscUrl(package.kind, result.discId);
    logProgress(result.inDatabase ? texts.found : texts.notFound);

    if (!result.inDatabase && addIfMissing) {
        logProgress(texts.addStarted);
        const service::AddOutcome added = service::addDisc(package, apiKey);
        if (!added.ok) {
            setFailure(result, added.errorText, texts.addFailed);
            return;
        }
        result.discId = added.discId;
        result.inDatabase = true;
        result.newDiscUrl = service::newDiscUrl(package.kind, result.discId);
        logProgress(texts.addFinished);
    }
    result.ok = 1;
}

}  // namespace scan
