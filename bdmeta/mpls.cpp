#include "bdmeta/mpls.h"

#include "bdmeta/field_text.h"

#include <algorithm>

namespace bdmeta {

using discio::ByteReader;

namespace {

constexpr std::string_view kMagic = "MPLS";
constexpr std::size_t kMinimumSize = 58;
constexpr std::size_t kPlayListHeaderSize = 10;
constexpr std::size_t kMarkHeaderSize = 6;
constexpr std::size_t kMarkSize = 14;
constexpr std::size_t kAngleSize = 10;

constexpr std::size_t kAppInfoOffset = 40;
// Deliberate: an AppInfoPlayList() of the usual length, 14, is ignored; its fields stay 0.
constexpr std::uint32_t kAppInfoMinimum = 17;

// The size of a PlayItem without further angles, after its length field.
constexpr std::size_t kPlayItemMinimum = 32;
constexpr std::size_t kLengthFieldSize = 2;

constexpr std::uint64_t kTicksPerSecond = 45000;

void parseAppInfo(ByteReader file, BlurayPlaylist& playlist)
{
    file.seek(kAppInfoOffset);
    const std::uint32_t length = file.be32();
    if (length < kAppInfoMinimum || length > file.remaining()) { return; }
    file.skip(1);
    playlist.playbackType = file.u8();
    file.skip(10);
    const std::uint8_t flags = file.u8();
    playlist.randomAccess = (flags & 0x80U) != 0;
    playlist.audioMixApp = (flags & 0x40U) != 0;
    playlist.losslessBypassMixer = (flags & 0x20U) != 0;
}

BlurayAngle parseAngle(ByteReader& reader)
{
    BlurayAngle angle;
    angle.clipName = readText<5>(reader);
    angle.codecId = readText<4>(reader);
    angle.stcId = reader.u8();
    return angle;
}

// Parses the fields at fixed offsets. Returns whether the PlayItem has several angles.
bool parseFields(ByteReader& reader, BlurayPlayItem& item)
{
    item.clipName = readText<5>(reader);
    item.codecId = readText<4>(reader);
    reader.skip(1);
    const std::uint8_t flags = reader.u8();
    item.connectionCondition = flags & 0x0FU;
    item.stcId = reader.u8();
    item.inTime = reader.be32();
    item.outTime = reader.be32();
    reader.skip(8);
    item.randomAccess = (reader.u8() & 0x80U) != 0;
    item.stillMode = reader.u8();
    item.stillTime = reader.be16();
    // Deliberate: an OUT time below the IN time wraps around in 32 bits.
    const std::uint32_t ticks = item.outTime - item.inTime;
    item.durationMs = ticks * std::uint64_t{1000} / kTicksPerSecond;
    return (flags & 0x10U) != 0;
}

// Parses the PlayItem at the position of `file`, a reader over the whole file, and moves to its end.
bool parsePlayItem(ByteReader& file, std::span<const std::uint8_t> bytes, StreamTables& tables,
                   BlurayPlayItem& item)
{
    const std::size_t length = file.be16();
    if (!file.ok() || length < kPlayItemMinimum || length > file.remaining()) { return false; }
    const std::size_t start = file.position();
    ByteReader reader = file.slice(start, length);

    const bool isMultiAngle = parseFields(reader, item);
    std::size_t angleCount = 1;
    if (isMultiAngle) {
        angleCount = std::max<std::size_t>(reader.u8(), 1);
        reader.skip(1);
        if ((angleCount - 1) * kAngleSize > reader.remaining()) { return false; }
    }
    item.angles.reserve(angleCount);
    item.angles.push_back({item.clipName, item.codecId, item.stcId});
    while (item.angles.size() < angleCount) {
        item.angles.push_back(parseAngle(reader));
    }
    if (!reader.ok()) { return false; }

    // Deliberate: the stream table may extend past the item; the next item begins after the item's own length.
    item.streams = tables.read(bytes.subspan(start + reader.position()));
    file.skip(length);
    return item.streams != nullptr;
}

bool parsePlayItems(std::span<const std::uint8_t> bytes, std::uint32_t address, StreamTables& tables,
                    BlurayPlaylist& playlist)
{
    ByteReader file(bytes);
    file.seek(address);
    if (!file.ok() || file.remaining() < kPlayListHeaderSize) { return false; }
    file.skip(6);
    const std::size_t count = file.be16();
    playlist.subPathCount = file.be16();
    if (count > file.remaining() / (kLengthFieldSize + kPlayItemMinimum)) { return false; }
    playlist.playItems.resize(count);
    for (BlurayPlayItem& item : playlist.playItems) {
        if (!parsePlayItem(file, bytes, tables, item)) { return false; }
        playlist.durationMs += item.durationMs;
    }
    return true;
}

bool parseMarks(ByteReader file, std::uint32_t address, BlurayPlaylist& playlist)
{
    file.seek(address);
    if (!file.ok() || file.remaining() < kMarkHeaderSize) { return false; }
    file.skip(4);
    const std::size_t count = file.be16();
    if (count > file.remaining() / kMarkSize) { return false; }
    playlist.marks.resize(count);
    for (BlurayPlaylistMark& mark : playlist.marks) {
        file.skip(1);
        mark.markType = file.u8();
        mark.playItemRef = file.be16();
        mark.timeStamp = file.be32();
        mark.entryPid = file.be16();
        mark.duration = file.be32();
    }
    return file.ok();
}

}  // namespace

std::optional<BlurayPlaylist> parsePlaylistBytes(std::span<const std::uint8_t> bytes, StreamTables& tables)
{
    ByteReader file(bytes);
    const auto magic = readText<4>(file);
    BlurayPlaylist playlist;
    playlist.version = readText<4>(file);
    const std::uint32_t playListAddress = file.be32();
    const std::uint32_t markAddress = file.be32();
    if (bytes.size() < kMinimumSize || magic.view() != kMagic) { return std::nullopt; }
    parseAppInfo(file, playlist);
    if (!parsePlayItems(bytes, playListAddress, tables, playlist) ||
        !parseMarks(file, markAddress, playlist)) {
        return std::nullopt;
    }
    return playlist;
}

}  // namespace bdmeta
