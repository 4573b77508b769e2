// A disc image as the Blu-ray side reads it, and the pieces of it that its files are made of.
//
// Deliberate: no read begins at a byte offset of 2 GiB or more. One that begins below it may run past it.
// Places and sizes are 64 bits wide all the same: a stream file beyond the limit, which nobody reads, keeps
// its size.
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
    std::uint64_t sizeBytes = 0;         // when it was opened
    std::shared_ptr<ReadBudget> budget;  // of the disc; never null where the stream is not
};

// A run of bytes of the image.
struct ImageExtent {
    std::uint64_t offset = 0;
    std::uint64_t sizeBytes = 0;

    friend bool operator==(const ImageExtent&, const ImageExtent&) = default;
};

// A file's data: the concatenation of its extents in their order.
struct ExtentList {
    std::vector<ImageExtent> extents;
    std::uint64_t sizeBytes = 0;  // their sum

    void append(const ImageExtent& extent)
    {
        extents.push_back(extent);
        sizeBytes += extent.sizeBytes;
    }
};

// As many of `out` as the image holds from `offset` on, none from the limit on; the count of bytes read.
[[nodiscard]] std::size_t readImage(const DiscImage& image, std::uint64_t offset,
                                    std::span<std::uint8_t> out);

// Whether the image holds all of the extent and reads may begin where it begins.
[[nodiscard]] bool isReadable(const DiscImage& image, const ImageExtent& extent);

// Reads all of the data. False where an extent is not readable, or where extents that share bytes add up to more than
// the whole image: memory is taken for no more than that.
[[nodiscard]] bool readExtents(const DiscImage& image, const ExtentList& data,
                               std::vector<std::uint8_t>& bytes);

}  // namespace discio
