// Where the Tessera service is. The default is compiled in (CMake variable PLATTERSCOPE_SERVICE_URL); the
// environment variable of the same name overrides it, which is how a locally run service is used.
#pragma once

#include <QString>

namespace service {

// One origin that may be asked, or the reason why it may not. Exactly one of `origin` and `problem` is set.
struct ServiceAddress {
    QString origin;  // "https://host[:port]", no path and no trailing slash; paths are appended to it
    QString host;    // the host alone, lower case, without port and without the brackets of an IPv6 address
    bool isLoopback = false;
    QString problem;  // a sentence for the user, when the address is refused

    [[nodiscard]] bool isUsable() const { return problem.isEmpty(); }
};

// Judges an address text. https is accepted for every host, http for loopback hosts alone ("localhost",
// 127.0.0.0/8, [::1]), since the key travels in a header. User information, a query, a fragment or a path
// other than "/" are refused: the address is an origin.
[[nodiscard]] ServiceAddress parseServiceAddress(const QString& text);

// The address in force: the environment's where that is set and not empty, else the compiled-in one.
[[nodiscard]] ServiceAddress currentServiceAddress();

}  // namespace service
