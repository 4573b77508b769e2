// The entries of one directory of a disc, found by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

// A name, and the place of its file or directory.
struct DiscEntry {
    std::string name;
    bool isDirectory = false;     // the entry's own flag; false in a directory tree
    std::uint32_t block = 0;      // ISO-9660: the first block; UDF: the logical block of its ICB
    std::uint32_t sizeBytes = 0;  // ISO-9660: the data length
    std::uint16_t partition = 0;  // UDF: the partition reference of its ICB
};

class DiscDirectory {
public:
    // Appends an entry. find() ignores an entry that is not findable.
    void add(DiscEntry entry, bool isFindable = true);

    // In the order they were added.
    [[nodiscard]] const std::vector<DiscEntry>& entries() const { return m_entries; }

    // Returns the findable entry that was first added with this name in any letter case, or null.
    [[nodiscard]] const DiscEntry* find(std::string_view name) const;

    std::string path;         // directory tree: its path on disk
    bool isListable = false;  // all its records were read

private:
    std::vector<DiscEntry> m_entries;
    // Ordered, not hashed: a hostile disc could choose names with equal hashes.
    std::map<std::string, std::size_t> m_firstByFoldedName;
};

}  // namespace discio
