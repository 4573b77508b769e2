#include "tests/native/folder_fixture.h"

#include <sys/stat.h>

bool native_test::giveEverybodyRead(const std::filesystem::path& path)
{
    return ::chmod(path.c_str(), 0755) == 0;
}

bool native_test::giveEverybodyWrite(const std::filesystem::path& path)
{
    return ::chmod(path.c_str(), 0777) == 0;
}
