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

#include <algorithm>
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

// Tables may overlap, so a small file can claim any number of streams. No disc comes near this many (a quarter of a
// gigabyte), nor near one for each 4 bytes of its playlists, since an entry of a table takes 16; a disc of more counts
// as one that memory cannot be had for. Small discs have some streams free of that.
inline constexpr std::size_t kMaxDiscStreams = 4U << 20U;
inline constexpr std::size_t kBytesPerStream = 4;
inline constexpr std::size_t kFreeStreams = 65'536;

// The stream tables of one disc. What a table says depends on its own bytes alone, so one that equals a table
// met shortly before is shared instead of parsed again.
class StreamTables {
public:
    explicit StreamTables(std::size_t maxStreams = kMaxDiscStreams)
        : m_maxStreams(maxStreams)
    {}

    // A playlist file of this size is about to be read: the disc's tables may hold so many more streams.
    void addFile(std::size_t sizeBytes) { m_fileBytes += sizeBytes; }

    // Parses the table at the start of `bytes`, as parseStreamTable() does. Null where it is malformed, or
    // where the disc's tables would hold more streams than they may.
    [[nodiscard]] StreamTable read(std::span<const std::uint8_t> bytes);

    // The streams of all tables, those of a shared table counted once.
    [[nodiscard]] std::size_t streamCount() const { return m_streamCount; }

private:
    // Never fewer than there are.
    [[nodiscard]] std::size_t allowedStreams() const
    {
        return std::min(m_maxStreams, kFreeStreams + m_fileBytes / kBytesPerStream);
    }

    struct Known {
        std::vector<std::uint8_t> bytes;
        StreamTable table;
    };

    std::vector<Known> m_recent;  // the last one used first
    std::size_t m_maxStreams;
    std::size_t m_fileBytes = 0;
    std::size_t m_streamCount = 0;
};

}  // namespace bdmeta
