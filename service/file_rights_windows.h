// Owners and access lists of files on Windows.
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

// The user of this process, and the owner of the files that it creates: with administrator rights, the group of
// administrators.
class OwnIds {
public:
    OwnIds();

    // Returns the owner of new files; null if the query failed.
    [[nodiscard]] PSID owner() const;
    [[nodiscard]] bool contain(PSID id) const;

private:
    bool m_isKnown = false;
    alignas(TOKEN_USER) std::array<BYTE, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> m_user;
    alignas(TOKEN_OWNER) std::array<BYTE, sizeof(TOKEN_OWNER) + SECURITY_MAX_SID_SIZE> m_owner;
};

// Returns whether `id` is the system or the group of administrators, who have every right anyway.
[[nodiscard]] bool isOfTheSystem(PSID id);

class FileRights {
public:
    // Queries an open file or directory. The handle needs READ_CONTROL.
    explicit FileRights(HANDLE file);

    // Returns null if the query failed.
    [[nodiscard]] PSID owner() const { return m_owner; }

    // Returns whether anybody but the owner and the system has one of these rights; true also if the query failed.
    [[nodiscard]] bool giveOthers(ACCESS_MASK rights) const;

private:
    [[nodiscard]] bool entryGivesOthers(void* entry, ACCESS_MASK rights) const;

    PSID m_owner = nullptr;
    PACL m_list = nullptr;
    native::LocalMemory<void> m_descriptor;  // holds both
};

// Returns a list with one entry, all rights for the owner. Null on failure, with the error number in `error`.
[[nodiscard]] AccessList ownerOnlyList(PSID owner, DWORD inheritance, DWORD& error);

// Gives the file such a list without inherited entries. Returns the error number, 0 on success.
[[nodiscard]] DWORD setOwnerOnlyList(std::wstring path, PSID owner, DWORD inheritance);

}  // namespace service
