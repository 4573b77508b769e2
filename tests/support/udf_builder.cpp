#include "tests/support/udf_builder.h"

#include "tests/support/udf_tree.h"

#include <algorithm>

namespace testsupport {

namespace {

constexpr std::uint32_t kAnchorSector = 256;
constexpr std::uint32_t kSequenceSector = 257;

Bytes descriptor(std::uint16_t tag, std::size_t size = kUdfSector)
{
    Bytes bytes(size);
    putLe(bytes, 0, tag, 2);
    putLe(bytes, 2, 2, 2);
    putLe(bytes, 10, size - 16, 2);
    return bytes;
}

class UdfLayout {
public:
    UdfLayout(const std::vector<TreeFile>& files, const UdfSpec& spec)
        : m_spec(spec)
        , m_tree(files)
    {}

    UdfImage build()
    {
        for (UdfNode& node :
             m_tree.nodes()) {  // the directories' sizes; their contents follow from the places
            if (node.isDirectory) { node.bytes = directoryBytes(node); }
        }
        for (UdfNode& node : m_tree.nodes()) {
            node.entryBlock = m_nextBlock;
            m_nextBlock +=
                static_cast<std::uint32_t>(roundedUp(fileEntryOf(node).size(), kUdfSector) / kUdfSector);
        }
        for (UdfNode& node : m_tree.nodes()) {
            if (node.isDirectory) { node.bytes = directoryBytes(node); }
            placeData(node);
        }
        putVolume();
        for (const UdfNode& node : m_tree.nodes()) {
            putBlocks(node.entryBlock, fileEntryOf(node));
        }
        return std::move(m_result);
    }

private:
    [[nodiscard]] UdfNodeOverride overrideOf(const UdfNode& node) const
    {
        const auto found = m_spec.nodes.find(node.path);
        return found == m_spec.nodes.end() ? UdfNodeOverride{} : found->second;
    }

    [[nodiscard]] Bytes directoryBytes(const UdfNode& directory) const
    {
        Bytes bytes = udfFileIdentifier({.partition = m_spec.partition, .characteristics = 0x0A});
        for (const std::size_t index : directory.children) {
            const UdfNode& child = m_tree.nodes()[index];
            UdfFileIdentifierSpec identifier{child.name(), child.entryBlock, m_spec.partition};
            identifier.characteristics = child.isDirectory ? 0x02 : 0;
            identifier.compressionId = overrideOf(child).compressionId.value_or(8);
            putBytes(bytes, bytes.size(), udfFileIdentifier(identifier));
        }
        return bytes;
    }

    void placeData(UdfNode& node)
    {
        if (m_spec.descriptorKind == 3) { return; }
        std::uint32_t next = overrideOf(node).block.value_or(m_nextBlock);
        m_result.dataSectors[node.path] = partitionStart() + next;
        const std::size_t most =
            m_spec.blocksPerExtent == SIZE_MAX ? SIZE_MAX : m_spec.blocksPerExtent * kUdfSector;
        for (std::size_t done = 0; done < node.bytes.size();) {
            const std::size_t size = std::min(node.bytes.size() - done, most);
            const auto first = node.bytes.begin() + static_cast<std::ptrdiff_t>(done);
            putBlocks(next, Bytes(first, first + static_cast<std::ptrdiff_t>(size)));
            node.extents.push_back({static_cast<std::uint32_t>(size), next, m_spec.partition});
            next += static_cast<std::uint32_t>(roundedUp(size, kUdfSector) / kUdfSector) + 1;
            done += size;
        }
        if (!overrideOf(node).block) { m_nextBlock = std::max(next, m_nextBlock + 1); }
    }

    [[nodiscard]] Bytes fileEntryOf(const UdfNode& node) const
    {
        const UdfNodeOverride lie = overrideOf(node);
        UdfFileEntrySpec entry;
        entry.tag = m_spec.fileEntryTag;
        entry.fileType = node.isDirectory ? 4 : 5;
        entry.descriptorKind = m_spec.descriptorKind;
        entry.informationLength = lie.informationLength.value_or(node.bytes.size());
        entry.descriptors = lie.descriptors.value_or(node.extents);
        if (m_spec.descriptorKind == 3) { entry.embedded = node.bytes; }
        return udfFileEntry(entry);
    }

    void putVolume()
    {
        std::vector<Bytes> sequence = {descriptor(1)};
        for (const std::uint32_t start : m_spec.partitionStarts) {
            Bytes partition = descriptor(5);
            putLe(partition, 188, start, 4);
            sequence.push_back(partition);
        }
        Bytes logicalVolume = descriptor(6);
        putLe(logicalVolume, 248, kUdfSector, 4);  // the file set's length
        putLe(logicalVolume, 256, m_spec.partition, 2);
        sequence.push_back(logicalVolume);
        sequence.push_back(descriptor(8));
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            m_result.image.put((kSequenceSector + i) * kUdfSector, sequence[i]);
        }

        Bytes anchor = descriptor(m_spec.anchorTag);
        putLe(anchor, 16, m_spec.sequenceLength.value_or(sequence.size() * kUdfSector), 4);
        putLe(anchor, 20, kSequenceSector, 4);
        m_result.image.put(kAnchorSector * kUdfSector, anchor);

        Bytes fileSet = descriptor(m_spec.fileSetTag);
        putLe(fileSet, 404, m_tree.nodes()[0].entryBlock, 4);
        putLe(fileSet, 408, m_spec.partition, 2);
        putBlocks(0, fileSet);
    }

    [[nodiscard]] std::uint32_t partitionStart() const { return m_spec.partitionStarts.at(m_spec.partition); }

    void putBlocks(std::uint32_t block, Bytes bytes)
    {
        bytes.resize(roundedUp(bytes.size(), kUdfSector));
        m_result.image.put((std::uint64_t{partitionStart()} + block) * kUdfSector, std::move(bytes));
    }

    const UdfSpec& m_spec;
    UdfTree m_tree;
    std::uint32_t m_nextBlock = 1;
    UdfImage m_result;
};

}  // namespace

Bytes udfFileEntry(const UdfFileEntrySpec& spec)
{
    const bool isExtended = spec.tag == 266;
    const std::size_t size = isExtended ? 216 : 176;
    Bytes area = spec.embedded;
    for (const UdfAllocationDescriptor& extent : spec.descriptors) {
        const std::size_t offset = area.size();
        putLe(area, offset, extent.length, 4);
        putLe(area, offset + 4, extent.block, 4);
        if (spec.descriptorKind == 1) {
            putLe(area, offset + 8, extent.partition, 2);
            growTo(area, offset + 16);
        }
    }
    Bytes entry = descriptor(spec.tag, size);
    putU8(entry, 27, spec.fileType);
    putLe(entry, 34, spec.descriptorKind, 2);
    putLe(entry, 56, spec.informationLength, 8);
    putLe(entry, size - 8, spec.extendedAttributeLength.value_or(spec.extendedAttributeSize), 4);
    putLe(entry, size - 4, spec.descriptorsLength.value_or(area.size()), 4);
    entry.resize(size + spec.extendedAttributeSize);
    putBytes(entry, entry.size(), area);
    return entry;
}

Bytes udfFileIdentifier(const UdfFileIdentifierSpec& spec)
{
    Bytes identifier;
    if (!spec.name.empty()) {
        identifier.push_back(spec.compressionId);
        for (const char letter : spec.name) {
            if (spec.compressionId == 16) { identifier.push_back(0); }
            identifier.push_back(static_cast<std::uint8_t>(letter));
        }
    }
    const std::size_t size = roundedUp(38 + spec.implementationUseSize + identifier.size(), 4);
    Bytes bytes = descriptor(spec.tag, size);
    putLe(bytes, 10, spec.crcLength.value_or(size - 16), 2);
    putLe(bytes, 16, 1, 2);  // file version
    putU8(bytes, 18, spec.characteristics);
    putU8(bytes, 19, spec.identifierLength.value_or(static_cast<std::uint8_t>(identifier.size())));
    putLe(bytes, 20, kUdfSector, 4);  // the ICB's length
    putLe(bytes, 24, spec.block, 4);
    putLe(bytes, 28, spec.partition, 2);
    putLe(bytes, 36, spec.implementationUseSize, 2);
    putBytes(bytes, 38 + spec.implementationUseSize, identifier);
    return bytes;
}

UdfImage buildUdf(const std::vector<TreeFile>& files, const UdfSpec& spec)
{
    return UdfLayout(files, spec).build();
}

}  // namespace testsupport
