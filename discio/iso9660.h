// The part of ISO-9660 (ECMA-119) that is needed to find files: the primary volume descriptor and directory records.
//
// Primary volume descriptor, sector 16 of 2,048 bytes:
//     0  type, 1 for the primary descriptor       128  logical block size, little-endian; 130 big-endian
//     1  "CD001"                                  156  directory record of the root, 34 bytes
//    40  volume identifier, 32 bytes, padded
//
// Directory record:
//     0  record length, 0: none before the next block      25  flags, 0x02: a directory
//     2  first block, little-endian (6: big-endian)        32  identifier length
//    10  data length in bytes, little-endian               33  identifier, "NAME.EXT;1"
#pragma once

#include "discio/file_stream.h"
#include "discio/read_budget.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

inline constexpr std::size_t kIsoSectorSize = 2048;
inline constexpr std::uint64_t kIsoDescriptorOffset = 16 * kIsoSectorSize;
inline constexpr std::size_t kIsoVolumeIdSize = 32;
inline constexpr std::uint8_t kIsoRecordMinimum = 34;

struct IsoExtent {
    std::uint32_t block = 0;
    std::uint32_t sizeBytes = 0;
};

struct IsoDirectoryRecord {
    std::string name;            // the identifier up to its version suffix or its first NUL
    std::uint64_t position = 0;  // of the record, in the image
    IsoExtent extent;
    bool isDirectory = false;
};

struct IsoVolume {
    std::uint32_t blockSize = 0;        // the big-endian copy, unchecked
    std::uint8_t rootRecordLength = 0;  // unchecked
    IsoExtent root;
    std::array<std::uint8_t, kIsoVolumeIdSize> volumeId = {};  // with its padding
};

// Parses the 2,048 bytes of sector 16. Empty if they are not a primary volume descriptor.
[[nodiscard]] std::optional<IsoVolume> parsePrimaryVolumeDescriptor(std::span<const std::uint8_t> sector);

// Reads sector 16 of the image and parses it. Empty also if the sector cannot be read whole.
[[nodiscard]] std::optional<IsoVolume> readPrimaryVolumeDescriptor(const NativeFile& image);

// Walks the records of a directory in their order, without those of the directory itself and of its parent.
class IsoDirectoryWalk {
public:
    // `image` and `budget` must outlive the walk. A block size of 0 gives an empty walk.
    IsoDirectoryWalk(const NativeFile& image, std::uint32_t blockSize, const IsoExtent& directory,
                     ReadBudget& budget);

    // Returns the next record; empty at the directory's end, at the image's end, if the budget is spent, and
    // permanently at a malformed record.
    [[nodiscard]] std::optional<IsoDirectoryRecord> next();

    // Returns whether the walk has reached the directory's end, and so every record.
    [[nodiscard]] bool isAtEnd() const { return m_position >= m_end; }

private:
    [[nodiscard]] std::span<const std::uint8_t> bytes(std::size_t count);

    const NativeFile* m_image;
    ReadBudget* m_budget;
    std::uint32_t m_blockSize;
    std::uint64_t m_position;
    std::uint64_t m_end;
    std::vector<std::uint8_t> m_window;  // bytes of the image, with many records
    std::uint64_t m_windowStart = 0;
    std::size_t m_windowLength = 0;
};

// Returns the first record of `directory` whose identifier without its version suffix is `name`, ignoring letter case.
// Empty if there is none before the walk ends.
[[nodiscard]] std::optional<IsoDirectoryRecord>
findDirectoryRecord(const NativeFile& image, std::uint32_t blockSize, const IsoExtent& directory,
                    std::string_view name, ReadBudget& budget);

}  // namespace discio
