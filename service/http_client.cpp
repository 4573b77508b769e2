#include "service/http_client.h"

#include "base/identity.h"
#include "service/service_address.h"

#include <curl/curl.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

namespace service {

namespace {

constexpr char kNoClient[] =
    QT_TRANSLATE_NOOP("Messages", "Unable to initialize the Tessera network client.");
constexpr char kNetworkError[] = QT_TRANSLATE_NOOP("Messages", "Network error: %1");
constexpr char kHttpStatus[] = QT_TRANSLATE_NOOP("Messages", "Tessera returned HTTP %1.");
constexpr char kApiKeyHeader[] = "apiKey: ";
constexpr long kStatusOk = 200;

struct CurlDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct HeaderListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using HeaderList = std::unique_ptr<curl_slist, HeaderListDeleter>;

struct Reply {
    QByteArray body;
    qsizetype limit = 0;
};

// The write callback: anything but the delivered count makes the library abort the transfer.
std::size_t appendToReply(const char* data, std::size_t size, std::size_t count, void* target) noexcept
{
    Reply& reply = *static_cast<Reply*>(target);
    const std::size_t length = size * count;
    if (length > static_cast<std::size_t>(reply.limit - reply.body.size())) { return 0; }
    try {
        reply.body.append(data, static_cast<qsizetype>(length));
    } catch (const std::exception&) {  // out of memory
        return 0;
    }
    return length;
}

bool appendHeader(HeaderList& list, const QByteArray& line)
{
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; };
    if (std::any_of(line.begin(), line.end(), isControl)) { return false; }
    curl_slist* const longer = curl_slist_append(list.get(), line.constData());
    if (longer == nullptr) { return false; }
    static_cast<void>(list.release());  // the head is part of `longer`
    list.reset(longer);
    return true;
}

void setCommonOptions(CURL* curl, const QByteArray& url, Reply& reply, const HttpLimits& limits)
{
    const QByteArray agent = QByteArray(identity::kName) + '/' + identity::kVersion;
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, agent.constData());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &appendToReply);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, limits.connectSeconds);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, limits.transferSeconds);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
}

// The body is not copied: it must live until the transfer has ended.
void setMethod(CURL* curl, const HttpRequest& request)
{
    if (!request.isPost) {
        curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);
        return;
    }
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.postBody.constData());
    if (!request.postBody.isEmpty()) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.postBody.size()));
    }
}

HttpOutcome failure(Message error)
{
    return {.ok = false, .body = {}, .error = std::move(error)};
}

HttpOutcome judge(CURLcode code, long status, QByteArray body)
{
    if (code == CURLE_OK && status == kStatusOk) {
        return {.ok = true, .body = std::move(body), .error = {}};
    }
    if (!body.isEmpty()) { return failure(Message::verbatim(QString::fromUtf8(body))); }
    if (code != CURLE_OK) {
        return failure(Message(kNetworkError, {QString::fromUtf8(curl_easy_strerror(code))}));
    }
    return failure(Message(kHttpStatus, {QString::number(status)}));
}

}  // namespace

HttpLibrary::HttpLibrary()
{
    curl_global_init(CURL_GLOBAL_ALL);  // if this fails, curl_easy_init() fails as well
}

HttpLibrary::~HttpLibrary()
{
    curl_global_cleanup();
}

HttpOutcome perform(const HttpRequest& request, const HttpLimits& limits)
{
    const ServiceAddress address = currentServiceAddress();
    if (!address.isUsable()) { return failure(address.problem); }
    if (request.path.isEmpty()) { return failure(kMissingRequestData); }

    HeaderList headers;
    for (const QByteArray& line : request.headers) {
        if (!appendHeader(headers, line)) {
            const bool isKey = line.startsWith(kApiKeyHeader);
            return failure(isKey ? kUnpreparedAuthentication : request.unpreparedText);
        }
    }
    const CurlHandle curl(curl_easy_init());
    if (curl == nullptr) { return failure(kNoClient); }

    Reply reply{.body = {}, .limit = limits.replyBytes};
    setCommonOptions(curl.get(), (address.origin + request.path).toUtf8(), reply, limits);
    // A proxy named in the environment would carry the key of a service on this computer away from it.
    if (address.isLoopback) { curl_easy_setopt(curl.get(), CURLOPT_PROXY, ""); }
    // libcurl would wait for its resolver thread, beyond the time limit, if a name server does not answer.
    curl_easy_setopt(curl.get(), CURLOPT_QUICK_EXIT, 1L);
    setMethod(curl.get(), request);
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());

    const CURLcode code = curl_easy_perform(curl.get());
    long status = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    return judge(code, status, std::move(reply.body));
}

QByteArray apiKeyHeader(const QString& apiKey)
{
    return kApiKeyHeader + apiKey.toUtf8();
}

}  // namespace service
