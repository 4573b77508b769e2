// A disc as names and bytes, which becomes a directory or a disc image, so that one test runs over every form
// a disc comes in.
#pragma once

#include "tests/support/iso_builder.h"
#include "tests/support/temporary_folder.h"

#include <array>
#include <string>
#include <vector>

namespace testsupport {

enum class DiscForm { Directory, Iso };

inline constexpr std::array kAllDiscForms = {DiscForm::Directory, DiscForm::Iso};

class DiscTree {
public:
    // Adds a file, or replaces it in its place: "VIDEO_TS/VIDEO_TS.IFO".
    DiscTree& add(const std::string& path, Bytes bytes);
    DiscTree& remove(const std::string& path);

    // Writes the files below `root`, which is made where it is missing.
    void writeDirectory(const std::filesystem::path& root) const;

    [[nodiscard]] SparseImage iso(const IsoSpec& spec = {}) const { return buildIso(m_files, spec); }

    // Writes the disc in the given form into the folder; the path to open.
    [[nodiscard]] std::string write(DiscForm form, const TemporaryFolder& folder) const;

private:
    std::vector<TreeFile> m_files;
};

}  // namespace testsupport
