// Asks the service whether it accepts a key. The reply names the user and the newest version of the program.
#pragma once

#include "base/message.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace service {

struct ServiceUser {
    qint64 uid = 0;
    QString username;
    QString latestVersion;  // may be empty
};

struct AuthenticationOutcome {
    bool ok = false;
    ServiceUser user;  // if ok
    Message error;     // if not ok
};

// Parses the service's reply: { "UID": 17, "Username": "ada", "LatestVersion": "1.3.0" }; LatestVersion is optional.
// Empty if the text is no such object. Frees a text that is moved here before it reads the values. Throws
// std::bad_alloc.
[[nodiscard]] std::optional<ServiceUser> parseUserReply(QByteArray text);

// Sends one blocking request to "/api/tessera/user/". Logs its start and its result under "tessera".
[[nodiscard]] AuthenticationOutcome authenticate(const QString& apiKey);

}  // namespace service
