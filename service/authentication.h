// Asks the service whether it accepts a key, and learns the user's name and the newest program version.
#pragma once

#include <QString>

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

// One blocking request to "/api/tessera/user/". Logs its start and how it ended under "tessera".
[[nodiscard]] AuthenticationOutcome authenticate(const QString& apiKey);

}  // namespace service
