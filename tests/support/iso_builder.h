// ISO-9660 structures for test images: single directory records, and the layout of a whole tree of files.
#pragma once

#include "tests/support/bytes.h"
#include "tests/support/sparse_image.h"

#include <map>
#include <optional>
#include <string>

namespace testsupport {

inline constexpr std::size_t kIsoBlock = 2048;

// A directory record. Its lengths follow from the identifier unless they are set.
struct IsoRecordSpec {
    std::string identifier = {};
    std::uint32_t block = 0;
    std::uint32_t sizeBytes = 0;
    std::uint8_t flags = 0;  // 0x02: a directory
    std::optional<std::uint8_t> recordLength = std::nullopt;
    std::optional<std::uint8_t> identifierLength = std::nullopt;
};

// The record's bytes, as many as its length says.
[[nodiscard]] Bytes isoRecord(const IsoRecordSpec& spec);

// What the record of one file or directory of a tree says in place of the truth.
struct IsoRecordOverride {
    std::optional<std::uint32_t> block = std::nullopt;  // the data are put there, too
    std::optional<std::uint32_t> sizeBytes = std::nullopt;
    std::optional<std::uint8_t> flags = std::nullopt;
    std::optional<std::uint8_t> recordLength = std::nullopt;
};

struct IsoSpec {
    std::uint8_t descriptorType = 1;
    std::string standardId = "CD001";
    std::string volumeId = "TEST_DISC";  // padded with blanks to 32 characters
    std::uint16_t blockSizeLittleEndian = kIsoBlock;
    std::uint16_t blockSizeBigEndian = kIsoBlock;
    std::uint8_t rootRecordLength = 34;
    std::string versionSuffix = ";1";
    bool lowerCaseNames = false;
    std::map<std::string, IsoRecordOverride> records = {};  // by path; the root's is ""
};

// A file of a tree: "VIDEO_TS/VIDEO_TS.IFO" and its bytes.
struct TreeFile {
    std::string path;
    Bytes bytes;
};

// The image of the files: the volume descriptor and its terminator, then the directories, then the files in
// the order given, each from a block's start. Records stand in the order of the files as well.
[[nodiscard]] SparseImage buildIso(const std::vector<TreeFile>& files, const IsoSpec& spec = {});

}  // namespace testsupport
