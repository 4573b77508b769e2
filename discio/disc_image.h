// A Blu-ray disc image, and the extents that the files in it consist of.
//
// Deliberate: no read begins at a byte offset of 2 GiB or more. A read that begins before it may end after it. Offsets
// and sizes are 64 bits wide nevertheless: a stream file after the limit, which is never read, keeps its size.
#pragma once

#include "discio/file_stream.h"
#include "discio/read_budget.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace discio {

inline constexpr std::uint64_t kImageOffsetLimit = std::uint64_t{1} << 31U;

struct DiscImage {
    FileStream stream;
    std::uint64_t sizeBytes = 0;         // at opening
    std::shared_ptr<ReadBudget> budget;  // of the disc; not null if the stream is not
};

// Consecutive bytes of the image.
struct ImageExtent {
    std::uint64_t offset = 0;
    std::uint64_t sizeBytes = 0;

    friend bool operator==(const ImageExtent&, const ImageExtent&) = default;
};

// A file's data: its extents, concatenated in their order.
struct ExtentList {
    std::vector<ImageExtent> extents;
    std::uint64_t sizeBytes = 0;  // their sum

    void append(const ImageExtent& extent)
    {
        extents.push_back(extent);
        sizeBytes += extent.sizeBytes;
    }
};

// Reads at `offset` until `out` is full or the image ends. Returns the number of bytes read; 0 if `offset` is
// kImageOffsetLimit or more.
[[nodiscard]] std::size_t readImage(const DiscImage& image, std::uint64_t offset,
                                    std::span<std::uint8_t> out);

// Returns whether the image holds the whole extent and a read may begin at its offset.
[[nodiscard]] bool isReadable(const DiscImage& image, const ImageExtent& extent);

// Reads all of the data. Returns false if an extent is not readable, or if the extents, which can share bytes, are
// together larger than the image; so no more than the image's size is allocated.
[[nodiscard]] bool readExtents(const DiscImage& image, const ExtentList& data,
                               std::vector<std::uint8_t>& bytes);

}  // namespace discio
