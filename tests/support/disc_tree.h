// A disc as names and bytes, which becomes a directory or a disc image, so that one test runs over every form
// a disc comes in.
//
// All images share one layout:
//
//   sector 16  ISO-9660: volume descriptor (root's record at 156); without UDF the directories and files follow from
//              sector 18 on, the root directory first
//          32  UDF: volume descriptor sequence: primary, logical volume, then the partitions
//         256  anchor (16 length and 20 first sector of the sequence)
//         288  the partition: the file set, the file entries, the directories, then the files' data (and, in a hybrid,
//              the directories of ISO-9660); UDF 2.50 has the entries of the metadata file and of its mirror in front,
//              and keeps file set, file entries and directories in the metadata file and in a copy of it
#pragma once

#include "tests/support/image_structures.h"
#include "tests/support/sparse_image.h"
#include "tests/support/temporary_folder.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

inline constexpr std::uint64_t kIsoDescriptor = 16 * kSector;  // offsets in the image
inline constexpr std::uint64_t kUdfLogicalVolume = 33 * kSector;
inline constexpr std::uint64_t kUdfFirstPartition = 34 * kSector;
inline constexpr std::uint64_t kUdfAnchor = 256 * kSector;
inline constexpr std::uint32_t kUdfPartitionSector = 288;
inline constexpr std::uint64_t kMetadataFile = kUdfPartitionSector * kSector;  // UDF 2.50: file entries
inline constexpr std::uint64_t kMetadataMirrorFile = kMetadataFile + kSector;

// The forms that a disc comes in. Udf is UDF 1.02, a hybrid has ISO-9660 and UDF 1.02 over the same data. Udf250Mirror
// is UDF 2.50 without a readable metadata file: its mirror has to be used.
enum class DiscForm { Directory, Iso, Udf, Hybrid, Udf250, Udf250Mirror };

// A file of a tree: "VIDEO_TS/VIDEO_TS.IFO" and its bytes.
struct TreeFile {
    std::string path;
    Bytes bytes;
};

// Choices that a form leaves.
struct ImageSpec {
    std::string volumeId = "TEST_DISC";  // ISO-9660
    // The first sector of a file's data, by path; in ISO-9660 alone and UDF 1.02 also of a directory's. All else is placed
    // in order.
    std::map<std::string, std::uint32_t> sectors = {};

    // UDF 1.02: the tag of file entries, 261 or 266 (which UDF 2.50 always has), and how many other partitions have lower
    // references.
    std::uint16_t fileEntryTag = 261;
    std::uint16_t partitionsBefore = 0;
    // Of allocation descriptors: 0 short, 1 long, 3 embedded data. UDF 2.50: of directories; files have long ones.
    std::uint8_t descriptorKind = 0;
    // The data are cut into extents of so many blocks; in UDF 2.50 those of files and of the metadata file.
    std::uint32_t blocksPerExtent = 1U << 18U;
    std::uint16_t partitionNumber = 0;

    // UDF 2.50
    bool hasMetadataCopy = true;         // else the mirror leads to the metadata file's own blocks
    bool isMetadataMapFirst = false;     // the metadata partition has reference 0 and the real one 1
    std::uint32_t unrecordedBlocks = 0;  // in the metadata, after the file set
};

// Offsets in the image of what a test may want to patch; 0 for what the form does not have, or has embedded. A file that
// claims 4 GiB: image.putLe(image.placeOf("BDMV/index.bdmv").record + 10, UINT32_MAX, 4).
struct Place {
    std::uint64_t record = 0;  // ISO-9660: the directory record
    std::uint64_t entry = 0;   // UDF: the file entry
    std::uint64_t data = 0;    // of a directory in a hybrid: ISO-9660's
};

struct BuiltImage : SparseImage {
    // Of a file or directory by path; the root's is "". In UDF 2.50 within the metadata file, not its copy.
    [[nodiscard]] const Place& placeOf(const std::string& path) const { return places.at(path); }

    std::map<std::string, Place> places;
    // UDF: the file set descriptor; UDF 2.50: the first block of the metadata, and of the copy that the mirror leads to.
    std::uint64_t fileSet = 0;
    std::uint64_t fileSetCopy = 0;
};

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
    [[nodiscard]] BuiltImage image(DiscForm form, const ImageSpec& spec = {}) const;

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
