#include "tests/support/disc_tree.h"

#include <utility>

namespace testsupport {

namespace {

constexpr std::uint32_t kSequenceSector = 32;
constexpr std::uint32_t kAllocationUnit = 32;       // of UDF 2.50's metadata, in blocks
constexpr std::uint32_t kNotRecorded = 0x80000000;  // in the length of an extent
constexpr std::uint8_t kDirectoryFlag = 0x02;       // of ISO-9660's records and of UDF's characteristics
constexpr std::uint8_t kParentCharacteristic = 0x08;

Bytes part(const Bytes& bytes, std::size_t from, std::size_t size)
{
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(from);
    return {begin, begin + static_cast<std::ptrdiff_t>(std::min(size, bytes.size() - from))};
}

std::uint32_t blocksOf(std::size_t sizeBytes)
{
    return static_cast<std::uint32_t>(roundedUp(sizeBytes, kSector) / kSector);
}

struct Node {
    std::string path = {};
    const Bytes* file = nullptr;  // a directory has none
    std::size_t parent = 0;       // of the root: itself
    std::vector<std::size_t> children = {};
    UdfExtent iso = {};                   // a file's data or a directory's records
    UdfExtent udf = {};                   // all data, cut into:
    std::vector<UdfExtent> extents = {};  // in ISO-9660 of files only
    std::uint32_t entryBlock = 0;         // UDF

    [[nodiscard]] bool isDirectory() const { return file == nullptr; }
    [[nodiscard]] std::string name() const { return path.substr(path.rfind('/') + 1); }
};

// Lays the image out twice: sizes do not depend on places, so the second time every place is known where it is written.
class ImageLayout {
public:
    ImageLayout(const std::vector<TreeFile>& files, DiscForm form, const ImageSpec& spec)
        : m_spec(spec)
        , m_hasIso(form == DiscForm::Iso || form == DiscForm::Hybrid)
        , m_hasUdf(form != DiscForm::Iso)
        , m_is250(form == DiscForm::Udf250 || form == DiscForm::Udf250Mirror)
        , m_physical(m_is250 ? (spec.isMetadataMapFirst ? 1 : 0) : spec.partitionsBefore)
        , m_metadata(m_is250 ? (spec.isMetadataMapFirst ? 0 : 1) : m_physical)
    {
        for (const TreeFile& file : files) {
            m_nodes[indexOf(file.path)].file = &file.bytes;
        }
    }

    BuiltImage build()
    {
        for (int round = 0; round < 2; ++round) {
            m_image = {};
            m_next = m_hasUdf ? 0 : 18;
            if (m_hasUdf) { putMetadata(); }
            if (m_hasIso) { putIso(); }
            for (Node& node : m_nodes) {
                if (node.isDirectory() || isEmbedded(node)) { continue; }
                putData(node, *node.file, m_physical, m_spec.blocksPerExtent);
                node.iso = node.udf;
            }
            if (m_hasUdf) { putVolume(); }
        }
        return std::move(m_image);
    }

private:
    // The index of a node, which is added after its parents if it is new.
    std::size_t indexOf(const std::string& path)
    {
        const auto known = std::ranges::find(m_nodes, path, &Node::path);
        if (known != m_nodes.end()) { return static_cast<std::size_t>(known - m_nodes.begin()); }
        const std::size_t slash = path.rfind('/');
        const std::size_t parent = slash == std::string::npos ? 0 : indexOf(path.substr(0, slash));
        m_nodes[parent].children.push_back(m_nodes.size());
        m_nodes.push_back({.path = path, .parent = parent});
        return m_nodes.size() - 1;
    }

    [[nodiscard]] std::uint32_t firstSector() const { return m_hasUdf ? kUdfPartitionSector : 0; }

    // Where a block of a partition lies in the image; one of the metadata partition: in the metadata file or its copy.
    [[nodiscard]] std::uint64_t offsetOf(std::uint16_t partition, std::uint32_t block,
                                         std::size_t copy = 0) const
    {
        const std::vector<std::uint32_t>& metadata = m_metadataBlocks.at(copy);
        if (partition != m_physical) { block = block < metadata.size() ? metadata[block] : 0; }
        return (std::uint64_t{firstSector()} + block) * kSector;
    }

    void putBlocks(std::uint16_t partition, std::uint32_t block, const Bytes& bytes)
    {
        for (std::size_t start = 0; start < bytes.size(); start += kSector) {
            Bytes sector = part(bytes, start, kSector);
            sector.resize(kSector);
            if (partition != m_physical && m_spec.hasMetadataCopy) {
                m_image.put(offsetOf(partition, block, 1), sector);
            }
            m_image.put(offsetOf(partition, block++), sector);
        }
    }

    void putDescriptor(std::uint16_t partition, std::uint32_t block, Bytes descriptor)
    {
        sealUdfTag(descriptor, block);
        putBlocks(partition, block, descriptor);
    }

    // The first block of a node's data: the one that ImageSpec::sectors has, or the next of so many free ones.
    std::uint32_t place(const Node& node, std::uint32_t blockCount)
    {
        const auto chosen = m_spec.sectors.find(node.path);
        if (chosen != m_spec.sectors.end()) { return chosen->second - firstSector(); }
        return std::exchange(m_next, m_next + blockCount);
    }

    // Puts a node's data. A block is free between two extents.
    void putData(Node& node, const Bytes& bytes, std::uint16_t partition, std::uint32_t blocksPerExtent)
    {
        const std::uint32_t blocks = blocksOf(bytes.size());
        std::uint32_t block = place(node, blocks + (blocks == 0 ? 0 : (blocks - 1) / blocksPerExtent));
        node.udf = {static_cast<std::uint32_t>(bytes.size()), block, partition};
        node.extents.clear();
        m_image.places[node.path].data = offsetOf(partition, block);
        for (std::size_t from = 0; from < bytes.size(); from += blocksPerExtent * kSector) {
            const Bytes extent = part(bytes, from, blocksPerExtent * kSector);
            node.extents.push_back({static_cast<std::uint32_t>(extent.size()), block, partition});
            putBlocks(partition, block, extent);
            block += blocksPerExtent + 1;
        }
    }

    [[nodiscard]] bool isEmbedded(const Node& node) const
    {
        return m_spec.descriptorKind == 3 && (node.isDirectory() || !m_is250);
    }

    [[nodiscard]] Bytes entryOf(const Node& node) const
    {
        UdfFileEntrySpec entry{.informationLength = node.udf.length, .descriptors = node.extents};
        entry.tag = m_is250 ? 266 : m_spec.fileEntryTag;
        entry.fileType = node.isDirectory() ? 4 : 5;
        entry.descriptorKind = m_is250 && !node.isDirectory() ? 1 : m_spec.descriptorKind;
        if (isEmbedded(node)) {
            entry.embedded = node.isDirectory() ? udfDirectory(node) : *node.file;
            entry.informationLength = entry.embedded.size();
        }
        return udfFileEntry(entry);
    }

    [[nodiscard]] Bytes udfDirectory(const Node& directory) const
    {
        Bytes bytes;
        const auto add = [&](const std::string& name, const Node& node, std::uint8_t characteristics) {
            Bytes identifier = udfFileIdentifier({name, node.entryBlock, m_metadata, characteristics});
            sealUdfTag(identifier, directory.udf.block + static_cast<std::uint32_t>(bytes.size() / kSector));
            append(bytes, identifier);
        };
        add("", m_nodes[directory.parent], kDirectoryFlag | kParentCharacteristic);
        for (const std::size_t child : directory.children) {
            add(m_nodes[child].name(), m_nodes[child], m_nodes[child].isDirectory() ? kDirectoryFlag : 0);
        }
        return bytes;
    }

    // File set, file entries and directories. UDF 1.02 has all in one partition; UDF 2.50 has them in a file, whose
    // blocks are a partition of their own.
    void putMetadata()
    {
        const std::uint32_t root = m_nodes[0].entryBlock;
        putDescriptor(m_metadata, 0,
                      udfDescriptor(256, 512, {{400, 4, kSector}, {404, 4, root}, {408, 2, m_metadata}}));
        putDescriptor(m_metadata, 1, udfDescriptor(8, 512));  // terminator
        m_next = 2 + m_spec.unrecordedBlocks;
        for (Node& node : m_nodes) {
            node.entryBlock = m_next;
            m_image.places[node.path].entry = offsetOf(m_metadata, m_next);
            const Bytes entry = entryOf(node);
            putDescriptor(m_metadata, m_next, entry);
            m_next += blocksOf(entry.size());
        }
        const std::uint32_t blocksPerExtent = m_is250 ? ImageSpec().blocksPerExtent : m_spec.blocksPerExtent;
        for (Node& node : m_nodes) {
            if (node.isDirectory() && !isEmbedded(node)) {
                putData(node, udfDirectory(node), m_metadata, blocksPerExtent);
            }
        }
        m_image.fileSet = offsetOf(m_metadata, 0);
        m_image.fileSetCopy = offsetOf(m_metadata, 0, m_is250 && m_spec.hasMetadataCopy);
        if (!m_is250) { return; }
        const auto blockCount = static_cast<std::uint32_t>(roundedUp(m_next, kAllocationUnit));
        m_next = 2;  // after the entries of the metadata file and of its mirror
        UdfFileEntrySpec entry{.tag = 266, .fileType = 250, .informationLength = blockCount * kSector};
        for (const std::uint32_t copy : {0U, 1U}) {
            if (copy == 0 || m_spec.hasMetadataCopy) {
                entry.descriptors = placeMetadataFile(blockCount, m_metadataBlocks.at(copy));
            }
            putDescriptor(m_physical, copy, udfFileEntry(entry));
            entry.fileType = 251;
        }
    }

    // Takes blocks for the metadata file or its copy. The unrecorded ones are an extent of their own.
    std::vector<UdfExtent> placeMetadataFile(std::uint32_t blockCount, std::vector<std::uint32_t>& blocks)
    {
        const std::uint32_t holeEnd = 2 + m_spec.unrecordedBlocks;
        std::vector<UdfExtent> extents;
        blocks.clear();
        m_next = static_cast<std::uint32_t>(roundedUp(m_next, kAllocationUnit));
        for (std::uint32_t block = 0; block < blockCount; ++block) {
            const bool isHole = block >= 2 && block < holeEnd;
            const bool isCut = !isHole && block % m_spec.blocksPerExtent == 0;
            if (isCut || (holeEnd > 2 && (block == 2 || block == holeEnd))) {
                if (block > 0) { ++m_next; }
                extents.push_back({isHole ? kNotRecorded : 0, isHole ? 0 : m_next});
            }
            extents.back().length += kSector;
            blocks.push_back(isHole ? 0 : m_next++);
        }
        return extents;
    }

    [[nodiscard]] Bytes isoRecordOf(const Node& node, const std::string& identifier) const
    {
        return isoRecord({identifier, firstSector() + node.iso.block, node.iso.length,
                          node.isDirectory() ? kDirectoryFlag : std::uint8_t{0}});
    }

    // Records lie in one block each.
    Bytes isoDirectory(const Node& directory)
    {
        Bytes bytes = isoRecordOf(directory, std::string(1, '\0'));
        append(bytes, isoRecordOf(m_nodes[directory.parent], "\1"));
        for (const std::size_t index : directory.children) {
            const Node& child = m_nodes[index];
            const Bytes record = isoRecordOf(child, child.name() + (child.isDirectory() ? "" : ";1"));
            if (bytes.size() % kSector + record.size() > kSector) {
                bytes.resize(roundedUp(bytes.size(), kSector));
            }
            m_image.places[child.path].record = offsetOf(m_physical, directory.iso.block) + bytes.size();
            append(bytes, record);
        }
        bytes.resize(roundedUp(bytes.size(), kSector));
        return bytes;
    }

    void putIso()
    {
        for (Node& node : m_nodes) {
            if (!node.isDirectory()) { continue; }
            const Bytes records = isoDirectory(node);
            node.iso = {static_cast<std::uint32_t>(records.size()), place(node, blocksOf(records.size()))};
            m_image.places[node.path].data = offsetOf(m_physical, node.iso.block);
            putBlocks(m_physical, node.iso.block, records);
        }
        Bytes descriptor =
            patched(Bytes(kSector), {{128, 4, 0x00080800}});  // bytes of a block, in both orders
        putText(descriptor, 0, "\1CD001\1");
        putText(descriptor, 40, m_spec.volumeId + std::string(32 - m_spec.volumeId.size(), ' '));
        putBytes(descriptor, 156, isoRecordOf(m_nodes[0], std::string(1, '\0')));
        m_image.put(kIsoDescriptor, descriptor);
        m_image.places[""].record = kIsoDescriptor + 156;
    }

    void putVolume()
    {
        std::vector<Bytes> maps;
        std::vector<Bytes> sequence = {udfDescriptor(1, 512), {}};
        const auto addPartition = [&](std::size_t number, std::uint32_t sector, std::uint32_t length) {
            append(maps.emplace_back(Bytes{1, 6, 0, 0}), leBytes(number, 2));
            sequence.push_back(udfDescriptor(5, 512, {{22, 2, number}, {188, 4, sector}, {192, 4, length}}));
        };
        for (std::size_t i = 1; i <= m_spec.partitionsBefore; ++i) {
            addPartition(m_spec.partitionNumber + i, 9999, 1);
        }
        addPartition(m_spec.partitionNumber, kUdfPartitionSector, m_next);
        if (m_is250) {
            Bytes map(64);
            putText(map, 0, "\2\x40");
            putText(map, 5, "*UDF Metadata Partition");
            putLe(map, 38, m_spec.partitionNumber, 2);
            putLe(map, 44, 1, 4);           // the mirror's entry; the metadata file's is 0
            putLe(map, 48, 0xFFFFFFFF, 4);  // no bitmap: the partition is read-only
            putLe(map, 58, m_spec.hasMetadataCopy ? 1 : 0, 1);
            maps.insert(m_spec.isMetadataMapFirst ? maps.begin() : maps.end(), map);
        }
        Bytes& volume = sequence[1] = udfDescriptor(6, 440, {{212, 4, kSector}, {248, 4, 2 * kSector}});
        putText(volume, 217, "*OSTA UDF Compliant");
        putLe(volume, 240, 0x0250, 2);
        putLe(volume, 256, m_metadata, 2);
        putLe(volume, 268, maps.size(), 4);
        for (const Bytes& map : maps) {
            append(volume, map);
        }
        putLe(volume, 264, volume.size() - 440, 4);
        sequence.push_back(udfDescriptor(8, 512));  // terminator
        for (std::uint32_t i = 0; i < sequence.size(); ++i) {
            putSector(kSequenceSector + i, sequence[i]);
        }
        const Bytes anchor = udfDescriptor(2, 512, {{16, 4, 32 * kSector}, {20, 4, kSequenceSector}});
        putSector(kUdfAnchor / kSector, anchor);
        putSector(kUdfPartitionSector + m_next, anchor);
    }

    void putSector(std::uint32_t sector, Bytes descriptor)
    {
        sealUdfTag(descriptor, sector);
        descriptor.resize(kSector);
        m_image.put(sector * kSector, descriptor);
    }

    const ImageSpec& m_spec;
    bool m_hasIso;
    bool m_hasUdf;
    bool m_is250;
    std::uint16_t m_physical;  // partition references; equal in UDF 1.02
    std::uint16_t m_metadata;
    std::vector<Node> m_nodes = {Node{}};  // the root first, each directory before what is in it
    std::uint32_t m_next = 0;              // the next free block
    // Of the real partition: those of the metadata file and of its copy.
    std::array<std::vector<std::uint32_t>, 2> m_metadataBlocks;
    BuiltImage m_image;
};

}  // namespace

BuiltImage DiscTree::image(DiscForm form, const ImageSpec& spec) const
{
    BuiltImage image = ImageLayout(m_files, form, spec).build();
    if (form == DiscForm::Udf250Mirror) { image.put(kMetadataFile, Bytes(kSector)); }
    return image;
}

}  // namespace testsupport
