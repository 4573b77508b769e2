#include "service/file_rights_windows.h"

#include <aclapi.h>

namespace service {

OwnIds::OwnIds()
{
    HANDLE token = nullptr;
    if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) { return; }
    const native::Handle closer(token);
    DWORD size = 0;
    m_isKnown = ::GetTokenInformation(token, TokenUser, m_user.data(), sizeof m_user, &size) != FALSE &&
                ::GetTokenInformation(token, TokenOwner, m_owner.data(), sizeof m_owner, &size) != FALSE;
}

PSID OwnIds::owner() const
{
    return m_isKnown ? reinterpret_cast<const TOKEN_OWNER*>(m_owner.data())->Owner : nullptr;
}

bool OwnIds::contain(PSID id) const
{
    if (!m_isKnown || id == nullptr) { return false; }
    const PSID user = reinterpret_cast<const TOKEN_USER*>(m_user.data())->User.Sid;
    return ::EqualSid(id, user) != FALSE || ::EqualSid(id, owner()) != FALSE;
}

bool isOfTheSystem(PSID id)
{
    return ::IsWellKnownSid(id, WinLocalSystemSid) != FALSE ||
           ::IsWellKnownSid(id, WinBuiltinAdministratorsSid) != FALSE;
}

FileRights::FileRights(HANDLE file)
{
    PSECURITY_DESCRIPTOR memory = nullptr;
    ::GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &m_owner,
                      nullptr, &m_list, nullptr, &memory);
    m_descriptor.reset(memory);
}

bool FileRights::giveOthers(ACCESS_MASK rights) const
{
    if (m_list == nullptr) { return true; }  // without a list everybody has every right
    for (DWORD i = 0; i < m_list->AceCount; ++i) {
        void* entry = nullptr;
        if (::GetAce(m_list, i, &entry) == FALSE || entryGivesOthers(entry, rights)) { return true; }
    }
    return false;
}

bool FileRights::entryGivesOthers(void* entry, ACCESS_MASK rights) const
{
    const auto* const header = static_cast<const ACE_HEADER*>(entry);
    const bool isForChildren = (header->AceFlags & INHERIT_ONLY_ACE) != 0;
    if (header->AceType == ACCESS_DENIED_ACE_TYPE || isForChildren) { return false; }
    if (header->AceType != ACCESS_ALLOWED_ACE_TYPE) {
        return true;
    }  // conditional or unknown type: counts as access
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const PSID id = &allowed->SidStart;
    return (allowed->Mask & rights) != 0 && ::EqualSid(id, m_owner) == FALSE && !isOfTheSystem(id);
}

AccessList ownerOnlyList(PSID owner, DWORD inheritance, DWORD& error)
{
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = FILE_ALL_ACCESS;
    entry.grfAccessMode = SET_ACCESS;
    entry.grfInheritance = inheritance;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_UNKNOWN;
    entry.Trustee.ptstrName = static_cast<LPWSTR>(owner);
    PACL list = nullptr;
    error = ::SetEntriesInAclW(1, &entry, nullptr, &list);
    return AccessList(list);
}

DWORD setOwnerOnlyList(std::wstring path, PSID owner, DWORD inheritance)
{
    DWORD error = ERROR_SUCCESS;
    const AccessList list = ownerOnlyList(owner, inheritance, error);
    if (error != ERROR_SUCCESS) { return error; }
    return ::SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT,
                                   DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION, nullptr,
                                   nullptr, list.get(), nullptr);
}

}  // namespace service
