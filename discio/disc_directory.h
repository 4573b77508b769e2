// The names of one directory of a disc, listed once and then looked up by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace discio {

// A name and where the file or directory lies that it names.
struct DiscEntry {
    std::string name;
    bool isDirectory = false;     // as the entry itself says; a directory tree leaves it out
    std::uint32_t block = 0;      // ISO-9660: the first block; UDF: the logical block of its ICB
    std::uint32_t sizeBytes = 0;  // ISO-9660: the data length
    std::uint16_t partition = 0;  // UDF: the partition reference of its ICB
};

class DiscDirectory {
public:
    // Appends an entry. One that is not findable is listed alone.
    void add(DiscEntry entry, bool isFindable = true);

    // In the order they were added.
    [[nodiscard]] const std::vector<DiscEntry>& entries() const { return m_entries; }

    // The first entry that was added under this name in any letter case; null where there is none.
    [[nodiscard]] const DiscEntry* find(std::string_view name) const;

    std::string path;         // of a directory tree: where it stands on disk
    bool isListable = false;  // its end was reached: nothing made the walk over it stop before

private:
    std::vector<DiscEntry> m_entries;
    // Ordered, not hashed: the names are the disc's, and could be chosen to hash alike.
    std::map<std::string, std::size_t> m_firstByFoldedName;
};

}  // namespace discio
