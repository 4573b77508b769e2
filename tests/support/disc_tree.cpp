#include "tests/support/disc_tree.h"

#include <algorithm>

namespace testsupport {

DiscTree& DiscTree::add(const std::string& path, Bytes bytes)
{
    const auto known = std::ranges::find(m_files, path, &TreeFile::path);
    if (known != m_files.end()) {
        known->bytes = std::move(bytes);
    } else {
        m_files.push_back({path, std::move(bytes)});
    }
    return *this;
}

DiscTree& DiscTree::remove(const std::string& path)
{
    std::erase_if(m_files, [&path](const TreeFile& file) { return file.path == path; });
    return *this;
}

void DiscTree::writeDirectory(const std::filesystem::path& root) const
{
    std::filesystem::create_directories(root);
    for (const TreeFile& file : m_files) {
        const std::filesystem::path path = root / file.path;
        std::filesystem::create_directories(path.parent_path());
        writeFile(path, file.bytes);
    }
}

std::string DiscTree::write(DiscForm form, const TemporaryFolder& folder) const
{
    if (form == DiscForm::Directory) {
        writeDirectory(folder / "disc");
        return folder / "disc";
    }
    iso().writeTo(folder / "disc.iso");
    return folder / "disc.iso";
}

}  // namespace testsupport
