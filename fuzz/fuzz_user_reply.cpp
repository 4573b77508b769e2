// The service's reply about the user whose key was sent.
#include "fuzz/reply_text.h"
#include "service/authentication.h"

void fuzz::target(Input input)
{
    const auto user = service::parseUserReply(textOf(input));
    require(!user || !user->username.isEmpty());
}
