#include "tests/native/rights.h"

#include <sys/stat.h>

bool giveEverybody(const std::filesystem::path& path, bool canWrite)
{
    return ::chmod(path.c_str(), canWrite ? 0777 : 0755) == 0;
}
