// UDF structures for test images: single file entries and file identifiers, and the layout of a whole tree of
// files. Descriptor tags have no checksums.
#pragma once

#include "tests/support/bytes.h"
#include "tests/support/iso_builder.h"
#include "tests/support/sparse_image.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace testsupport {

inline constexpr std::size_t kUdfSector = 2048;

struct UdfAllocationDescriptor {
    std::uint32_t length = 0;
    std::uint32_t block = 0;
    std::uint16_t partition = 0;  // long descriptors only
};

// A file entry (tag 261) or extended file entry (266). Its lengths follow from the rest unless they are set.
struct UdfFileEntrySpec {
    std::uint16_t tag = 261;
    std::uint8_t fileType = 5;        // 4: a directory
    std::uint8_t descriptorKind = 0;  // 0: short, 1: long, 3: embedded data
    std::uint64_t informationLength = 0;
    std::vector<UdfAllocationDescriptor> descriptors = {};
    Bytes embedded = {};                    // in place of the descriptors
    std::size_t extendedAttributeSize = 0;  // zeros before the descriptors
    std::optional<std::uint32_t> extendedAttributeLength = std::nullopt;
    std::optional<std::uint32_t> descriptorsLength = std::nullopt;
};

[[nodiscard]] Bytes udfFileEntry(const UdfFileEntrySpec& spec);

// A file identifier descriptor. Its lengths follow from the name unless they are set.
struct UdfFileIdentifierSpec {
    std::string name = {};  // empty: the parent's entry
    std::uint32_t block = 0;
    std::uint16_t partition = 0;
    std::uint8_t characteristics = 0;  // 0x02: a directory, 0x04: deleted, 0x08: the parent
    std::uint8_t compressionId = 8;    // 16: the name as 16-bit characters
    std::uint16_t tag = 257;
    std::size_t implementationUseSize = 0;
    std::optional<std::uint16_t> crcLength = std::nullopt;
    std::optional<std::uint8_t> identifierLength = std::nullopt;
};

[[nodiscard]] Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec);

// What the descriptors of one file or directory of a tree say in place of the truth.
struct UdfNodeOverride {
    std::optional<std::uint32_t> block = std::nullopt;  // of the data, which are put there, too
    std::optional<std::uint64_t> informationLength = std::nullopt;
    std::optional<std::vector<UdfAllocationDescriptor>> descriptors = std::nullopt;
    std::optional<std::uint8_t> compressionId = std::nullopt;
};

struct UdfSpec {
    std::uint16_t anchorTag = 2;
    std::optional<std::uint32_t> sequenceLength = std::nullopt;  // in bytes
    std::vector<std::uint32_t> partitionStarts = {320};          // one partition descriptor each
    std::uint8_t partition = 0;  // reference of the partition that holds everything
    std::uint16_t fileSetTag = 256;
    std::uint16_t fileEntryTag = 261;
    std::uint8_t descriptorKind = 0;
    std::size_t blocksPerExtent = SIZE_MAX;  // a file is cut into extents, with a block between them
    std::map<std::string, UdfNodeOverride> nodes = {};  // by path; the root's is ""
};

struct UdfImage {
    SparseImage image;
    std::map<std::string, std::uint32_t> dataSectors;  // where each file's data begin
};

// The image of the files: the anchor in sector 256, the volume descriptors behind it, and in the partition
// the file set, the file entries and the data, everything from a block's start.
[[nodiscard]] UdfImage buildUdf(const std::vector<TreeFile>& files, const UdfSpec& spec = {});

}  // namespace testsupport
