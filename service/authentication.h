// Asks the service whether it accepts a key, and learns the user's name and the newest program version.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace service {

struct ServiceUser {
    qint64 uid = 0;
    QString username;
    QString latestVersion;  // empty when the service does not say
};

// Exactly one of `user` (when ok) and `errorText` (when not) means something.
struct AuthenticationOutcome {
    bool ok = false;
    ServiceUser user;
    QString errorText;
};

// Reads the service's reply, which is { "UID": 17, "Username": "ada", "LatestVersion": "1.3.0" }, the last one
// optional. Empty where the text is nothing of the kind. The text, if it is given away, is freed
// as soon as it has been taken apart. Throws std::bad_alloc.
[[nodiscard]] std::optional<ServiceUser> parseUserReply(QByteArray text);

// One blocking request to "/api/tessera/user/". Logs its start and how it ended under "tessera".
[[nodiscard]] AuthenticationOutcome authenticate(const QString& apiKey);

}  // namespace service
