#include "discio/iso9660.h"

#include "discio/byte_reader.h"
#include "discio/file_stream.h"
#include "discio/text.h"

#include <algorithm>

namespace discio {

namespace {

constexpr std::uint8_t kPrimaryDescriptorType = 1;
constexpr std::string_view kStandardId = "CD001";
constexpr std::uint8_t kDirectoryFlag = 0x02;
constexpr std::size_t kWindowSize = 65536;

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

// The identifier up to its version suffix or its first NUL.
std::string identifierText(std::span<const std::uint8_t> identifier)
{
    const auto isEnd = [](std::uint8_t byte) { return byte == ';' || byte == 0; };
    const auto end = std::ranges::find_if(identifier, isEnd);
    return {identifier.begin(), end};
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

std::optional<IsoVolume> readPrimaryVolumeDescriptor(const NativeFile& image)
{
    std::array<std::uint8_t, kIsoSectorSize> sector = {};
    if (!readExactly(image, kIsoDescriptorOffset, sector)) { return std::nullopt; }
    return parsePrimaryVolumeDescriptor(sector);
}

IsoDirectoryWalk::IsoDirectoryWalk(const NativeFile& image, std::uint32_t blockSize,
                                   const IsoExtent& directory, ReadBudget& budget)
    : m_image(&image)
    , m_budget(&budget)
    , m_blockSize(blockSize)
    , m_position(std::uint64_t{directory.block} * blockSize)
    , m_end(blockSize == 0 ? 0 : m_position + directory.sizeBytes)
{}

std::optional<IsoDirectoryRecord> IsoDirectoryWalk::next()
{
    while (!isAtEnd()) {
        const auto lengthByte = bytes(1);
        if (lengthByte.empty()) { return std::nullopt; }
        const std::uint8_t length = lengthByte[0];
        if (length == 0) {
            m_position += m_blockSize - m_position % m_blockSize;
            continue;
        }
        if (length < kIsoRecordMinimum || length > m_end - m_position) { return std::nullopt; }
        const auto record = bytes(length);
        if (record.empty()) { return std::nullopt; }

        const std::uint64_t position = m_position;
        m_position += length;
        const auto identifier = record.subspan(33, std::min<std::size_t>(record[32], record.size() - 33));
        if (isDotEntry(identifier)) { continue; }
        return IsoDirectoryRecord{identifierText(identifier), position, parseExtent(ByteReader(record)),
                                  (record[25] & kDirectoryFlag) != 0};
    }
    return std::nullopt;
}

// Returns `count` bytes at the position; empty if the image does not hold them all or the budget is spent.
std::span<const std::uint8_t> IsoDirectoryWalk::bytes(std::size_t count)
{
    const std::uint64_t windowEnd = m_windowStart + m_windowLength;
    if (m_position < m_windowStart || m_position > windowEnd || count > windowEnd - m_position) {
        m_window.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kWindowSize, m_end - m_position)));
        m_windowStart = m_position;
        m_windowLength = readUpTo(*m_image, m_position, m_window);
        const bool isAllowed = m_budget->spend(ReadBudget::Bound::FileSystemBytes, m_windowLength);
        if (!isAllowed || count > m_windowLength) { return {}; }
    }
    return std::span(m_window).subspan(static_cast<std::size_t>(m_position - m_windowStart), count);
}

std::optional<IsoDirectoryRecord> findDirectoryRecord(const NativeFile& image, std::uint32_t blockSize,
                                                      const IsoExtent& directory, std::string_view name,
                                                      ReadBudget& budget)
{
    IsoDirectoryWalk walk(image, blockSize, directory, budget);
    while (auto record = walk.next()) {
        if (equalIgnoringCase(record->name, name)) { return record; }
    }
    return std::nullopt;
}

}  // namespace discio
