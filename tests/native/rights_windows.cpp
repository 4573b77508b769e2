#include "tests/native/rights.h"

#include <windows.h>
#include <aclapi.h>

#include <memory>

namespace native_test {

namespace {

struct LocalFreer {
    void operator()(void* memory) const { ::LocalFree(memory); }
};

// Adds an entry to the rights that are there.
bool giveEverybody(const std::filesystem::path& path, DWORD rights)
{
    PACL former = nullptr;
    PSECURITY_DESCRIPTOR memory = nullptr;
    std::wstring name = path.native();
    if (::GetNamedSecurityInfoW(name.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                &former, nullptr, &memory) != ERROR_SUCCESS) {
        return false;
    }
    const std::unique_ptr<void, LocalFreer> descriptor(memory);
    wchar_t everybody[] = L"EVERYONE";
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = rights;
    entry.grfAccessMode = GRANT_ACCESS;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_NAME;
    entry.Trustee.ptstrName = everybody;
    PACL list = nullptr;
    if (::SetEntriesInAclW(1, &entry, former, &list) != ERROR_SUCCESS) { return false; }
    const std::unique_ptr<ACL, LocalFreer> closer(list);
    return ::SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                   list, nullptr) == ERROR_SUCCESS;
}

}  // namespace

bool giveEverybodyRead(const std::filesystem::path& path)
{
    return giveEverybody(path, FILE_GENERIC_READ);
}

bool giveEverybodyWrite(const std::filesystem::path& path)
{
    return giveEverybody(path, FILE_GENERIC_READ | FILE_GENERIC_WRITE | FILE_DELETE_CHILD);
}

}  // namespace native_test
