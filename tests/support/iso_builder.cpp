#include "tests/support/iso_builder.h"

#include <algorithm>
#include <cctype>

namespace testsupport {

namespace {

constexpr std::size_t kDescriptorBlock = 16;
constexpr std::uint32_t kFirstDirectoryBlock = 18;
constexpr std::uint8_t kDirectoryFlag = 0x02;

void putBothEndian(Bytes& bytes, std::size_t offset, std::uint64_t value, std::size_t width)
{
    putLe(bytes, offset, value, width);
    putBe(bytes, offset + width, value, width);
}

// A file or directory of the tree with its place in the image.
struct Node {
    std::string path;
    std::string name;
    bool isDirectory = false;
    std::size_t parent = 0;
    std::vector<std::size_t> children;
    const Bytes* bytes = nullptr;
    std::uint32_t block = 0;
    std::uint32_t sizeBytes = 0;
};

class IsoLayout {
public:
    IsoLayout(const std::vector<TreeFile>& files, const IsoSpec& spec)
        : m_spec(spec)
    {
        Node root;
        root.isDirectory = true;
        m_nodes.push_back(root);
        for (const TreeFile& file : files) {
            addFile(file);
        }
    }

    SparseImage build()
    {
        placeNodes();
        SparseImage image;
        image.put(kDescriptorBlock * kIsoBlock, volumeDescriptor());
        image.put((kDescriptorBlock + 1) * kIsoBlock, terminator());
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            Bytes bytes = m_nodes[i].isDirectory ? directoryBytes(i) : *m_nodes[i].bytes;
            bytes.resize(roundedUp(bytes.size(), kIsoBlock));
            image.put(std::uint64_t{m_nodes[i].block} * kIsoBlock, std::move(bytes));
        }
        return image;
    }

private:
    void addFile(const TreeFile& file)
    {
        std::size_t parent = 0;
        for (std::size_t slash = file.path.find('/'); slash != std::string::npos;
             slash = file.path.find('/', slash + 1)) {
            parent = childDirectory(parent, file.path.substr(0, slash));
        }
        m_nodes[addNode(parent, file.path, false)].bytes = &file.bytes;
    }

    std::size_t addNode(std::size_t parent, const std::string& path, bool isDirectory)
    {
        Node node;
        node.path = path;
        node.name = path.substr(path.rfind('/') + 1);
        node.isDirectory = isDirectory;
        node.parent = parent;
        m_nodes.push_back(node);
        m_nodes[parent].children.push_back(m_nodes.size() - 1);
        return m_nodes.size() - 1;
    }

    std::size_t childDirectory(std::size_t parent, const std::string& path)
    {
        for (const std::size_t child : m_nodes[parent].children) {
            if (m_nodes[child].path == path) { return child; }
        }
        return addNode(parent, path, true);
    }

    void placeNodes()
    {
        std::uint32_t next = kFirstDirectoryBlock;
        for (const bool directories : {true, false}) {
            for (std::size_t i = 0; i < m_nodes.size(); ++i) {
                Node& node = m_nodes[i];
                if (node.isDirectory != directories) { continue; }
                const std::size_t size = node.isDirectory ? directoryBytes(i).size() : node.bytes->size();
                node.sizeBytes = static_cast<std::uint32_t>(size);
                const IsoRecordOverride lie = overrideOf(node);
                node.block = lie.block.value_or(next);
                if (!lie.block) {
                    next += static_cast<std::uint32_t>(roundedUp(size, kIsoBlock) / kIsoBlock);
                }
            }
        }
    }

    [[nodiscard]] IsoRecordOverride overrideOf(const Node& node) const
    {
        const auto found = m_spec.records.find(node.path);
        return found == m_spec.records.end() ? IsoRecordOverride{} : found->second;
    }

    [[nodiscard]] std::string identifierOf(const Node& node) const
    {
        std::string identifier = node.name;
        if (m_spec.lowerCaseNames) {
            std::ranges::transform(identifier, identifier.begin(), [](unsigned char letter) {
                return static_cast<char>(std::tolower(letter));
            });
        }
        return node.isDirectory ? identifier : identifier + m_spec.versionSuffix;
    }

    // The node's record under the given identifier: its own name, or that of a dot entry.
    [[nodiscard]] Bytes recordOf(const Node& node, std::string identifier) const
    {
        const IsoRecordOverride lie = overrideOf(node);
        return isoRecord({std::move(identifier), node.block, lie.sizeBytes.value_or(node.sizeBytes),
                          lie.flags.value_or(node.isDirectory ? kDirectoryFlag : std::uint8_t{0}),
                          lie.recordLength, std::nullopt});
    }

    [[nodiscard]] Bytes directoryBytes(std::size_t index) const
    {
        const Node& directory = m_nodes[index];
        Bytes bytes;
        const auto append = [&bytes](const Bytes& record) {
            const std::size_t roomInBlock = kIsoBlock - bytes.size() % kIsoBlock;
            if (record.size() > roomInBlock) { bytes.resize(bytes.size() + roomInBlock); }
            putBytes(bytes, bytes.size(), record);
        };
        append(recordOf(directory, std::string(1, '\0')));
        append(recordOf(m_nodes[directory.parent], "\1"));
        for (const std::size_t child : directory.children) {
            append(recordOf(m_nodes[child], identifierOf(m_nodes[child])));
        }
        bytes.resize(roundedUp(bytes.size(), kIsoBlock));
        return bytes;
    }

    [[nodiscard]] Bytes volumeDescriptor() const
    {
        Bytes sector(kIsoBlock);
        putU8(sector, 0, m_spec.descriptorType);
        putText(sector, 1, m_spec.standardId);
        putU8(sector, 6, 1);
        std::string volumeId = m_spec.volumeId;
        volumeId.resize(32, ' ');
        putText(sector, 40, volumeId);
        putBothEndian(sector, 120, 1, 2);
        putBothEndian(sector, 124, 1, 2);
        putLe(sector, 128, m_spec.blockSizeLittleEndian, 2);
        putBe(sector, 130, m_spec.blockSizeBigEndian, 2);
        putBytes(sector, 156, recordOf(m_nodes[0], std::string(1, '\0')));
        putU8(sector, 156, m_spec.rootRecordLength);
        return sector;
    }

    static Bytes terminator()
    {
        Bytes sector(kIsoBlock);
        putU8(sector, 0, 255);
        putText(sector, 1, "CD001");
        putU8(sector, 6, 1);
        return sector;
    }

    const IsoSpec& m_spec;
    std::vector<Node> m_nodes;
};

}  // namespace

Bytes isoRecord(const IsoRecordSpec& spec)
{
    const std::size_t identifierLength = spec.identifier.size();
    const std::size_t length =
        spec.recordLength.value_or(static_cast<std::uint8_t>(roundedUp(33 + identifierLength, 2)));
    Bytes record;
    putU8(record, 0, static_cast<std::uint8_t>(length));
    putBothEndian(record, 2, spec.block, 4);
    putBothEndian(record, 10, spec.sizeBytes, 4);
    putU8(record, 25, spec.flags);
    putBothEndian(record, 28, 1, 2);
    putU8(record, 32, spec.identifierLength.value_or(static_cast<std::uint8_t>(identifierLength)));
    putText(record, 33, spec.identifier);
    record.resize(length);
    return record;
}

SparseImage buildIso(const std::vector<TreeFile>& files, const IsoSpec& spec)
{
    return IsoLayout(files, spec).build();
}

}  // namespace testsupport
