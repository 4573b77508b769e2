#include "tests/native/folder_fixture.h"

#include <sys/stat.h>

bool native_test::giveEverybody(const std::filesystem::path& path, bool canWrite)
{
    return ::chmod(path.c_str(), canWrite ? 0777 : 0755) == 0;
}
