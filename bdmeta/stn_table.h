// The stream table of a PlayItem, STN_table():
//
//      0  length behind this field            8  secondary audio streams
//      4  primary video streams               9  secondary video streams
//      5  primary audio streams              10  picture-in-picture graphics streams
//      6  presentation graphics streams      11  Dolby Vision streams
//      7  interactive graphics streams       16  the entries, in the order of StreamCategory
//
// An entry is a stream_entry (length, type, then where the stream is found: its PID at an offset by type) and
// its stream_attributes (length, then the body of stream_attributes.h). Secondary streams are followed by
// lists of the streams that they may be played with.
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

// Parses the table at the start of `bytes`, which reach to the end of the file; empty where it is malformed.
// Deliberate: the entries may go beyond the table's own length and the PlayItem's; the file's end is the
// bound.
[[nodiscard]] std::optional<ParsedStreamTable> parseStreamTable(std::span<const std::uint8_t> bytes);

// The stream tables of one disc. What a table says depends on its own bytes alone, so one that equals a table
// met shortly before is shared instead of parsed again.
class StreamTables {
public:
    // The budget must outlive the tables. Tables may overlap, so a small file can claim any number of streams.
    explicit StreamTables(discio::ReadBudget& budget)
        : m_budget(&budget)
    {}

    // Parses the table at the start of `bytes`, as parseStreamTable() does. Null where it is malformed, or
    // where the disc's tables would hold more streams than the budget allows. A shared table counts once.
    [[nodiscard]] StreamTable read(std::span<const std::uint8_t> bytes);

private:
    struct Known {
        std::vector<std::uint8_t> bytes;
        StreamTable table;
    };

    std::vector<Known> m_recent;  // the last one used first
    discio::ReadBudget* m_budget;
};

}  // namespace bdmeta
