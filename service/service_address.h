// The address of the Tessera service. The default is compiled in (CMake variable PLATTERSCOPE_SERVICE_URL). The
// environment variable of the same name overrides it, for a service that runs locally.
#pragma once

#include "base/message.h"

#include <QString>

namespace service {

// The service's origin, or the reason why it is refused. Exactly one of `origin` and `problem` is set.
struct ServiceAddress {
    QString origin;  // "https://host[:port]" without a trailing slash
    QString host;    // lower case, without port and without the brackets of an IPv6 address
    bool isLoopback = false;
    Message problem;  // if the address is refused

    [[nodiscard]] bool isUsable() const { return problem.isEmpty(); }
};

// Parses an address. https is accepted for every host, http for loopback hosts alone ("localhost", 127.0.0.0/8, [::1]),
// because a header carries the key. User information, a query, a fragment and a path other than "/" are refused.
[[nodiscard]] ServiceAddress parseServiceAddress(const QString& text);

// The address of the environment variable if it is set and not empty, else the compiled-in one.
[[nodiscard]] ServiceAddress currentServiceAddress();

}  // namespace service
