#include "tests/native/rights.h"

#include <windows.h>
#include <sddl.h>

bool giveEverybody(const std::filesystem::path& path, bool canWrite)
{
    const wchar_t* const rights = canWrite ? L"D:(A;;FA;;;WD)" : L"D:(A;;FA;;;BA)(A;;FRFX;;;WD)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const bool isDone = ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
                            rights, SDDL_REVISION_1, &descriptor, nullptr) != FALSE &&
                        ::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor) != FALSE;
    ::LocalFree(descriptor);
    return isDone;
}
