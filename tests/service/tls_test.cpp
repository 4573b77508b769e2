// Part of tls_test.py: authenticates with the service in force and prints how that ended.
#include "service/authentication.h"

#include <cstdio>

int main()
{
    const service::AuthenticationOutcome outcome = service::authenticate(QStringLiteral("some key"));
    std::puts(outcome.ok ? "accepted" : outcome.error.english().toUtf8().constData());
}
