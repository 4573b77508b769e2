// A disc as names and bytes, which becomes a directory or a disc image, so that one test runs over every form
// a disc comes in.
#pragma once

#include "tests/support/iso_builder.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/udf250_builder.h"
#include "tests/support/udf_builder.h"

#include <array>
#include <string>
#include <vector>

namespace testsupport {

// Udf is UDF 1.02. Udf250Mirror is UDF 2.50 of which the metadata file cannot be read, but its mirror.
enum class DiscForm { Directory, Iso, Udf, Hybrid, Udf250, Udf250Mirror };

// The forms of a DVD and of a Blu-ray disc.
inline constexpr std::array kAllDiscForms = {DiscForm::Directory, DiscForm::Iso};
inline constexpr std::array kAllBlurayForms = {DiscForm::Directory, DiscForm::Iso,    DiscForm::Udf,
                                               DiscForm::Hybrid,    DiscForm::Udf250, DiscForm::Udf250Mirror};

class DiscTree {
public:
    // Adds a file, or replaces it in its place: "VIDEO_TS/VIDEO_TS.IFO".
    DiscTree& add(const std::string& path, Bytes bytes);
    DiscTree& remove(const std::string& path);
    [[nodiscard]] const std::vector<TreeFile>& files() const { return m_files; }

    // Writes the files below `root`, which is made where it is missing.
    void writeDirectory(const std::filesystem::path& root) const;

    [[nodiscard]] SparseImage iso(const IsoSpec& spec = {}) const { return buildIso(m_files, spec); }

    [[nodiscard]] SparseImage udf(const UdfSpec& spec = {}) const { return buildUdf(m_files, spec).image; }

    [[nodiscard]] Udf250Image udf250(const Udf250Spec& spec = {}) const { return buildUdf250(m_files, spec); }

    // One image with both file systems over the same data.
    [[nodiscard]] SparseImage hybrid(IsoSpec isoSpec = {}, const UdfSpec& udfSpec = {}) const;

    // Writes the disc in the given form into the folder; the path to open.
    [[nodiscard]] std::string write(DiscForm form, const TemporaryFolder& folder) const;

private:
    std::vector<TreeFile> m_files;
};

}  // namespace testsupport
