#include "discio/udf_volume.h"

#include "discio/udf.h"
#include "discio/udf_descriptor.h"
#include "discio/udf_partition_maps.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace discio {

namespace {

constexpr std::uint16_t kAnchorTag = 2;
constexpr std::uint16_t kPartitionTag = 5;
constexpr std::uint16_t kLogicalVolumeTag = 6;
constexpr std::uint16_t kFileSetTag = 256;

constexpr std::uint64_t kAnchorOffset = 256 * kUdfSectorSize;
constexpr std::size_t kSequenceWindow = 32 * kUdfSectorSize;

// ---- The volume descriptor sequence ----

struct PartitionDescriptor {
    std::uint16_t number = 0;
    std::uint32_t startSector = 0;
};

struct VolumeDescriptors {
    std::vector<PartitionDescriptor> partitions;
    std::optional<UdfAddress> fileSet;  // of the last logical volume descriptor
    std::vector<UdfPartitionMap> maps;  // of the same

    void take(std::span<const std::uint8_t> sector)
    {
        if (hasUdfTag(sector, kPartitionTag)) {
            if (partitions.size() == kUdfPartitionLimit) { return; }
            partitions.push_back(
                {static_cast<std::uint16_t>(udfField(sector, 22, 2)), udfField(sector, 188, 3)});
        } else if (hasUdfTag(sector, kLogicalVolumeTag)) {
            fileSet = {udfField(sector, 252, 3), static_cast<std::uint16_t>(udfField(sector, 256, 1))};
            maps = parseUdfPartitionMaps(sector);
        }
    }
};

// Reads the sequence, many sectors at a time. Skips sectors that cannot be read, and ends where the image, the limit of
// reading or the budget ends.
VolumeDescriptors readSequence(const DiscImage& image, std::uint64_t start, std::uint64_t sizeBytes)
{
    VolumeDescriptors found;
    std::vector<std::uint8_t> window(kSequenceWindow);
    const std::uint64_t end = std::min({start + sizeBytes, image.sizeBytes, kImageOffsetLimit});
    for (std::uint64_t position = start; position < end;) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(end - position, window.size()));
        if (!image.budget->spend(ReadBudget::Bound::FileSystemBytes, wanted)) { break; }
        const std::size_t got = readImage(image, position, std::span(window).first(wanted));
        const std::size_t count = got / kUdfSectorSize;
        for (std::size_t i = 0; i < count; ++i) {
            found.take(std::span(window).subspan(i * kUdfSectorSize, kUdfSectorSize));
        }
        position += std::max<std::size_t>(count, 1) * kUdfSectorSize;
    }
    return found;
}

// Reads the sequence that the anchor names; empty if there is no anchor.
VolumeDescriptors readVolumeDescriptors(const DiscImage& image)
{
    UdfSector sector = {};
    if (!readUdfSector(image, kAnchorOffset, sector) || !hasUdfTag(sector, kAnchorTag)) { return {}; }
    const std::uint64_t sectorCount = udfField(sector, 16, 4) / kUdfSectorSize;
    const std::uint64_t start = std::uint64_t{udfField(sector, 20, 3)} * kUdfSectorSize;
    return readSequence(image, start, sectorCount * kUdfSectorSize);
}

// ---- Partitions ----

// Returns the run that holds a block, or null.
const UdfBlockRun* runOf(const UdfPartition& partition, std::uint64_t block)
{
    const auto next = std::ranges::upper_bound(partition.runs, block, {}, &UdfBlockRun::firstBlock);
    if (next == partition.runs.begin()) { return nullptr; }
    const UdfBlockRun& run = *(next - 1);
    return block - run.firstBlock < run.blockCount ? &run : nullptr;
}

std::uint64_t byteOffset(const UdfPartition& partition, const UdfBlockRun& run, std::uint64_t block)
{
    return (partition.startSector + run.sector + (block - run.firstBlock)) * kUdfSectorSize;
}

// Reads the file set descriptor in this block.
bool readFileSet(const DiscImage& image, const UdfPartition& partition, std::uint32_t block,
                 UdfSector& sector)
{
    const UdfBlockRun* const run = runOf(partition, block);
    return run != nullptr && readUdfSector(image, byteOffset(partition, *run, block), sector) &&
           hasUdfTag(sector, kFileSetTag);
}

// Returns the partition of map `reference`; it has no runs if the map cannot be followed. Of several descriptors with
// one partition number the last counts, as of logical volume descriptors.
UdfPartition mappedPartition(const DiscImage& image, const VolumeDescriptors& found, std::size_t reference)
{
    const UdfPartitionMap& map = found.maps[reference];
    const auto descriptor =
        std::find_if(found.partitions.rbegin(), found.partitions.rend(),
                     [&map](const PartitionDescriptor& one) { return one.number == map.partitionNumber; });
    const bool isThere = descriptor != found.partitions.rend();
    UdfPartition partition;
    if (isThere) { partition.startSector = descriptor->startSector; }
    if (isThere && map.kind == UdfPartitionMap::Kind::Physical) { return partition; }
    if (isThere && map.kind == UdfPartitionMap::Kind::Metadata) {
        UdfSector sector = {};
        for (const std::uint32_t fileBlock : {map.metadataFileBlock, map.metadataMirrorFileBlock}) {
            partition.runs = readUdfMetadataFile(image, partition.startSector, fileBlock);
            const bool isSuitable = reference == found.fileSet->partition
                                        ? readFileSet(image, partition, found.fileSet->block, sector)
                                        : !partition.runs.empty();
            if (isSuitable) { return partition; }
        }
    }
    partition.runs.clear();
    return partition;
}

std::optional<UdfVolume> openFileSet(const DiscImage& image, std::vector<UdfPartition> partitions,
                                     const UdfAddress& fileSet)
{
    UdfSector sector = {};
    if (fileSet.partition >= partitions.size() ||
        !readFileSet(image, partitions[fileSet.partition], fileSet.block, sector)) {
        return std::nullopt;
    }
    const UdfAddress rootIcb = {udfField(sector, 404, 3),
                                static_cast<std::uint16_t>(udfField(sector, 408, 2))};
    return UdfVolume{std::move(partitions), rootIcb};
}

}  // namespace

std::optional<UdfVolume> findUdfVolume(const DiscImage& image)
{
    const VolumeDescriptors found = readVolumeDescriptors(image);
    if (!found.fileSet) { return std::nullopt; }
    std::vector<UdfPartition> partitions;
    for (const PartitionDescriptor& descriptor : found.partitions) {
        partitions.push_back({descriptor.startSector});
    }
    return openFileSet(image, std::move(partitions), *found.fileSet);
}

std::optional<UdfVolume> findMappedUdfVolume(const DiscImage& image)
{
    const VolumeDescriptors found = readVolumeDescriptors(image);
    if (!found.fileSet) { return std::nullopt; }
    std::vector<UdfPartition> partitions;
    for (std::size_t reference = 0; reference < found.maps.size(); ++reference) {
        partitions.push_back(mappedPartition(image, found, reference));
    }
    return openFileSet(image, std::move(partitions), *found.fileSet);
}

std::optional<std::uint64_t> udfByteOffset(const UdfVolume& volume, const UdfAddress& address)
{
    if (address.partition >= volume.partitions.size()) { return std::nullopt; }
    const UdfPartition& partition = volume.partitions[address.partition];
    const UdfBlockRun* const run = runOf(partition, address.block);
    if (run == nullptr) { return std::nullopt; }
    return byteOffset(partition, *run, address.block);
}

bool appendUdfExtent(const UdfVolume& volume, const UdfAddress& start, std::uint64_t sizeBytes,
                     ReadBudget& budget, ExtentList& data)
{
    if (start.partition >= volume.partitions.size()) { return false; }
    const UdfPartition& partition = volume.partitions[start.partition];
    const UdfBlockRun* const end = partition.runs.data() + partition.runs.size();
    const UdfBlockRun* run = runOf(partition, start.block);
    std::uint64_t block = start.block;
    while (sizeBytes > 0) {
        const bool isThere = run != nullptr && run != end && block >= run->firstBlock;
        const bool isFurther = !data.extents.empty();
        if (!isThere || !budget.spend(ReadBudget::Bound::Pieces, isFurther ? 1 : 0)) { return false; }
        const std::uint64_t runEnd = run->firstBlock + run->blockCount;
        const std::uint64_t size = std::min(sizeBytes, (runEnd - block) * kUdfSectorSize);
        data.append({byteOffset(partition, *run, block), size});
        sizeBytes -= size;
        block = runEnd;
        ++run;
    }
    return true;
}

}  // namespace discio
