#include "service/disc_requests.h"

#include "service/http_client.h"
#include "service/json_value.h"
#include "service/service_address.h"

#include <zlib.h>

#include <optional>
#include <utility>

namespace service {

namespace {

constexpr char kMissingPackageData[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera title package request is missing required data.");
constexpr char kCompressionFailed[] = QT_TRANSLATE_NOOP("Messages", "Unable to compress the title package.");
constexpr char kUnpreparedPackage[] =
    QT_TRANSLATE_NOOP("Messages", "Unable to prepare the Tessera title package request.");
constexpr char kInvalidFindResponse[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid find response.");
constexpr char kInvalidDiscId[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera returned an invalid disc identifier.");

constexpr qsizetype kSha256Bytes = 32;

struct Endpoints {
    const char* find;
    const char* add;
    const char* newDiscPage;
    const char* contentType;
};

constexpr Endpoints kDvd = {"/api/tessera/dvd/find/", "/api/tessera/dvd/add/", "/tessera/dvd/new/?uid=%1",
                            "application/vnd.platterscope.dvd-title-package"};
constexpr Endpoints kBluray = {"/api/tessera/bluray/find/", "/api/tessera/bluray/add/",
                               "/tessera/bluray/new/?uid=%1",
                               "application/vnd.platterscope.bluray-title-package"};

const Endpoints& endpoints(DiscKind kind)
{
    return kind == DiscKind::Bluray ? kBluray : kDvd;
}

// Returns the bytes as a zlib stream with header and Adler-32: HTTP calls this format "deflate".
std::optional<QByteArray> compress(const QByteArray& bytes)
{
    if (!std::in_range<uLong>(bytes.size())) { return std::nullopt; }
    const auto size = static_cast<uLong>(bytes.size());
    uLongf length = compressBound(size);
    QByteArray stream(static_cast<qsizetype>(length), Qt::Uninitialized);
    const int result = compress2(reinterpret_cast<Bytef*>(stream.data()), &length,
                                 reinterpret_cast<const Bytef*>(bytes.constData()), size, Z_BEST_COMPRESSION);
    if (result != Z_OK) { return std::nullopt; }
    stream.resize(static_cast<qsizetype>(length));
    return stream;
}

HttpOutcome postTitlePackage(const char* path, const TitlePackage& package, const QString& apiKey)
{
    if (package.bytes.isEmpty() || package.sha256.size() != kSha256Bytes || apiKey.isEmpty()) {
        return {.ok = false, .body = {}, .error = kMissingPackageData};
    }
    const std::optional<QByteArray> stream = compress(package.bytes);
    if (!stream) { return {.ok = false, .body = {}, .error = kCompressionFailed}; }
    const HttpLibrary library;
    HttpRequest request;
    request.path = QString::fromLatin1(path);
    request.isPost = true;
    request.postBody = *stream;
    request.headers = {
        apiKeyHeader(apiKey), QByteArray("Content-Type: ") + endpoints(package.kind).contentType,
        "Content-Encoding: deflate", "X-Platterscope-Package-SHA256: " + package.sha256.toHex()};
    request.unpreparedText = kUnpreparedPackage;
    return perform(request);
}

}  // namespace

FindOutcome findDisc(const TitlePackage& package, const QString& apiKey)
{
    HttpOutcome reply = postTitlePackage(endpoints(package.kind).find, package, apiKey);
    if (!reply.ok) { return {.ok = false, .reply = {}, .error = reply.error}; }
    std::optional<ConfigurationReply> parsed = parseConfigurationReply(std::move(reply.body));
    if (!parsed) { return {.ok = false, .reply = {}, .error = kInvalidFindResponse}; }
    return {.ok = true, .reply = *std::move(parsed), .error = {}};
}

AddOutcome addDisc(const TitlePackage& package, const QString& apiKey)
{
    const HttpOutcome reply = postTitlePackage(endpoints(package.kind).add, package, apiKey);
    if (!reply.ok) { return {.ok = false, .discId = 0, .error = reply.error}; }
    const std::optional<qint64> discId =
        parseDecimal({reply.body.constData(), static_cast<std::size_t>(reply.body.size())});
    if (!discId) { return {.ok = false, .discId = 0, .error = kInvalidDiscId}; }
    return {.ok = true, .discId = *discId, .error = {}};
}

QString newDiscUrl(DiscKind kind, qint64 discId)
{
    const ServiceAddress address = currentServiceAddress();
    if (discId == 0 || !address.isUsable()) { return {}; }
    return address.origin + QString::fromLatin1(endpoints(kind).newDiscPage).arg(discId);
}

}  // namespace service
