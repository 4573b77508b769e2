#include "discio/udf.h"

#include "discio/byte_reader.h"
#include "discio/udf_descriptor.h"

#include <algorithm>

namespace discio {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t kFileIdentifierTag = 257;
constexpr std::uint16_t kFileEntryTag = 261;
constexpr std::uint16_t kExtendedFileEntryTag = 266;

constexpr std::size_t kTagSize = 16;
constexpr std::size_t kFileIdentifierMinimum = 38;

constexpr std::uint8_t kDirectoryFileType = 4;
constexpr std::uint8_t kDirectoryCharacteristic = 0x02;
constexpr std::uint8_t kEightBitCharacters = 8;

enum class DescriptorKind : std::uint8_t { Short = 0, Long = 1, EmbeddedData = 3 };

constexpr std::size_t kShortDescriptorSize = 8;
constexpr std::size_t kLongDescriptorSize = 16;

// From the first length on, an extent is not recorded; from the second on, it continues the descriptors.
constexpr std::uint32_t kUnrecordedLength = 0x40000000;
constexpr std::uint32_t kContinuationLength = 0xC0000000;

// The offsets of two lengths, and the size without variable parts, which the two kinds of file entry do not share.
struct FileEntryLayout {
    std::size_t attributesLength;
    std::size_t descriptorsLength;
    std::size_t size;
};
constexpr FileEntryLayout kFileEntryLayout = {168, 172, 176};
constexpr FileEntryLayout kExtendedFileEntryLayout = {208, 212, 216};

// ---- File entries ----

struct FileEntryFields {
    bool isDirectory = false;
    DescriptorKind kind = DescriptorKind::Short;
    std::uint64_t informationLength = 0;
    ImageExtent area;                       // of the allocation descriptors
    std::vector<std::uint8_t> descriptors;  // the area's bytes
};

// Parses all but the area's bytes. `bytes` is the sector from the entry on, at `offset` in the image.
std::optional<FileEntryFields> parseFileEntry(Bytes bytes, std::uint64_t offset)
{
    const bool isExtended = hasUdfTag(bytes, kExtendedFileEntryTag);
    const FileEntryLayout& layout = isExtended ? kExtendedFileEntryLayout : kFileEntryLayout;
    if (bytes.size() < layout.size || !(isExtended || hasUdfTag(bytes, kFileEntryTag))) {
        return std::nullopt;
    }

    FileEntryFields fields;
    fields.isDirectory = bytes[27] == kDirectoryFileType;
    fields.kind = static_cast<DescriptorKind>(bytes[34] & 7U);
    fields.informationLength = ByteReader(bytes).slice(56, 8).le64();
    fields.area = {offset + layout.size + udfField(bytes, layout.attributesLength, 4),
                   udfField(bytes, layout.descriptorsLength, 4)};
    // Deliberate: an area at an offset of more than 32 bits is refused.
    if (fields.area.offset > UINT32_MAX || fields.area.sizeBytes > kUdfDescriptorAreaLimit) {
        return std::nullopt;
    }
    return fields;
}

// Reads the entry at `offset` in the image. Its area lies in the same sector or in later ones. In a metadata partition,
// too, the area is read consecutively from the image: there UDF allows no entry longer than a block.
std::optional<FileEntryFields> readFields(const DiscImage& image, std::uint64_t offset)
{
    UdfSector sector = {};
    const Bytes bytes = std::span(sector).first(readImage(image, offset, sector));
    auto fields = parseFileEntry(bytes, offset);
    if (!fields || fields->area.sizeBytes == 0) { return fields; }
    if (!image.budget->spend(ReadBudget::Bound::FileSystemBytes, fields->area.sizeBytes)) {
        return std::nullopt;
    }
    ByteReader inSector = ByteReader(bytes).slice(fields->area.offset - offset, fields->area.sizeBytes);
    if (inSector.ok()) {
        const Bytes area = inSector.bytes(inSector.size());
        fields->descriptors.assign(area.begin(), area.end());
        return fields;
    }
    ExtentList list;
    list.append(fields->area);
    if (!readExtents(image, list, fields->descriptors)) { return std::nullopt; }
    return fields;
}

// Appends the extents of the allocation descriptors, cut to the information length. Returns false if they are shorter,
// or the volume lacks one of them.
bool collectExtents(const UdfVolume& volume, const FileEntryFields& fields, std::uint16_t ownPartition,
                    ReadBudget& budget, ExtentList& data)
{
    const bool isShort = fields.kind == DescriptorKind::Short;
    const std::size_t descriptorSize = isShort ? kShortDescriptorSize : kLongDescriptorSize;
    ByteReader reader(fields.descriptors);
    while (reader.remaining() >= descriptorSize && data.sizeBytes < fields.informationLength) {
        ByteReader descriptor(reader.bytes(descriptorSize));
        const std::uint32_t length = descriptor.le32();
        const std::uint32_t block = descriptor.le32();
        const std::uint16_t partition = isShort ? ownPartition : descriptor.le16();
        if (length == 0 || length >= kUnrecordedLength) { continue; }
        const auto needed = std::min<std::uint64_t>(length, fields.informationLength - data.sizeBytes);
        if (!appendUdfExtent(volume, {block, partition}, needed, budget, data)) { return false; }
    }
    return data.sizeBytes == fields.informationLength;
}

// Appends a run of blocks; extends the last run if the new one continues it in the image.
void appendRun(std::vector<UdfBlockRun>& runs, const UdfBlockRun& run)
{
    const bool isContinuation = !runs.empty() &&
                                runs.back().firstBlock + runs.back().blockCount == run.firstBlock &&
                                runs.back().sector + runs.back().blockCount == run.sector;
    if (isContinuation) {
        runs.back().blockCount += run.blockCount;
    } else {
        runs.push_back(run);
    }
}

// ---- Directories ----

// Adds the next entry if its name is 8-bit. Returns false if the entry is malformed.
bool takeFileIdentifier(ByteReader& reader, DiscDirectory& directory)
{
    const std::size_t start = reader.position();
    const Bytes fixed = reader.bytes(kFileIdentifierMinimum);
    if (!reader.ok() || !hasUdfTag(fixed, kFileIdentifierTag)) { return false; }
    const std::size_t identifierLength = fixed[19];
    const std::size_t implementationUse = udfField(fixed, 36, 2);
    const std::size_t entrySize =
        (udfField(fixed, 10, 2) + kTagSize + 3) / 4 * 4;  // padded to a multiple of 4
    if (entrySize < kFileIdentifierMinimum + identifierLength + implementationUse) { return false; }

    reader.skip(implementationUse);
    const Bytes identifier = reader.bytes(identifierLength);
    reader.seek(start + entrySize);
    if (!reader.ok()) { return false; }
    if (identifier.size() >= 2 && identifier[0] == kEightBitCharacters) {
        const auto end = std::find(identifier.begin() + 1, identifier.end(), std::uint8_t{0});
        directory.add({std::string(identifier.begin() + 1, end), (fixed[18] & kDirectoryCharacteristic) != 0,
                       udfField(fixed, 24, 4), 0, static_cast<std::uint16_t>(udfField(fixed, 28, 2))});
    }
    return true;
}

}  // namespace

std::optional<UdfFileEntry> readUdfFileEntry(const DiscImage& image, const UdfVolume& volume,
                                             const UdfAddress& icb)
{
    const auto offset = udfByteOffset(volume, icb);
    if (!offset) { return std::nullopt; }
    const auto fields = readFields(image, *offset);
    if (!fields) { return std::nullopt; }
    UdfFileEntry entry;
    entry.isDirectory = fields->isDirectory;
    bool isCovered = false;
    switch (fields->kind) {
    case DescriptorKind::EmbeddedData:
        isCovered = fields->informationLength <= fields->area.sizeBytes;
        entry.data.append({fields->area.offset, fields->informationLength});
        break;
    case DescriptorKind::Short:
    case DescriptorKind::Long:
        isCovered = collectExtents(volume, *fields, icb.partition, *image.budget, entry.data);
        break;
    }
    if (!isCovered) { return std::nullopt; }
    return entry;
}

std::vector<UdfBlockRun> readUdfMetadataFile(const DiscImage& image, std::uint32_t startSector,
                                             std::uint32_t block)
{
    const auto fields = readFields(image, (std::uint64_t{startSector} + block) * kUdfSectorSize);
    if (!fields || fields->kind != DescriptorKind::Short) { return {}; }
    const std::uint64_t blockCount = fields->informationLength / kUdfSectorSize;
    std::vector<UdfBlockRun> runs;
    std::uint64_t next = 0;
    ByteReader reader(fields->descriptors);
    while (reader.remaining() >= kShortDescriptorSize && next < blockCount) {
        const std::uint32_t length = reader.le32();
        const std::uint32_t firstSector = reader.le32();
        const std::uint64_t wholeBlocks = length % kUnrecordedLength / kUdfSectorSize;
        const std::uint64_t count = std::min(wholeBlocks, blockCount - next);
        if (count == 0 || length >= kContinuationLength) { continue; }
        if (length < kUnrecordedLength) { appendRun(runs, {next, count, firstSector}); }
        next += count;
    }
    if (next < blockCount) { runs.clear(); }
    return runs;
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
    const std::uint64_t sizeBytes = entry->data.sizeBytes;
    if (sizeBytes > image.sizeBytes || !image.budget->spend(ReadBudget::Bound::FileSystemBytes, sizeBytes) ||
        !readExtents(image, entry->data, data)) {
        return DiscDirectory();
    }
    return parseUdfDirectory(data);
}

}  // namespace discio
