// Calls a fuzz target for each file of a directory, argv[1]: how the tests run the targets over their seeds, without a
// fuzzer. Fails if there is no file.
#include "fuzz/target.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv)
{
    if (argc != 2) { return 2; }
    bool isAnyRead = false;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
        fuzz::target({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        isAnyRead = true;
    }
    return isAnyRead ? 0 : 1;
}
