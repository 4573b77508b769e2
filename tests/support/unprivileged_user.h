// While the object lives, a test that runs as root runs as another user: permission bits mean nothing to
// root. A test that is no root's already is left as it is.
#pragma once

#include <unistd.h>

#include <stdexcept>

namespace testsupport {

class UnprivilegedUser {
public:
    UnprivilegedUser()
    {
        if (m_wasRoot && ::seteuid(kNobody) != 0) { throw std::runtime_error("cannot become another user"); }
    }
    ~UnprivilegedUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0) { ::_exit(1); }  // nothing after this would run as meant
    }
    UnprivilegedUser(const UnprivilegedUser&) = delete;
    UnprivilegedUser& operator=(const UnprivilegedUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    bool m_wasRoot = ::geteuid() == 0;
};

}  // namespace testsupport
