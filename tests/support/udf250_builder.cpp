#include "tests/support/udf250_builder.h"

#include "tests/support/udf250_descriptors.h"
#include "tests/support/udf_tree.h"

#include <algorithm>
#include <utility>

namespace testsupport {

namespace {

constexpr std::uint32_t kRecognitionSector = 16;
constexpr std::uint32_t kMainSequenceSector = 32;
constexpr std::uint32_t kReserveSequenceSector = 48;
constexpr std::uint32_t kIntegritySector = 64;
constexpr std::uint32_t kAnchorSector = 256;
constexpr std::uint32_t kPartitionSector = 288;

constexpr std::uint32_t kBlockSize = kUdfSector;
constexpr std::uint32_t kAllocationUnit = 32;  // blocks
constexpr std::uint32_t kMetadataFileBlock = 0;
constexpr std::uint32_t kMetadataMirrorFileBlock = 1;
constexpr std::uint32_t kRootBlock = 2;  // of the metadata partition: behind the file set and its terminator

constexpr std::uint8_t kDirectoryFileType = 4;
constexpr std::uint8_t kRegularFileType = 5;
constexpr std::uint8_t kMetadataFileType = 250;
constexpr std::uint8_t kMetadataMirrorFileType = 251;
constexpr std::uint32_t kNotAllocated = 0x80000000;  // in the length of an extent

std::uint32_t blocksOf(std::size_t sizeBytes)
{
    return static_cast<std::uint32_t>(roundedUp(sizeBytes, kUdfSector) / kUdfSector);
}

class Udf250Layout {
public:
    Udf250Layout(const std::vector<TreeFile>& files, const Udf250Spec& spec)
        : m_spec(spec)
        , m_tree(files)
        , m_physicalReference(spec.isMetadataMapFirst ? 1 : 0)
        , m_metadataReference(spec.isMetadataMapFirst ? 0 : 1)
    {}

    Udf250Image build()
    {
        m_result.partitionSector = kPartitionSector;
        layOutMetadata();
        const auto extents = placeMetadata(m_result.metadataSector);
        const auto mirrorExtents =
            m_spec.duplicateMetadata ? placeMetadata(m_result.metadataMirrorSector) : extents;
        if (!m_spec.duplicateMetadata) { m_result.metadataMirrorSector = m_result.metadataSector; }
        placeFiles();

        m_metadata.resize(std::size_t{m_result.metadataBlockCount} * kUdfSector);
        writeFileSet();
        for (const UdfNode& node : m_tree.nodes()) {
            writeNode(node);
        }
        putMetadata(extents);
        if (m_spec.duplicateMetadata) { putMetadata(mirrorExtents); }
        m_result.metadataFileSector = putMetadataFile(kMetadataFileBlock, kMetadataFileType, extents);
        m_result.metadataMirrorFileSector =
            putMetadataFile(kMetadataMirrorFileBlock, kMetadataMirrorFileType, mirrorExtents);
        putVolume();
        return std::move(m_result);
    }

private:
    using Extents = std::vector<UdfAllocationDescriptor>;

    // Gives every file entry a block of the metadata partition, then every directory's data.
    void layOutMetadata()
    {
        std::uint32_t next = kRootBlock + m_spec.unrecordedBlocks;
        for (UdfNode& node : m_tree.nodes()) {
            node.entryBlock = next++;
            m_result.entryBlocks[node.path] = node.entryBlock;
        }
        for (UdfNode& node : m_tree.nodes()) {
            if (!node.isDirectory) { continue; }
            const std::size_t size = directoryBytes(node, 0).size();
            node.bytes = directoryBytes(node, m_spec.directoryKind == 3 ? node.entryBlock : next);
            if (m_spec.directoryKind == 3) { continue; }
            node.extents = {{static_cast<std::uint32_t>(size), next, m_metadataReference}};
            next += blocksOf(size);
        }
        m_result.metadataBlockCount = static_cast<std::uint32_t>(roundedUp(next, kAllocationUnit));
    }

    [[nodiscard]] Bytes directoryBytes(const UdfNode& directory, std::uint32_t dataBlock) const
    {
        Bytes bytes;
        const UdfNode& parent = m_tree.nodes()[directory.parent];
        putIdentifier(bytes, {.block = parent.entryBlock, .characteristics = 0x0A}, dataBlock);
        for (const std::size_t index : directory.children) {
            const UdfNode& child = m_tree.nodes()[index];
            UdfFileIdentifierSpec identifier{.name = child.name(), .block = child.entryBlock};
            identifier.characteristics = child.isDirectory ? 0x02 : 0;
            identifier.compressionId = overrideOf(child).compressionId.value_or(8);
            putIdentifier(bytes, identifier, dataBlock);
        }
        return bytes;
    }

    void putIdentifier(Bytes& directory, UdfFileIdentifierSpec spec, std::uint32_t dataBlock) const
    {
        spec.partition = m_metadataReference;
        Bytes identifier = udfFileIdentifier(spec);
        sealUdfTag(identifier, dataBlock + static_cast<std::uint32_t>(directory.size() / kUdfSector));
        putBytes(directory, directory.size(), identifier);
    }

    // Takes blocks of the partition for all of the metadata; `firstSector` is where the first of them are.
    Extents placeMetadata(std::uint32_t& firstSector)
    {
        firstSector = kPartitionSector + m_nextBlock;
        const std::uint32_t holeEnd = kRootBlock + m_spec.unrecordedBlocks;
        Extents extents;
        if (m_spec.unrecordedBlocks > 0) {
            placeRun(extents, kRootBlock);
            extents.push_back({kNotAllocated + m_spec.unrecordedBlocks * kBlockSize, 0});
            placeRun(extents, m_result.metadataBlockCount - holeEnd);
        } else {
            placeRun(extents, m_result.metadataBlockCount);
        }
        m_nextBlock = static_cast<std::uint32_t>(roundedUp(m_nextBlock, kAllocationUnit));
        return extents;
    }

    void placeRun(Extents& extents, std::uint32_t blockCount)
    {
        while (blockCount > 0) {
            const auto count =
                static_cast<std::uint32_t>(std::min<std::size_t>(blockCount, m_spec.metadataBlocksPerExtent));
            extents.push_back({count * kBlockSize, m_nextBlock});
            m_nextBlock += count + (m_spec.metadataBlocksPerExtent == SIZE_MAX ? 0 : 1);
            blockCount -= count;
        }
    }

    void placeFiles()
    {
        for (UdfNode& node : m_tree.nodes()) {
            if (node.isDirectory) { continue; }
            m_result.dataSectors[node.path] = kPartitionSector + m_nextBlock;
            if (node.bytes.empty()) { continue; }
            node.extents = {
                {static_cast<std::uint32_t>(node.bytes.size()), m_nextBlock, m_physicalReference}};
            putBlocks(m_nextBlock, node.bytes);
            m_nextBlock += blocksOf(node.bytes.size());
        }
    }

    // ---- Writing ----

    void writeFileSet()
    {
        UdfFileSetFields fields;
        fields.rootBlock = m_tree.nodes()[0].entryBlock;
        fields.partitionReference = m_metadataReference;
        writeMetadata(0, udfFileSetDescriptor(fields));
        Bytes terminator = udfDescriptor(8, 512);
        sealUdfTag(terminator, 1);
        writeMetadata(1, terminator);
    }

    void writeNode(const UdfNode& node)
    {
        const UdfNodeOverride lie = overrideOf(node);
        UdfFileEntrySpec entry{.tag = 266};
        entry.fileType = node.isDirectory ? kDirectoryFileType : kRegularFileType;
        entry.descriptorKind = node.isDirectory ? m_spec.directoryKind : 1;
        entry.informationLength = lie.informationLength.value_or(node.bytes.size());
        entry.descriptors = lie.descriptors.value_or(node.extents);
        const bool isEmbedded = entry.descriptorKind == 3;
        if (isEmbedded) { entry.embedded = node.bytes; }
        writeMetadata(node.entryBlock, udf250FileEntry(entry, node.entryBlock));
        if (node.isDirectory && !isEmbedded) { writeMetadata(node.extents[0].block, node.bytes); }
    }

    void writeMetadata(std::uint32_t block, const Bytes& bytes)
    {
        putBytes(m_metadata, block * kUdfSector, bytes);
    }

    void putMetadata(const Extents& extents)
    {
        auto from = m_metadata.begin();
        for (const UdfAllocationDescriptor& extent : extents) {
            const std::uint32_t count = extent.length % kNotAllocated / kUdfSector;
            for (std::uint32_t i = 0; i < count; ++i) {
                if (extent.length < kNotAllocated) { putBlocks(extent.block + i, {from, from + kUdfSector}); }
                from += kUdfSector;
            }
        }
    }

    std::uint32_t putMetadataFile(std::uint32_t block, std::uint8_t fileType, const Extents& extents)
    {
        UdfFileEntrySpec entry{.tag = 266, .fileType = fileType};
        entry.informationLength = std::uint64_t{m_result.metadataBlockCount} * kUdfSector;
        entry.descriptors = extents;
        putBlocks(block, udf250FileEntry(entry, block));
        return kPartitionSector + block;
    }

    void putVolume()
    {
        const char* const recognition[] = {"BEA01", "NSR03", "TEA01"};
        for (std::uint32_t i = 0; i < 3; ++i) {
            putSector(kRecognitionSector + i, udfRecognitionDescriptor(recognition[i]));
        }
        const auto partitionLength = static_cast<std::uint32_t>(roundedUp(m_nextBlock, kAllocationUnit));
        UdfLogicalVolumeFields volume;
        volume.fileSetReference = m_metadataReference;
        volume.integritySector = kIntegritySector;
        volume.partitionMaps = m_spec.partitionMaps.value_or(partitionMaps());
        const std::vector<Bytes> sequence = {
            udfPrimaryVolumeDescriptor(),
            udfImplementationUseDescriptor(),
            udfPartitionDescriptor({m_spec.partitionNumber, kPartitionSector, partitionLength}),
            udfLogicalVolumeDescriptor(volume),
            udfDescriptor(7, 24),
            udfDescriptor(8, 512)};
        m_result.logicalVolumeSector = kMainSequenceSector + 3;
        for (std::uint32_t i = 0; i < sequence.size(); ++i) {
            putSealed(kMainSequenceSector + i, sequence[i]);
            putSealed(kReserveSequenceSector + i, sequence[i]);
        }
        putSealed(kIntegritySector, udfIntegrityDescriptor(2, partitionLength));
        putSealed(kIntegritySector + 1, udfDescriptor(8, 512));
        const Bytes anchor = udfAnchor(kMainSequenceSector, kReserveSequenceSector);
        putSealed(kAnchorSector, anchor);
        putSealed(kPartitionSector + partitionLength, anchor);
    }

    [[nodiscard]] std::vector<UdfPartitionMapSpec> partitionMaps() const
    {
        const UdfPartitionMapSpec physical{.partitionNumber = m_spec.partitionNumber};
        UdfPartitionMapSpec metadata{.partitionMapType = 2, .partitionNumber = m_spec.partitionNumber};
        metadata.flags = m_spec.duplicateMetadata ? 1 : 0;
        if (m_spec.isMetadataMapFirst) { return {metadata, physical}; }
        return {physical, metadata};
    }

    [[nodiscard]] UdfNodeOverride overrideOf(const UdfNode& node) const
    {
        const auto found = m_spec.nodes.find(node.path);
        return found == m_spec.nodes.end() ? UdfNodeOverride{} : found->second;
    }

    void putBlocks(std::uint32_t block, Bytes bytes)
    {
        putSector(kPartitionSector + block, std::move(bytes));
    }

    void putSealed(std::uint32_t sector, Bytes descriptor)
    {
        sealUdfTag(descriptor, sector);
        putSector(sector, std::move(descriptor));
    }

    void putSector(std::uint32_t sector, Bytes bytes)
    {
        bytes.resize(roundedUp(bytes.size(), kUdfSector));
        m_result.image.put(std::uint64_t{sector} * kUdfSector, std::move(bytes));
    }

    const Udf250Spec& m_spec;
    UdfTree m_tree;
    const std::uint16_t m_physicalReference;
    const std::uint16_t m_metadataReference;
    std::uint32_t m_nextBlock =
        kAllocationUnit;  // of the partition; the file entries of the metadata stand before
    Bytes m_metadata;
    Udf250Image m_result;
};

}  // namespace

Udf250Image buildUdf250(const std::vector<TreeFile>& files, const Udf250Spec& spec)
{
    return Udf250Layout(files, spec).build();
}

}  // namespace testsupport
