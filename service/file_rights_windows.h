// Who owns a file on Windows, and who may do what with it.
#pragma once

#include "base/native/handle_windows.h"

#include <windows.h>

#include <array>
#include <string>

namespace service {

using AccessList = native::LocalMemory<ACL>;

inline constexpr ACCESS_MASK kAnyAccess = ~ACCESS_MASK{0};
inline constexpr ACCESS_MASK kDirectoryWrite = FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | FILE_DELETE_CHILD |
                                               DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

// The user this process acts for, and whom the files it makes belong to: with administrator rights, the group of
// the administrators.
class OwnIds {
public:
    OwnIds();

    // Whom new files belong to; null when that cannot be found out.
    [[nodiscard]] PSID owner() const;
    [[nodiscard]] bool contain(PSID id) const;

private:
    bool m_isKnown = false;
    alignas(TOKEN_USER) std::array<BYTE, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> m_user;
    alignas(TOKEN_OWNER) std::array<BYTE, sizeof(TOKEN_OWNER) + SECURITY_MAX_SID_SIZE> m_owner;
};

// The system itself and the administrators, who may do everything anyway.
[[nodiscard]] bool isOfTheSystem(PSID id);

class FileRights {
public:
    // Of an open file or directory; the handle needs the right to read them (READ_CONTROL).
    explicit FileRights(HANDLE file);

    // Null when it cannot be found out.
    [[nodiscard]] PSID owner() const { return m_owner; }

    // Whether anybody but the owner and the system has one of these rights; also when that cannot be found out.
    [[nodiscard]] bool giveOthers(ACCESS_MASK rights) const;

private:
    [[nodiscard]] bool entryGivesOthers(void* entry, ACCESS_MASK rights) const;

    PSID m_owner = nullptr;
    PACL m_list = nullptr;
    native::LocalMemory<void> m_descriptor;  // holds both
};

// A list of one entry: everything for the owner. Null on failure, with the error in `error`.
[[nodiscard]] AccessList ownerOnlyList(PSID owner, DWORD inheritance, DWORD& error);

// Gives the file such a list and nothing inherited; the error, 0 for success.
[[nodiscard]] DWORD setOwnerOnlyList(std::wstring path, PSID owner, DWORD inheritance);

}  // namespace service
