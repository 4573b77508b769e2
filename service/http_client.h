// One HTTP request to the service. Each request has a libcurl easy handle of its own: no connection, cookie or handle is
// kept between requests. Redirects are not followed. libcurl's own defaults check the certificate.
#pragma once

#include "base/message.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace service {

inline constexpr char kMissingRequestData[] =
    QT_TRANSLATE_NOOP("Messages", "Tessera request is missing required data.");
inline constexpr char kUnpreparedAuthentication[] =
    QT_TRANSLATE_NOOP("Messages", "Unable to prepare the Tessera authentication request.");

// Keeps the HTTP library initialised during its lifetime. Every operation has one, and a scan has one for all its
// requests. Objects may nest.
class HttpLibrary {
public:
    HttpLibrary();
    ~HttpLibrary();
    HttpLibrary(const HttpLibrary&) = delete;
    HttpLibrary& operator=(const HttpLibrary&) = delete;
};

struct HttpOutcome {
    bool ok = false;
    QByteArray body;  // of the reply, if ok
    Message error;    // if not ok
};

struct HttpRequest {
    QString path;               // "/api/..." below the service address in force, query included
    bool isPost = false;        // else GET
    QByteArray postBody;        // may be empty: a POST without a body
    QList<QByteArray> headers;  // whole header lines, sent in this order

    // The error if a header line cannot be built. The key's line has its own error in every request.
    const char* unpreparedText = kUnpreparedAuthentication;
};

// Limits of one request. Requests to the service use these defaults.
struct HttpLimits {
    long connectSeconds = 10;
    long transferSeconds = 30;  // connecting included
    qsizetype replyBytes = qsizetype{1} << 30;
};

// Sends one request and waits for its reply. Only a complete transfer with status 200 is a success. The error is the
// first of these that applies:
// - the body of the reply, even if the transfer broke off after a part of it
// - "Network error: ..." if the transfer failed; a reply beyond its limit fails the transfer
// - "Tessera returned HTTP <status>."
// Sends nothing and returns an error if the service address is refused, the path is empty, or a header line contains a
// control character, which would end the line early. Throws std::bad_alloc if the reply does not fit into memory.
[[nodiscard]] HttpOutcome perform(const HttpRequest& request, const HttpLimits& limits = {});

// The key's header line.
[[nodiscard]] QByteArray apiKeyHeader(const QString& apiKey);

}  // namespace service
