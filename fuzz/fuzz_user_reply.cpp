// The service's reply about the user whose key was sent.
#include "fuzz/target.h"
#include "service/authentication.h"

void fuzz::target(Input input)
{
    const QByteArray text(reinterpret_cast<const char*>(input.data()), static_cast<qsizetype>(input.size()));
    const auto user = service::parseUserReply(text);
    require(!user || !user->username.isEmpty());
}
