// A disc as names and bytes, which becomes a directory or a disc image, so that one test runs over every form
// a disc comes in.
#pragma once

#include "tests/support/image_builder.h"
#include "tests/support/temporary_folder.h"

#include <array>
#include <string>
#include <vector>

namespace testsupport {

// The forms of a DVD and of a Blu-ray disc.
inline constexpr std::array kAllDiscForms = {DiscForm::Directory, DiscForm::Iso};
inline constexpr std::array kAllBlurayForms = {DiscForm::Directory, DiscForm::Iso,    DiscForm::Udf,
                                               DiscForm::Hybrid,    DiscForm::Udf250, DiscForm::Udf250Mirror};

class DiscTree {
public:
    // Adds a file, or replaces it in its place: "VIDEO_TS/VIDEO_TS.IFO".
    DiscTree& add(const std::string& path, Bytes bytes)
    {
        const auto known = std::ranges::find(m_files, path, &TreeFile::path);
        (known != m_files.end() ? *known : m_files.emplace_back(TreeFile{path, {}})).bytes = std::move(bytes);
        return *this;
    }
    DiscTree& remove(const std::string& path)
    {
        std::erase_if(m_files, [&path](const TreeFile& file) { return file.path == path; });
        return *this;
    }
    [[nodiscard]] const std::vector<TreeFile>& files() const { return m_files; }

    // Writes the files below `root`, which is made if it is missing.
    void writeDirectory(const std::filesystem::path& root) const
    {
        std::filesystem::create_directories(root);
        for (const TreeFile& file : m_files) {
            std::filesystem::create_directories((root / file.path).parent_path());
            writeFile(root / file.path, file.bytes);
        }
    }

    // The image of a form other than Directory.
    [[nodiscard]] BuiltImage image(DiscForm form, const ImageSpec& spec = {}) const
    {
        return buildImage(m_files, form, spec);
    }

    // Writes the disc in the given form into the folder; the path to open.
    [[nodiscard]] std::string write(DiscForm form, const TemporaryFolder& folder) const
    {
        const std::string path = folder / (form == DiscForm::Directory ? "disc" : "disc.iso");
        form == DiscForm::Directory ? writeDirectory(path) : image(form).writeTo(path);
        return path;
    }

private:
    std::vector<TreeFile> m_files;
};

}  // namespace testsupport
