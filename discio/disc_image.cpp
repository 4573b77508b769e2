#include "discio/disc_image.h"

#include <algorithm>

namespace discio {

std::size_t readImage(const DiscImage& image, std::uint64_t offset, std::span<std::uint8_t> out)
{
    if (offset >= kImageOffsetLimit) { return 0; }
    return readUpTo(*image.stream, offset, out);
}

bool isReadable(const DiscImage& image, const ImageExtent& extent)
{
    if (extent.offset >= kImageOffsetLimit) { return false; }
    if (extent.sizeBytes == 0) { return true; }
    return extent.offset <= image.sizeBytes && extent.sizeBytes <= image.sizeBytes - extent.offset;
}

bool readExtents(const DiscImage& image, const ExtentList& data, std::vector<std::uint8_t>& bytes)
{
    bytes.clear();
    const auto readable = [&image](const ImageExtent& extent) { return isReadable(image, extent); };
    if (data.sizeBytes > image.sizeBytes || !std::ranges::all_of(data.extents, readable)) { return false; }
    bytes.resize(static_cast<std::size_t>(data.sizeBytes));
    std::span<std::uint8_t> rest = bytes;
    for (const ImageExtent& extent : data.extents) {
        const auto out = rest.first(static_cast<std::size_t>(extent.sizeBytes));
        if (readImage(image, extent.offset, out) != out.size()) { return false; }
        rest = rest.subspan(out.size());
    }
    return true;
}

}  // namespace discio
