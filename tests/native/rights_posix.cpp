#include "tests/native/rights.h"

#include <sys/stat.h>

namespace native_test {

bool giveEverybodyRead(const std::filesystem::path& path)
{
    return ::chmod(path.c_str(), 0755) == 0;
}

bool giveEverybodyWrite(const std::filesystem::path& path)
{
    return ::chmod(path.c_str(), 0777) == 0;
}

}  // namespace native_test
