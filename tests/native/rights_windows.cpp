#include "tests/native/folder_fixture.h"

#include <windows.h>
#include <sddl.h>

namespace {

bool setRights(const std::filesystem::path& path, const wchar_t* rights)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const bool isDone = ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
                            rights, SDDL_REVISION_1, &descriptor, nullptr) != FALSE &&
                        ::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor) != FALSE;
    ::LocalFree(descriptor);
    return isDone;
}

}  // namespace

bool native_test::giveEverybodyRead(const std::filesystem::path& path)
{
    return setRights(path, L"D:(A;;FA;;;BA)(A;;FRFX;;;WD)");
}

bool native_test::giveEverybodyWrite(const std::filesystem::path& path)
{
    return setRights(path, L"D:(A;;FA;;;WD)");
}
