// The small HTTP layer under every request to the service: one libcurl easy handle per request, no
// connection, cookie or handle kept between requests, no redirect followed, certificate checks as the library
// sets them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace service {

inline constexpr char kMissingRequestData[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera request is missing required data.");
inline constexpr char kUnpreparedAuthentication[] =
    QT_TRANSLATE_NOOP("Messages", "Unable to prepare the Tessera authentication request.");

// What failed requests say with something filled in. They are logged in English; whoever shows one finds it again by
// these.
inline constexpr char kNetworkError[] = QT_TRANSLATE_NOOP("Messages", "Network error: %1");
inline constexpr char kHttpStatus[] = QT_TRANSLATE_NOOP("Messages", "Tessera returned HTTP %1.");

// Keeps the HTTP library initialised while it lives. Operations pair it around themselves, and a scan around
// all it does; nesting is harmless.
class HttpLibrary {
public:
    HttpLibrary();
    ~HttpLibrary();
    HttpLibrary(const HttpLibrary&) = delete;
    HttpLibrary& operator=(const HttpLibrary&) = delete;
};

// What a request came to. `body` is the reply's on success; `errorText` is a text for the user on failure.
struct HttpOutcome {
    bool ok = false;
    QByteArray body;
    QString errorText;
};

struct HttpRequest {
    QString path;               // "/api/..." below the service address in force, query included
    bool isPost = false;        // else GET
    QByteArray postBody;        // may be empty: a POST without a body
    QList<QByteArray> headers;  // whole header lines, sent in this order

    // The error text where a header line cannot be built; the key's line has its own in every request.
    const char* unpreparedText = kUnpreparedAuthentication;
};

// How long and how much a request may take. Requests to the service use these defaults.
struct HttpLimits {
    long connectSeconds = 10;
    long transferSeconds = 30;  // connecting included
    qsizetype replyBytes = qsizetype{1} << 30;
};

// Sends one request and waits for its reply. Only a complete transfer with status 200 is a success. On
// failure the text is, in this order: the reply's body where there is one, whole, and be it the first part of
// a broken transfer; "Network error: ..." where the transfer failed; "Tessera returned HTTP <status>.". A
// refused service address is the error text, and nothing is sent; the same holds for an empty path and for a
// header line with a control character, which would end it early. A reply beyond its limit fails the
// transfer. Throws std::bad_alloc where the reply as a text does not fit into memory.
[[nodiscard]] HttpOutcome perform(const HttpRequest& request, const HttpLimits& limits = {});

// The key's header line.
[[nodiscard]] QByteArray apiKeyHeader(const QString& apiKey);

}  // namespace service
