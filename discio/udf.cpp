#include "discio/udf.h"

#include "discio/byte_reader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace discio {

namespace {

using Sector = std::array<std::uint8_t, kUdfSectorSize>;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t kAnchorTag = 2;
constexpr std::uint16_t kPartitionTag = 5;
constexpr std::uint16_t kLogicalVolumeTag = 6;
constexpr std::uint16_t kFileSetTag = 256;
constexpr std::uint16_t kFileIdentifierTag = 257;
constexpr std::uint16_t kFileEntryTag = 261;
constexpr std::uint16_t kExtendedFileEntryTag = 266;

constexpr std::uint64_t kAnchorOffset = 256 * kUdfSectorSize;
constexpr std::size_t kSequenceWindow = 32 * kUdfSectorSize;
constexpr std::size_t kTagSize = 16;
constexpr std::size_t kFileIdentifierMinimum = 38;

constexpr std::uint8_t kDirectoryFileType = 4;
constexpr std::uint8_t kDirectoryCharacteristic = 0x02;
constexpr std::uint8_t kEightBitCharacters = 8;

enum class DescriptorKind : std::uint8_t { Short = 0, Long = 1, EmbeddedData = 3 };

// Lengths from here on mean an extent without data, or one that continues the descriptors.
constexpr std::uint32_t kUnrecordedLength = 0x40000000;

// Where the two kinds of file entry differ: the offsets of two lengths, and their own size.
struct FileEntryLayout {
    std::size_t attributesLength;
    std::size_t descriptorsLength;
    std::size_t size;
};
constexpr FileEntryLayout kFileEntryLayout = {168, 172, 176};
constexpr FileEntryLayout kExtendedFileEntryLayout = {208, 212, 216};

// A field of `width` bytes; 0 where the bytes end before it.
std::uint32_t fieldAt(Bytes bytes, std::size_t offset, std::size_t width)
{
    const Bytes field = ByteReader(bytes).slice(offset, width).bytes(width);
    std::uint32_t value = 0;
    for (std::size_t i = field.size(); i > 0; --i) {
        value = (value << 8U) | field[i - 1];
    }
    return value;
}

bool hasTag(Bytes descriptor, std::uint16_t tag)
{
    return fieldAt(descriptor, 0, 2) == tag;
}

bool readSector(const DiscImage& image, std::uint64_t offset, Sector& sector)
{
    return readImage(image, offset, sector) == sector.size();
}

// ---- The volume ----

struct VolumeDescriptors {
    std::vector<UdfPartition> partitions;
    std::optional<UdfAddress> fileSet;  // as the last logical volume descriptor has it

    void take(Bytes sector)
    {
        if (hasTag(sector, kPartitionTag)) {
            if (partitions.size() < kUdfPartitionLimit) { partitions.push_back({fieldAt(sector, 188, 3)}); }
        } else if (hasTag(sector, kLogicalVolumeTag)) {
            fileSet = {fieldAt(sector, 252, 3), static_cast<std::uint16_t>(fieldAt(sector, 256, 1))};
        }
    }
};

// Reads the sequence, many sectors at a time. A sector that cannot be read is passed over, and so is all that
// the image or the limit of reading ends before.
VolumeDescriptors readSequence(const DiscImage& image, std::uint64_t start, std::uint64_t sizeBytes)
{
    VolumeDescriptors found;
    std::vector<std::uint8_t> window(kSequenceWindow);
    const std::uint64_t end =
        std::min({start + std::min(sizeBytes, kUdfSequenceLimit), image.sizeBytes, kImageOffsetLimit});
    for (std::uint64_t position = start; position < end;) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - position, window.size()));
        const std::size_t got = readImage(image, position, std::span(window).first(wanted));
        const std::size_t count = got / kUdfSectorSize;
        for (std::size_t i = 0; i < count; ++i) {
            found.take(std::span(window).subspan(i * kUdfSectorSize, kUdfSectorSize));
        }
        position += std::max<std::size_t>(count, 1) * kUdfSectorSize;
    }
    return found;
}

// ---- File entries ----

struct FileEntryFields {
    bool isDirectory = false;
    DescriptorKind kind = DescriptorKind::Short;
    std::uint64_t informationLength = 0;
    ImageExtent area;  // of the allocation descriptors
};

// `bytes` is the entry, and what follows it in its sector, which stands at `offset` in the image.
std::optional<FileEntryFields> parseFileEntry(Bytes bytes, std::uint64_t offset)
{
    const bool isExtended = hasTag(bytes, kExtendedFileEntryTag);
    const FileEntryLayout& layout = isExtended ? kExtendedFileEntryLayout : kFileEntryLayout;
    if (bytes.size() < layout.size || !(isExtended || hasTag(bytes, kFileEntryTag))) { return std::nullopt; }

    FileEntryFields fields;
    fields.isDirectory = bytes[27] == kDirectoryFileType;
    fields.kind = static_cast<DescriptorKind>(bytes[34] & 7U);
    fields.informationLength = ByteReader(bytes).slice(56, 8).le64();
    fields.area = {offset + layout.size + fieldAt(bytes, layout.attributesLength, 4),
                   fieldAt(bytes, layout.descriptorsLength, 4)};
    // Deliberate: the area's place is held against 32 bits, as if offsets were no wider.
    if (fields.area.offset > UINT32_MAX || fields.area.sizeBytes > kUdfDescriptorAreaLimit) {
        return std::nullopt;
    }
    return fields;
}

// The bytes of a file's allocation descriptors: from the sector that was read with the file entry, or, where
// they do not lie in it, read into `storage`.
std::optional<Bytes> readDescriptorArea(const DiscImage& image, const ImageExtent& area,
                                        std::uint64_t sectorOffset, Bytes sector,
                                        std::vector<std::uint8_t>& storage)
{
    const ByteReader inSector = ByteReader(sector).slice(area.offset - sectorOffset, area.sizeBytes);
    if (inSector.ok()) { return ByteReader(inSector).bytes(inSector.size()); }
    ExtentList list;
    list.append(area);
    if (area.sizeBytes > 0 && !readExtents(image, list, storage)) { return std::nullopt; }
    return storage;
}

// Adds the extents that the allocation descriptors record, cut to `informationLength` bytes. False where they
// hold less, or where one names a partition that is not there.
bool collectExtents(const UdfVolume& volume, Bytes area, DescriptorKind kind, std::uint16_t ownPartition,
                    std::uint64_t informationLength, ExtentList& data)
{
    const bool isShort = kind == DescriptorKind::Short;
    const std::size_t descriptorSize = isShort ? 8 : 16;
    ByteReader reader(area);
    while (reader.remaining() >= descriptorSize && data.sizeBytes < informationLength) {
        ByteReader descriptor(reader.bytes(descriptorSize));
        const std::uint32_t length = descriptor.le32();
        const std::uint32_t block = descriptor.le32();
        const std::uint16_t partition = isShort ? ownPartition : descriptor.le16();
        if (length == 0 || length >= kUnrecordedLength) { continue; }
        const auto offset = udfByteOffset(volume, {block, partition});
        if (!offset) { return false; }
        data.append({*offset, std::min<std::uint64_t>(length, informationLength - data.sizeBytes)});
    }
    return data.sizeBytes == informationLength;
}

// ---- Directories ----

// Takes the next entry's name, if it has a legible one; false where the entry makes no sense.
bool takeFileIdentifier(ByteReader& reader, DiscDirectory& directory)
{
    const std::size_t start = reader.position();
    const Bytes fixed = reader.bytes(kFileIdentifierMinimum);
    if (!reader.ok() || !hasTag(fixed, kFileIdentifierTag)) { return false; }
    const std::size_t identifierLength = fixed[19];
    const std::size_t implementationUse = fieldAt(fixed, 36, 2);
    const std::size_t entrySize =
        (fieldAt(fixed, 10, 2) + kTagSize + 3) / 4 * 4;  // padded to a multiple of 4
    if (entrySize < kFileIdentifierMinimum + identifierLength + implementationUse) { return false; }

    reader.skip(implementationUse);
    const Bytes identifier = reader.bytes(identifierLength);
    reader.seek(start + entrySize);
    if (!reader.ok()) { return false; }
    if (identifier.size() >= 2 && identifier[0] == kEightBitCharacters) {
        directory.add({std::string(identifier.begin() + 1, identifier.end()),
                       (fixed[18] & kDirectoryCharacteristic) != 0, fieldAt(fixed, 24, 4), 0,
                       static_cast<std::uint16_t>(fieldAt(fixed, 28, 2))});
    }
    return true;
}

}  // namespace

std::optional<UdfVolume> findUdfVolume(const DiscImage& image)
{
    Sector sector = {};
    if (!readSector(image, kAnchorOffset, sector) || !hasTag(sector, kAnchorTag)) { return std::nullopt; }
    const std::uint64_t sectorCount = fieldAt(sector, 16, 4) / kUdfSectorSize;
    const std::uint64_t start = std::uint64_t{fieldAt(sector, 20, 3)} * kUdfSectorSize;
    VolumeDescriptors found = readSequence(image, start, sectorCount * kUdfSectorSize);
    if (!found.fileSet) { return std::nullopt; }

    UdfVolume volume;
    volume.partitions = std::move(found.partitions);
    const auto fileSetOffset = udfByteOffset(volume, *found.fileSet);
    if (!fileSetOffset || !readSector(image, *fileSetOffset, sector) || !hasTag(sector, kFileSetTag)) {
        return std::nullopt;
    }
    volume.rootIcb = {fieldAt(sector, 404, 3), static_cast<std::uint16_t>(fieldAt(sector, 408, 2))};
    return volume;
}

std::optional<std::uint64_t> udfByteOffset(const UdfVolume& volume, const UdfAddress& address)
{
    if (address.partition >= volume.partitions.size()) { return std::nullopt; }
    const std::uint64_t startSector = volume.partitions[address.partition].startSector;
    return (startSector + address.block) * kUdfSectorSize;
}

std::optional<UdfFileEntry> readUdfFileEntry(const DiscImage& image, const UdfVolume& volume,
                                             const UdfAddress& icb)
{
    const auto offset = udfByteOffset(volume, icb);
    if (!offset) { return std::nullopt; }
    Sector sector = {};
    const Bytes bytes = std::span(sector).first(readImage(image, *offset, sector));
    const auto fields = parseFileEntry(bytes, *offset);
    if (!fields) { return std::nullopt; }
    std::vector<std::uint8_t> storage;
    const auto area = readDescriptorArea(image, fields->area, *offset, bytes, storage);
    if (!area) { return std::nullopt; }

    UdfFileEntry entry;
    entry.isDirectory = fields->isDirectory;
    switch (fields->kind) {
    case DescriptorKind::EmbeddedData:
        if (fields->informationLength > area->size()) { return std::nullopt; }
        entry.data.append({fields->area.offset, fields->informationLength});
        return entry;
    case DescriptorKind::Short:
    case DescriptorKind::Long:
        if (!collectExtents(volume, *area, fields->kind, icb.partition, fields->informationLength,
                            entry.data)) {
            return std::nullopt;
        }
        return entry;
    }
    return std::nullopt;
}

DiscDirectory parseUdfDirectory(std::span<const std::uint8_t> data)
{
    DiscDirectory directory;
    ByteReader reader(data);
    while (reader.remaining() >= kFileIdentifierMinimum) {
        if (!takeFileIdentifier(reader, directory)) { return directory; }
    }
    directory.isListable = reader.remaining() == 0;
    return directory;
}

std::optional<DiscDirectory> readUdfDirectory(const DiscImage& image, const UdfVolume& volume,
                                              const UdfAddress& icb)
{
    const auto entry = readUdfFileEntry(image, volume, icb);
    if (!entry || !entry->isDirectory) { return std::nullopt; }
    std::vector<std::uint8_t> data;
    if (entry->data.sizeBytes > kUdfDirectoryLimit || !readExtents(image, entry->data, data)) {
        return DiscDirectory();
    }
    return parseUdfDirectory(data);
}

}  // namespace discio
