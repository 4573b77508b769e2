#include "tests/support/image_builder.h"

#include <algorithm>
#include <array>

namespace testsupport {

namespace {

constexpr std::uint32_t kSequenceSector = 32;
constexpr std::uint32_t kSequenceLength = 32;       // sectors
constexpr std::uint32_t kAllocationUnit = 32;       // of UDF 2.50's metadata, in blocks
constexpr std::uint32_t kNotRecorded = 0x80000000;  // in the length of an extent
constexpr std::uint32_t kUncut = 1U << 18U;         // blocks per extent

constexpr std::uint8_t kDirectoryFlag = 0x02;  // of ISO-9660's records and of UDF's characteristics
constexpr std::uint8_t kParentCharacteristic = 0x08;

std::uint32_t blocksOf(std::size_t sizeBytes)
{
    return static_cast<std::uint32_t>(roundedUp(sizeBytes, kSector) / kSector);
}

struct Node {
    std::string path = {};
    bool isDirectory = true;
    const Bytes* bytes = nullptr;  // of a file
    std::size_t parent = 0;        // of the root: itself
    std::vector<std::size_t> children = {};
    UdfExtent iso = {};                   // a file's data or a directory's records
    std::uint32_t entryBlock = 0;         // UDF
    UdfExtent udf = {};                   // all data, cut into:
    std::vector<UdfExtent> extents = {};  // in ISO-9660 of files only

    [[nodiscard]] std::string name() const { return path.substr(path.rfind('/') + 1); }
};

}  // namespace

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
        addNode({});
        for (const TreeFile& file : files) {
            for (std::size_t i = file.path.find('/'); i != std::string::npos;
                 i = file.path.find('/', i + 1)) {
                addNode({.path = file.path.substr(0, i)});
            }
            addNode({.path = file.path, .isDirectory = false, .bytes = &file.bytes});
        }
    }

    BuiltImage build()
    {
        if (m_hasUdf) { placeMetadata(); }
        if (m_hasIso) { placeIsoDirectories(); }
        for (Node& node : m_nodes) {
            if (node.isDirectory || isEmbedded(node)) { continue; }
            place(node, node.bytes->size(), m_next, m_physical, m_spec.blocksPerExtent);
            node.iso = node.udf;
            putData(node, *node.bytes);
        }
        if (m_hasIso) { putIso(); }
        if (m_hasUdf) { putUdf(); }
        return std::move(m_image);
    }

private:
    void addNode(Node node)
    {
        if (!m_indexes.emplace(node.path, m_nodes.size()).second) { return; }
        const std::size_t slash = node.path.rfind('/');
        node.parent = m_indexes.at(slash == std::string::npos ? "" : node.path.substr(0, slash));
        if (!m_nodes.empty()) { m_nodes[node.parent].children.push_back(m_nodes.size()); }
        m_nodes.push_back(std::move(node));
    }

    // ---- Places ----

    [[nodiscard]] std::uint32_t firstSector() const { return m_hasUdf ? kUdfPartitionSector : 0; }

    [[nodiscard]] bool isInMetadataFile(std::uint16_t partition) const { return partition != m_physical; }

    // Where a block of a partition lies in the image; one of the metadata partition: in the metadata file or in its copy.
    [[nodiscard]] std::uint64_t offsetOf(std::uint16_t partition, std::uint32_t block,
                                         std::size_t copy = 0) const
    {
        if (isInMetadataFile(partition)) { block = m_metadataBlocks.at(copy).at(block); }
        return (std::uint64_t{firstSector()} + block) * kSector;
    }

    // Takes blocks for a node's data from `next` on, or from where ImageSpec::sectors has them.
    void place(Node& node, std::size_t size, std::uint32_t& next, std::uint16_t partition,
               std::size_t blocksPerExtent)
    {
        const auto chosen = m_spec.sectors.find(node.path);
        const bool isChosen = chosen != m_spec.sectors.end();
        if (isChosen) { partition = m_physical; }
        std::uint32_t block = isChosen ? chosen->second - firstSector() : next;
        node.udf = {static_cast<std::uint32_t>(size), block, partition};
        for (std::size_t done = 0; done < size;) {
            const std::size_t length = std::min(size - done, blocksPerExtent * kSector);
            node.extents.push_back({static_cast<std::uint32_t>(length), block, partition});
            done += length;
            block += blocksOf(length) + (done < size ? 1 : 0);
        }
        if (!isChosen) { next = block; }
    }

    // Gives every file entry its blocks of the metadata partition, then every directory. UDF 1.02 has all in one
    // partition.
    void placeMetadata()
    {
        m_next = 2 + m_spec.unrecordedBlocks;
        for (Node& node : m_nodes) {
            node.entryBlock = m_next;
            m_next += blocksOf(entryOf(node).size());
        }
        for (Node& node : m_nodes) {
            if (!node.isDirectory || isEmbedded(node)) { continue; }
            place(node, udfDirectory(node).size(), m_next, m_metadata,
                  m_is250 ? kUncut : m_spec.blocksPerExtent);
        }
        if (!m_is250) { return; }
        m_image.m_metadataBlockCount = static_cast<std::uint32_t>(roundedUp(m_next, kAllocationUnit));
        m_next = 2;  // behind the entries of the metadata file and of its mirror
        m_metadataExtents = {placeMetadataFile(0), {}};
        m_metadataExtents[1] = m_spec.hasMetadataCopy ? placeMetadataFile(1) : m_metadataExtents[0];
    }

    std::vector<UdfExtent> placeMetadataFile(std::size_t copy)
    {
        const std::uint32_t holeEnd = 2 + m_spec.unrecordedBlocks;
        std::vector<UdfExtent> extents;
        m_next = static_cast<std::uint32_t>(roundedUp(m_next, kAllocationUnit));
        for (std::uint32_t block = 0; block < m_image.m_metadataBlockCount; ++block) {
            const bool isHole = block >= 2 && block < holeEnd;
            const bool isCut = !isHole && block % m_spec.blocksPerExtent == 0;
            if (isCut || (holeEnd > 2 && (block == 2 || block == holeEnd))) {
                if (block > 0) { ++m_next; }
                extents.push_back({isHole ? kNotRecorded : 0, isHole ? 0 : m_next});
            }
            extents.back().length += kSector;
            m_metadataBlocks.at(copy).push_back(isHole ? 0 : m_next++);
        }
        return extents;
    }

    void placeIsoDirectories()
    {
        if (!m_hasUdf) { m_next = 18; }
        for (Node& node : m_nodes) {
            if (!node.isDirectory) { continue; }
            node.iso = {static_cast<std::uint32_t>(isoDirectory(node).size()), m_next};
            const auto chosen = m_spec.sectors.find(node.path);
            if (!m_hasUdf && chosen != m_spec.sectors.end()) {
                node.iso.block = chosen->second;
            } else {
                m_next += blocksOf(node.iso.length);
            }
        }
    }

    // ---- Contents ----

    [[nodiscard]] bool isEmbedded(const Node& node) const
    {
        return m_spec.descriptorKind == 3 && (node.isDirectory || !m_is250);
    }

    [[nodiscard]] Bytes entryOf(const Node& node) const
    {
        UdfFileEntrySpec entry;
        entry.tag = m_is250 ? 266 : m_spec.fileEntryTag;
        entry.fileType = node.isDirectory ? 4 : 5;
        entry.descriptorKind = m_is250 && !node.isDirectory ? 1 : m_spec.descriptorKind;
        entry.informationLength = node.udf.length;
        entry.descriptors = node.extents;
        if (isEmbedded(node)) {
            entry.embedded = node.isDirectory ? udfDirectory(node) : *node.bytes;
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
        for (const std::size_t index : directory.children) {
            const Node& child = m_nodes[index];
            add(child.name(), child, child.isDirectory ? kDirectoryFlag : 0);
        }
        return bytes;
    }

    [[nodiscard]] Bytes isoRecordOf(const Node& node, const std::string& identifier) const
    {
        return isoRecord({identifier, firstSector() + node.iso.block, node.iso.length,
                          node.isDirectory ? kDirectoryFlag : std::uint8_t{0}});
    }

    // Records lie in one block each.
    Bytes isoDirectory(const Node& directory)
    {
        Bytes bytes;
        const auto add = [&bytes](const Bytes& record) {
            if (bytes.size() % kSector + record.size() > kSector) {
                bytes.resize(roundedUp(bytes.size(), kSector));
            }
            append(bytes, record);
            return bytes.size() - record.size();
        };
        add(isoRecordOf(directory, std::string(1, '\0')));
        add(isoRecordOf(m_nodes[directory.parent], "\1"));
        for (const std::size_t index : directory.children) {
            const Node& child = m_nodes[index];
            const std::size_t offset =
                add(isoRecordOf(child, child.name() + (child.isDirectory ? "" : ";1")));
            m_image.m_places[child.path].record = offsetOf(m_physical, directory.iso.block) + offset;
        }
        bytes.resize(roundedUp(bytes.size(), kSector));
        return bytes;
    }

    // ---- Writing ----

    void putBlocks(std::uint16_t partition, std::uint32_t block, const Bytes& bytes)
    {
        for (std::size_t start = 0; start < bytes.size(); start += kSector) {
            const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(start);
            Bytes sector(from, from + static_cast<std::ptrdiff_t>(std::min(kSector, bytes.size() - start)));
            sector.resize(kSector);
            if (isInMetadataFile(partition) && m_spec.hasMetadataCopy) {
                m_image.put(offsetOf(partition, block, 1), sector);
            }
            m_image.put(offsetOf(partition, block++), std::move(sector));
        }
    }

    void putDescriptor(std::uint16_t partition, std::uint32_t block, Bytes descriptor)
    {
        sealUdfTag(descriptor, block);
        putBlocks(partition, block, descriptor);
    }

    void putSector(std::uint32_t sector, Bytes descriptor)
    {
        sealUdfTag(descriptor, sector);
        descriptor.resize(kSector);
        m_image.put(sector * kSector, std::move(descriptor));
    }

    void putData(const Node& node, const Bytes& bytes)
    {
        m_image.m_places[node.path].data = offsetOf(node.udf.partition, node.udf.block);
        auto from = bytes.begin();
        for (const UdfExtent& extent : node.extents) {
            putBlocks(extent.partition, extent.block, Bytes(from, from + extent.length));
            from += extent.length;
        }
    }

    void putIso()
    {
        Bytes descriptor(kSector);
        putBe(descriptor, 0, 1, 1);
        putText(descriptor, 1, "CD001\1");
        std::string volumeId = m_spec.volumeId;
        volumeId.resize(32, ' ');
        putText(descriptor, 40, volumeId);
        putLe(descriptor, 128, kSector, 2);
        putBe(descriptor, 130, kSector, 2);
        putBytes(descriptor, 156, isoRecordOf(m_nodes[0], std::string(1, '\0')));
        m_image.put(kIsoDescriptor, descriptor);
        m_image.m_places[""].record = kIsoDescriptor + 156;
        for (const Node& node : m_nodes) {
            if (!node.isDirectory) { continue; }
            m_image.m_places[node.path].data = offsetOf(m_physical, node.iso.block);
            putBlocks(m_physical, node.iso.block, isoDirectory(node));
        }
    }

    void putUdf()
    {
        putVolume();
        for (const std::size_t copy : {0U, 1U}) {
            if (!m_is250) { break; }
            UdfFileEntrySpec entry{.tag = 266, .fileType = static_cast<std::uint8_t>(250 + copy)};
            entry.informationLength = m_image.m_metadataBlockCount * kSector;
            entry.descriptors = m_metadataExtents[copy];
            putDescriptor(m_physical, static_cast<std::uint32_t>(copy), udfFileEntry(entry));
        }
        m_image.m_fileSets = {offsetOf(m_metadata, 0),
                              offsetOf(m_metadata, 0, m_is250 && m_spec.hasMetadataCopy)};
        putDescriptor(m_metadata, 0, udfFileSet(m_nodes[0].entryBlock, m_metadata));
        putDescriptor(m_metadata, 1, udfDescriptor(8, 512));  // terminator
        for (const Node& node : m_nodes) {
            if (node.isDirectory && !isEmbedded(node)) { putData(node, udfDirectory(node)); }
            putDescriptor(m_metadata, node.entryBlock, entryOf(node));
            m_image.m_places[node.path].entry = offsetOf(m_metadata, node.entryBlock);
        }
    }

    void putVolume()
    {
        std::vector<Bytes> maps;
        std::vector<Bytes> sequence = {udfDescriptor(1, 512), {}};
        const auto addPartition = [&](std::size_t number, std::uint32_t sector, std::uint32_t length) {
            maps.push_back(udfPartitionMap(1, static_cast<std::uint16_t>(number)));
            sequence.push_back(udfPartition(static_cast<std::uint16_t>(number), sector, length));
        };
        for (std::size_t i = 1; i <= m_spec.partitionsBefore; ++i) {
            addPartition(m_spec.partitionNumber + i, 9999, 1);
        }
        addPartition(m_spec.partitionNumber, kUdfPartitionSector, m_next);
        if (m_is250) {
            maps.insert(m_spec.isMetadataMapFirst ? maps.begin() : maps.end(),
                        udfPartitionMap(2, m_spec.partitionNumber));
            maps[m_metadata][58] = m_spec.hasMetadataCopy ? 1 : 0;
        }
        sequence[1] = udfLogicalVolume(m_metadata, maps);
        sequence.push_back(udfDescriptor(8, 512));  // terminator
        for (std::uint32_t i = 0; i < sequence.size(); ++i) {
            putSector(kSequenceSector + i, sequence[i]);
        }
        const Bytes anchor =
            udfDescriptor(2, 512, {{16, 4, kSequenceLength * kSector}, {20, 4, kSequenceSector}});
        putSector(kUdfAnchor / kSector, anchor);
        putSector(kUdfPartitionSector + m_next, anchor);
    }

    const ImageSpec& m_spec;
    bool m_hasIso;
    bool m_hasUdf;
    bool m_is250;
    std::uint16_t m_physical;  // partition references; equal in UDF 1.02
    std::uint16_t m_metadata;
    std::vector<Node> m_nodes;  // the root first, each directory before what is in it
    std::map<std::string, std::size_t> m_indexes;
    std::uint32_t m_next = 0;                                 // the next free block
    std::array<std::vector<UdfExtent>, 2> m_metadataExtents;  // of the metadata file and of its mirror
    std::array<std::vector<std::uint32_t>, 2>
        m_metadataBlocks;  // the real partition's block for each of the metadata
    BuiltImage m_image;
};

BuiltImage buildImage(const std::vector<TreeFile>& files, DiscForm form, const ImageSpec& spec)
{
    BuiltImage image = ImageLayout(files, form, spec).build();
    if (form == DiscForm::Udf250Mirror) { image.wipe(kMetadataFile); }
    return image;
}

}  // namespace testsupport
