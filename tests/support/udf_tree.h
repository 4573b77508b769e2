// The directories and files of a UDF image, in the order in which a list of files names them.
#pragma once

#include "tests/support/iso_builder.h"
#include "tests/support/udf_builder.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

struct UdfNode {
    std::string path;
    bool isDirectory = false;
    Bytes bytes = {};
    std::uint32_t entryBlock = 0;
    std::vector<UdfAllocationDescriptor> extents = {};
    std::vector<std::size_t> children = {};  // of a directory: their places in the tree
    std::size_t parent = 0;                  // of the root: itself

    [[nodiscard]] std::string name() const { return path.substr(path.rfind('/') + 1); }
};

// The root comes first, each directory before what is in it.
class UdfTree {
public:
    explicit UdfTree(const std::vector<TreeFile>& files)
    {
        m_nodes.push_back({"", true});
        m_indexByPath[""] = 0;
        for (const TreeFile& file : files) {
            for (std::size_t slash = file.path.find('/'); slash != std::string::npos;
                 slash = file.path.find('/', slash + 1)) {
                add({file.path.substr(0, slash), true});
            }
            add({file.path, false, file.bytes});
        }
    }

    [[nodiscard]] std::vector<UdfNode>& nodes() { return m_nodes; }
    [[nodiscard]] const std::vector<UdfNode>& nodes() const { return m_nodes; }

private:
    void add(UdfNode node)
    {
        if (!m_indexByPath.emplace(node.path, m_nodes.size()).second) { return; }
        const std::size_t slash = node.path.rfind('/');
        node.parent = m_indexByPath.at(slash == std::string::npos ? "" : node.path.substr(0, slash));
        m_nodes[node.parent].children.push_back(m_nodes.size());
        m_nodes.push_back(std::move(node));
    }

    std::vector<UdfNode> m_nodes;
    std::map<std::string, std::size_t> m_indexByPath;
};

}  // namespace testsupport
