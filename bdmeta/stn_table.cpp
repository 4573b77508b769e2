#include "bdmeta/stn_table.h"

#include "bdmeta/stream_attributes.h"
#include "discio/byte_reader.h"

#include <algorithm>

namespace bdmeta {

using discio::ByteReader;

namespace {

constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kLengthFieldSize = 2;

// The number of recent tables, and the size of the largest; a table of a hundred streams has about 1,600 bytes. Both
// are small, so that the search for an equal table costs little on a disc whose tables all differ in their last byte.
constexpr std::size_t kMaxRecentTables = 32;
constexpr std::size_t kMaxSharedTableSize = 2048;

struct StreamGroup {
    StreamCategory category;
    unsigned streamCount;
    unsigned referenceListCount;  // after each of its entries
};

std::uint16_t be16At(std::span<const std::uint8_t> bytes, std::size_t offset)
{
    ByteReader reader(bytes);
    reader.seek(offset);
    return reader.be16();
}

// `entry` begins with the length byte and the type.
std::uint16_t entryPid(std::span<const std::uint8_t> entry, std::uint8_t entryType)
{
    switch (entryType) {
    case 1:
        return be16At(entry, 2);
    case 2:
        return be16At(entry, 4);
    case 3:
    case 4:
        return be16At(entry, 3);
    default:
        return 0;
    }
}

// Takes a length byte and as many bytes, together. Empty if the length is 0 or the bytes end before.
std::span<const std::uint8_t> readCounted(ByteReader& reader)
{
    const std::size_t start = reader.position();
    const std::size_t length = reader.u8();
    reader.seek(start);
    const auto counted = reader.bytes(1 + length);
    return length > 0 ? counted : std::span<const std::uint8_t>();
}

bool parseEntry(ByteReader& reader, StreamCategory category, BlurayStream& stream)
{
    const auto entry = readCounted(reader);
    const auto attributes = readCounted(reader);
    if (entry.empty() || attributes.empty()) { return false; }
    const std::uint8_t entryType = entry[1];
    decodeStreamAttributes(stream, entryPid(entry, entryType), attributes.subspan(1), false);
    stream.entryType = entryType;
    stream.category = category;
    return true;
}

// A count, a reserved byte and that many references, padded to an even length.
void skipReferenceList(ByteReader& reader)
{
    const std::size_t count = reader.u8();
    reader.skip(1 + count + count % 2);
}

bool parseGroup(ByteReader& reader, const StreamGroup& group, std::vector<BlurayStream>& streams)
{
    for (unsigned i = 0; i < group.streamCount; ++i) {
        BlurayStream stream;
        if (!parseEntry(reader, group.category, stream)) { return false; }
        for (unsigned list = 0; list < group.referenceListCount; ++list) {
            skipReferenceList(reader);
        }
        if (!reader.ok()) { return false; }
        streams.push_back(stream);
    }
    return true;
}

std::array<StreamGroup, 7> parseCounts(ByteReader& reader)
{
    std::array<unsigned, 8> counts = {};
    for (unsigned& count : counts) {
        count = reader.u8();
    }
    const auto [video, audio, graphics, interactive, secondaryAudio, secondaryVideo, pipGraphics,
                dolbyVision] = counts;
    return {{{StreamCategory::PrimaryVideo, video, 0},
             {StreamCategory::PrimaryAudio, audio, 0},
             {StreamCategory::Subtitle, graphics + pipGraphics, 0},
             {StreamCategory::InteractiveGraphics, interactive, 0},
             {StreamCategory::SecondaryAudio, secondaryAudio, 1},
             {StreamCategory::SecondaryVideo, secondaryVideo, 2},
             {StreamCategory::DolbyVision, dolbyVision, 0}}};
}

bool isDeclaredLengthValid(std::span<const std::uint8_t> bytes)
{
    const std::size_t size = kLengthFieldSize + be16At(bytes, 0);
    return bytes.size() >= kHeaderSize && size >= kHeaderSize && size <= bytes.size();
}

}  // namespace

std::optional<ParsedStreamTable> parseStreamTable(std::span<const std::uint8_t> bytes)
{
    if (!isDeclaredLengthValid(bytes)) { return std::nullopt; }
    ByteReader reader(bytes);
    reader.seek(4);
    const auto groups = parseCounts(reader);
    reader.seek(kHeaderSize);
    ParsedStreamTable table;
    for (const StreamGroup& group : groups) {
        if (!parseGroup(reader, group, table.streams)) { return std::nullopt; }
    }
    table.streams.shrink_to_fit();
    table.sizeBytes = reader.position();
    return table;
}

StreamTable StreamTables::read(std::span<const std::uint8_t> bytes)
{
    // Needed also for a shared table: equal tables can have different distances to the file's end.
    if (!isDeclaredLengthValid(bytes)) { return nullptr; }
    const auto known = std::ranges::find_if(m_recent, [bytes](const RecentTable& recent) {
        return recent.bytes.size() <= bytes.size() &&
               std::ranges::equal(recent.bytes, bytes.first(recent.bytes.size()));
    });
    if (known != m_recent.end()) {
        std::rotate(m_recent.begin(), known, known + 1);
        return m_recent.front().table;
    }

    auto parsed = parseStreamTable(bytes);
    if (!parsed || !m_budget->spend(discio::ReadBudget::Bound::Streams, parsed->streams.size())) {
        return nullptr;
    }
    auto table = std::make_shared<const std::vector<BlurayStream>>(std::move(parsed->streams));
    if (parsed->sizeBytes <= kMaxSharedTableSize) {
        if (m_recent.size() == kMaxRecentTables) { m_recent.pop_back(); }
        const auto own = bytes.first(parsed->sizeBytes);
        m_recent.insert(m_recent.begin(), {{own.begin(), own.end()}, table});
    }
    return table;
}

}  // namespace bdmeta
