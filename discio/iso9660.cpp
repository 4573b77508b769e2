#include "discio/iso9660.h"

#include "discio/byte_reader.h"
#include "discio/file_stream.h"
#include "discio/text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace discio {

namespace {

constexpr std::uint8_t kPrimaryDescriptorType = 1;
constexpr std::string_view kStandardId = "CD001";
constexpr std::uint8_t kDirectoryFlag = 0x02;
constexpr std::size_t kIdentifierLimit = 255;
constexpr std::size_t kWindowSize = 65536;

// Reads forward through a directory in pieces larger than its records.
class DirectoryWindow {
public:
    explicit DirectoryWindow(std::FILE* image)
        : m_image(image)
    {}

    // `count` bytes at `position`; empty where the image does not hold them all.
    std::span<const std::uint8_t> bytes(std::uint64_t position, std::size_t count)
    {
        if (position < m_start || position - m_start > m_length || count > m_length - (position - m_start)) {
            m_buffer.resize(kWindowSize);
            m_start = position;
            m_length = readUpTo(m_image, position, m_buffer);
            if (count > m_length) { return {}; }
        }
        return std::span(m_buffer).subspan(static_cast<std::size_t>(position - m_start), count);
    }

private:
    std::FILE* m_image;
    std::vector<std::uint8_t> m_buffer;
    std::uint64_t m_start = 0;
    std::size_t m_length = 0;
};

IsoExtent parseExtent(ByteReader record)
{
    IsoExtent extent;
    record.seek(2);
    extent.block = record.le32();
    record.skip(4);
    extent.sizeBytes = record.le32();
    return extent;
}

bool isDotEntry(std::span<const std::uint8_t> identifier)
{
    return identifier.size() == 1 && identifier[0] <= 1;
}

// The identifier up to its version suffix. One that claims to be longer than its record is clipped to it.
std::string identifierText(std::span<const std::uint8_t> identifier)
{
    const auto end = std::find(identifier.begin(), identifier.end(), std::uint8_t{';'});
    std::string text(identifier.begin(), end);
    text.resize(std::min(text.size(), kIdentifierLimit));
    return text;
}

}  // namespace

std::optional<IsoVolume> parsePrimaryVolumeDescriptor(std::span<const std::uint8_t> sector)
{
    if (sector.size() < kIsoSectorSize) { return std::nullopt; }
    ByteReader reader(sector);
    const std::uint8_t type = reader.u8();
    const auto id = reader.bytes(kStandardId.size());
    if (type != kPrimaryDescriptorType ||
        !std::equal(id.begin(), id.end(), kStandardId.begin(), kStandardId.end())) {
        return std::nullopt;
    }

    IsoVolume volume;
    reader.seek(40);
    std::ranges::copy(reader.bytes(kIsoVolumeIdSize), volume.volumeId.begin());
    reader.seek(130);
    volume.blockSize = reader.be16();
    reader.seek(156);
    volume.rootRecordLength = reader.u8();
    volume.root = parseExtent(reader.slice(156, kIsoRecordMinimum));
    return volume;
}

std::optional<IsoVolume> readPrimaryVolumeDescriptor(std::FILE* image)
{
    std::array<std::uint8_t, kIsoSectorSize> sector = {};
    if (!readExactly(image, kIsoDescriptorOffset, sector)) { return std::nullopt; }
    return parsePrimaryVolumeDescriptor(sector);
}

std::optional<IsoDirectoryRecord> findDirectoryRecord(std::FILE* image, std::uint32_t blockSize,
                                                      const IsoExtent& directory, std::string_view name)
{
    if (blockSize == 0) { return std::nullopt; }
    DirectoryWindow window(image);
    std::uint64_t position = std::uint64_t{directory.block} * blockSize;
    const std::uint64_t end = position + std::min(directory.sizeBytes, kIsoDirectoryLimit);
    while (position < end) {
        const auto lengthByte = window.bytes(position, 1);
        if (lengthByte.empty()) { return std::nullopt; }
        const std::uint8_t length = lengthByte[0];
        if (length == 0) {
            position += blockSize - position % blockSize;
            continue;
        }
        if (length < kIsoRecordMinimum || length > end - position) { return std::nullopt; }
        const auto record = window.bytes(position, length);
        if (record.empty()) { return std::nullopt; }

        const auto identifier = record.subspan(33, std::min<std::size_t>(record[32], record.size() - 33));
        if (!isDotEntry(identifier) && equalIgnoringCase(identifierText(identifier), name)) {
            return IsoDirectoryRecord{parseExtent(ByteReader(record)), (record[25] & kDirectoryFlag) != 0};
        }
        position += length;
    }
    return std::nullopt;
}

}  // namespace discio
