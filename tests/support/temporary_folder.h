// A folder of its own under the system's temporary one, removed with all it holds.
#pragma once

#include "tests/support/bytes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace testsupport {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string path = std::filesystem::temp_directory_path() / "platterscope-XXXXXX";
        if (::mkdtemp(path.data()) == nullptr) { throw std::runtime_error("no temporary folder: " + path); }
        m_path = path;
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

    // The path of `name` in the folder, as a text.
    [[nodiscard]] std::string operator/(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::filesystem::path& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) { throw std::runtime_error("cannot write " + path.string()); }
}

}  // namespace testsupport
