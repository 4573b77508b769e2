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

SparseImage DiscTree::hybrid(IsoSpec isoSpec, const UdfSpec& udfSpec) const
{
    UdfImage udf = buildUdf(m_files, udfSpec);
    for (const TreeFile& file : m_files) {
        isoSpec.records[file.path].block = udf.dataSectors.at(file.path);
    }
    udf.image.putAll(iso(isoSpec));
    return std::move(udf.image);
}

std::string DiscTree::write(DiscForm form, const TemporaryFolder& folder) const
{
    std::string path = folder / "disc.iso";
    switch (form) {
    case DiscForm::Directory:
        path = folder / "disc";
        writeDirectory(path);
        break;
    case DiscForm::Iso:
        iso().writeTo(path);
        break;
    case DiscForm::Udf:
        udf().writeTo(path);
        break;
    case DiscForm::Hybrid:
        hybrid().writeTo(path);
        break;
    case DiscForm::Udf250:
        udf250().image.writeTo(path);
        break;
    case DiscForm::Udf250Mirror: {
        Udf250Image disc = udf250();
        disc.wipe(disc.metadataFileSector).image.writeTo(path);
        break;
    }
    }
    return path;
}

}  // namespace testsupport
