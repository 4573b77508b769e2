#include "scan/disc_lookup.h"

#include "base/log.h"
#include "package/encoding.h"
#include "scan/error_result.h"
#include "service/disc_requests.h"

#include <new>

namespace scan {

namespace {

// Log lines and general errors of one disc kind.
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

// Throws std::bad_alloc. `fallback` becomes the general error of the current step.
Message lookUp(DiscScanResult& result, const QString& apiKey, bool addIfMissing, const char*& fallback)
{
    const LookupTexts& texts = result.discType == DiscType::Dvd ? kDvdTexts : kBlurayTexts;
    fallback = texts.findFailed;
    const service::TitlePackage package = {
        result.discType == DiscType::Dvd ? service::DiscKind::Dvd : service::DiscKind::Bluray,
        packageOf(result),
        packageSha256Of(result),
    };
    if (package.sha256.size() != package::kSha256Size) { return fallback; }

    logProgress(texts.lookupStarted);
    const service::FindOutcome found = service::findDisc(package, apiKey);
    if (!found.ok) { return found.error; }
    result.discId = found.reply.discId;
    result.inDatabase = found.reply.isFound;
    result.configurations = found.reply.configurations;
    result.newDiscUrl = service::newDiscUrl(package.kind, result.discId);
    logProgress(result.inDatabase ? texts.found : texts.notFound);

    if (!result.inDatabase && addIfMissing) {
        fallback = texts.addFailed;
        logProgress(texts.addStarted);
        const service::AddOutcome added = service::addDisc(package, apiKey);
        if (!added.ok) { return added.error; }
        result.discId = added.discId;
        result.inDatabase = true;
        result.newDiscUrl = service::newDiscUrl(package.kind, result.discId);
        logProgress(texts.addFinished);
    }
    result.ok = 1;
    return {};
}

}  // namespace

void lookUpDisc(DiscScanResult& result, const QString& apiKey, bool addIfMissing)
{
    const char* fallback = nullptr;
    Message error;
    try {
        error = lookUp(result, apiKey, addIfMissing, fallback);
    } catch (const std::bad_alloc&) {  // fails below with the step's general message
    }
    if (result.ok != 0) { return; }
    setError(result, error.isEmpty() ? Message(fallback) : error);
    logging::logLines(logging::kTessera, logging::kError, result.errorMessage);
}

}  // namespace scan
