// The stream table of a PlayItem, STN_table():
//
//      0  length after this field             8  secondary audio streams
//      4  primary video streams               9  secondary video streams
//      5  primary audio streams              10  picture-in-picture graphics streams
//      6  presentation graphics streams      11  Dolby Vision streams
//      7  interactive graphics streams       16  the entries, in the order of StreamCategory
//
// An entry is a stream_entry (length, type, then the PID at an offset that depends on the type) and its
// stream_attributes (length, then the body of stream_attributes.h). After the entry of a secondary stream follow lists
// of the streams that it may be played with.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "discio/read_budget.h"

#include <optional>
#include <span>

namespace bdmeta {

struct ParsedStreamTable {
    std::vector<BlurayStream> streams;
    std::size_t sizeBytes = 0;  // from the table's start to the end of its last entry
};

// Parses the table at the start of `bytes`, which end with the file. Empty if it is malformed.
// Deliberate: entries may extend past the end of the table and of the PlayItem, but not of the file.
[[nodiscard]] std::optional<ParsedStreamTable> parseStreamTable(std::span<const std::uint8_t> bytes);

// The stream tables of one disc. A table depends on its own bytes only, so a table that equals a recent one is shared
// instead of parsed again.
class StreamTables {
public:
    // The budget must outlive the tables. Tables may overlap, so a small file can claim any number of streams.
    explicit StreamTables(discio::ReadBudget& budget)
        : m_budget(&budget)
    {}

    // Parses the table at the start of `bytes`, as parseStreamTable() does. Returns null if it is malformed or the
    // disc's tables exceed the budget of streams. A shared table counts once.
    [[nodiscard]] StreamTable read(std::span<const std::uint8_t> bytes);

private:
    struct RecentTable {
        std::vector<std::uint8_t> bytes;
        StreamTable table;
    };

    std::vector<RecentTable> m_recent;  // the last used first
    discio::ReadBudget* m_budget;
};

}  // namespace bdmeta
