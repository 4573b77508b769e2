// Streams, playlists, clips and titles of whole and of lying files, held against golden texts.
#include "bdmeta/distinct_play_time.h"
#include "bdmeta/stream_attributes.h"
#include "tests/bdmeta/built_records.h"
#include "tests/bdmeta/rich_files.h"
#include "tests/support/golden.h"

using namespace testsupport;

namespace {

Bytes resized(Bytes bytes, std::size_t size)
{
    bytes.resize(size);
    return bytes;
}

constexpr auto textOfPlaylist = [](const Bytes& bytes) { return Text::of(parsePlaylist(bytes)); };
constexpr auto textOfClip = [](const Bytes& bytes) { return Text::of(bdmeta::parseClipInfoBytes(bytes)); };

// The tables that are shared give what a parse of their own would.
std::string textOfTable(const Bytes& bytes)
{
    static discio::ReadBudget budget;
    static bdmeta::StreamTables tables(budget);
    const auto parsed = bdmeta::parseStreamTable(bytes);
    const bdmeta::StreamTable shared = tables.read(bytes);
    EXPECT_EQ(shared ? Text::words(*shared, "") : "", parsed ? Text::words(parsed->streams, "") : "");
    return Text::of(parsed);
}

// A table of one primary video stream.
Bytes tableOf(const Bytes& entry)
{
    Bytes table = patched(Bytes(16), {{0, 2, 14}, {4, 1, 1}, {16, 1, entry.size()}});
    append(table, entry);
    appendBe(table, {{1, 1}, {27, 1}});
    return table;
}

// A playlist with bytes put into its first item.
Bytes withInserted(Bytes playlist, std::size_t offset, const Bytes& content)
{
    playlist.insert(playlist.begin() + static_cast<std::ptrdiff_t>(offset), content.begin(), content.end());
    return patched(playlist, {{kFirstPlayItem, 2, playlist[kFirstPlayItem + 1] + content.size()},
                              {15, 1, playlist[15] + content.size()}});
}

// The rich playlist with few streams, and a gap after the first item's table.
Bytes playlistWithGap()
{
    MplsSpec spec = richPlaylist();
    spec.playItems[0].stn = {.primaryVideo = {video(5)}};
    spec.playItems[1].stn = {};
    spec.playItems.pop_back();
    const Bytes bytes = spec.build();
    return withInserted(bytes, kFirstPlayItem + 2 + bytes[kFirstPlayItem + 1], Bytes(12, 0xEE));
}

// A PlayItem that has a number of angles, but no angle beyond its own.
Bytes playlistOfAngles(std::uint8_t number)
{
    return patched(withInserted(MplsSpec().build(), kFirstPlayItem + 34, {number, 0}),
                   {{kFirstPlayItem + 12, 1, 0x11}});
}

const Bytes kNoPlaylist = patched(Bytes(58), {{0, 4, 0x4D504C53}, {8, 4, 48}, {12, 4, 52}});
const Bytes kNoClip = patched(Bytes(60), {{0, 4, 0x48444D56}, {12, 4, 54}, {54, 4, 2}});

TEST(Files, HoldTheRecord)
{
    const ClpiSpec longest{.atcSequences = {{.stcSequences = {{.presentationEndTime = UINT32_MAX}}}}};
    std::string text;
    for (const std::string& record :
         {textOfPlaylist(richPlaylist().build()), textOfPlaylist(playlistWithGap()),
          textOfPlaylist(playlistOfAngles(0)), textOfPlaylist(playlistOfAngles(1)),
          textOfPlaylist(kNoPlaylist),
          textOfPlaylist(patched(resized(kNoPlaylist, 57), {{8, 4, 47}, {12, 4, 51}})),
          textOfClip(richClip().build()), textOfClip(longest.build()), textOfClip(kNoClip),
          textOfClip(resized(patched(kNoClip, {{12, 4, 53}, {53, 4, 2}}), 59)),
          textOfTable(tableOf({5, 0x1A, 0x0B, 0x1A, 0x0B})), textOfTable(tableOf({}))}) {
        text += record + '\n';
    }
    EXPECT_EQ(goldenDifference(text, "bdmeta/golden/records.txt"), "");
}

// What comes of a file that is cut off at each byte, and of numbers that are added to the byte: "-" is malformed, "=" the
// same record, "*" another. A line holds from its byte up to that of the next line.
void expectOutcomes(const std::string& golden, const Bytes& file, std::string (*textOf)(const Bytes&))
{
    const std::string whole = textOf(file);
    const auto outcomeOf = [&](const Bytes& changed) {
        const std::string text = textOf(changed);
        return text == "malformed" ? '-' : text == whole ? '=' : '*';
    };
    std::string text = {outcomeOf(resized(file, file.size() + 1)), '\n'};
    std::string former;
    for (std::size_t at = 0; at < file.size(); ++at) {
        std::string outcomes = {outcomeOf(resized(file, at)), ' '};
        for (const unsigned more : {1U, 2U, 3U, 12U, 13U, 64U, 128U, 192U, 243U, 244U, 253U, 254U, 255U}) {
            outcomes += outcomeOf(patched(file, {{at, 1, file[at] + more}}));
        }
        if (outcomes != former) { text += std::to_string(at) + ": " + outcomes + '\n'; }
        former = outcomes;
    }
    EXPECT_EQ(goldenDifference(text, "bdmeta/golden/" + golden), "");
}

TEST(Files, WithAnyByteChanged)
{
    expectOutcomes("changed_playlist.txt", playlistWithGap(), textOfPlaylist);
    ClpiSpec clip = richClip();
    clip.epStreams.clear();
    expectOutcomes("changed_clip.txt", clip.build(), textOfClip);
    StnTableSpec table{.primaryVideo = {video(5)}};
    table.secondaryAudio = {fullTable().secondaryAudio[0]};
    table.secondaryVideo = {fullTable().secondaryVideo[0]};
    expectOutcomes("changed_table.txt", patched(table.build(), {{0, 2, 78}, {79, 1, 0}}), textOfTable);
}

std::string decoded(const Bytes& attributes, bool isFromClip = false)
{
    bdmeta::BlurayStream stream;
    stream.language = bdmeta::LanguageCode("old");  // of a stream decoded before
    stream.width = 1;
    bdmeta::decodeStreamAttributes(stream, 0x1011, attributes, isFromClip);
    return Text::of(stream);
}

TEST(Streams, OfEveryCodingFormatAndLength)
{
    std::string text;
    for (unsigned type = 0; type < 256; ++type) {
        const std::string stream = decoded({static_cast<std::uint8_t>(type), 0x61, 'e', 'n', 'g'});
        if (type == 0 || stream.find("Unknown") == std::string::npos) { text += stream; }
    }
    for (std::uint8_t code = 0; code < 16; ++code) {
        const auto other = static_cast<std::uint8_t>(15 - code);
        text += decoded(videoAttributes(2, code, other)) + decoded(audioAttributes("deu", 0x83, code, other));
    }
    for (const Bytes& whole :
         {Bytes{27, 0x61}, {129, 0x31, 'e', 0, 'g'}, {144, 'e', 'n', 'g'}, {146, 5, 'z', 'h', 'o'}}) {
        text += decoded(whole) + decoded(resized(whole, whole.size() - 1));
    }
    for (const std::size_t size : {0U, 1U, 2U, 3U, 4U}) {
        const Bytes hevc = resized({36, 0x81, 0b1101'1010, 0xC7}, size);
        text += decoded(hevc) + " in a clip" + decoded(hevc, true);
    }
    EXPECT_EQ(goldenDifference(text + '\n', "bdmeta/golden/streams.txt"), "");
}

TEST(Streams, TablesThatTakeTurnsAreSharedAndLongUnusedOnesForgotten)
{
    using Bound = discio::ReadBudget::Bound;
    discio::ReadBudget budget;
    const std::uint64_t allowed = budget.left(Bound::Streams);
    bdmeta::StreamTables tables(budget);
    const auto expectRead = [&](std::uint8_t pid, std::size_t streamCount) {
        EXPECT_EQ(tables.read(tableOf({1, 0, pid}))->front().pid, pid);
        EXPECT_EQ(allowed - budget.left(Bound::Streams), streamCount);
    };
    for (std::uint8_t turn = 0; turn < 60; ++turn) {
        expectRead(turn % 20, std::min(turn + 1U, 20U));
    }
    for (std::uint8_t pid = 100; pid < 200; ++pid) {
        expectRead(pid, pid - 79U);
    }
    expectRead(0, 121);
}

TEST(Titles, SizesOfWhatTheyPlay)
{
    bdmeta::BlurayDisc disc;
    const auto addClip = [&disc](const char* name, std::uint64_t sizeBytes,
                                 const std::vector<EntryPoint>& points) {
        disc.clips.push_back(
            clipOf({.numberOfSourcePackets = 9000, .epStreams = {epStream(points)}}, sizeBytes, name));
    };
    const std::vector<EntryPoint> points = {{25600, 1000}, {51200, 3000}, {76800, 6000}};
    addClip("whole", 9000 * 192, points);
    addClip("cut..", 4000 * 192, points);
    addClip("short", 500 * 192, points);
    addClip("none.", 0, points);
    addClip("falls", 77, {{25600, 3000}, {51200, 1000}});
    addClip("huge.", 1ULL << 40U, {{25600, 0}, {51200, UINT32_MAX}});
    addClip("nomap", 10'000'000'000, {});
    addClip("whole", 77, {});  // the first of a name counts
    const struct {
        const char* playlist;
        const char* clip;
        std::uint32_t inTime;
        std::uint32_t outTime;
        std::uint8_t stcId = 0;
    } rows[] = {
        {"00800", "whole", 25600, 60000}, {"99999", "whole", 51200, 76800}, {"12ab", "whole", 30000, 30001},
        {"abc", "whole", 60000, 59999},   {"", "whole", 25599, 60000},      {" 7", "whole", 25599, 25599},
        {"-1", "whole", 30000, 30000},    {"8", "whole", 80000, 80000},     {"9", "cut..", 25600, 60000},
        {"10", "short", 25600, 60000},    {"11", "none.", 25600, 60000},    {"12", "falls", 25600, 30000},
        {"13", "huge.", 25600, 30000},    {"14", "nomap", 0, 45000},        {"15", "other", 0, 45000},
        {"16", "whole", 25600, 60000, 1},  // no such STC sequence
    };
    MplsSpec all{.playItems = {}};
    for (const auto& [playlist, clip, inTime, outTime, stcId] : rows) {
        all.playItems.push_back(
            {.clipName = clip, .refToStcId = stcId, .inTime = inTime, .outTime = outTime});
        disc.playlists.push_back(playlistOf({.playItems = {all.playItems.back()}}, playlist));
    }
    disc.playlists.push_back(playlistOf(all));
    const std::uint64_t distinctMs = bdmeta::distinctPlayTimeMs(disc.playlists.back());
    const std::string text = Text::words(Derivation(disc), "\ndistinct", distinctMs, "ms\n");
    EXPECT_EQ(goldenDifference(text, "bdmeta/golden/title_sizes.txt"), "");
}

TEST(Titles, StreamsOfTheirItems)
{
    MplsSpec distinct;  // streams that differ in one of the values that distinguish them, or in none
    distinct.playItems = {
        {.stn = {.primaryVideo = {video(9, 27, 0), video(1, 27, 9)},
                 .primaryAudio = {audio(8, "fra"), audio(8, "eng"), audio(8, "fra")},
                 .interactiveGraphics = {graphics(7), graphics(7), graphics(7), graphics(7)},
                 .secondaryAudio = {audio(8, "fra")}}},
        {.furtherAngles = {{}},
         .stn = {.primaryVideo = {video(1, 27, 2), video(1, 2), video(9, 27, 5)},
                 .primaryAudio = {audio(8, "fra", 0x82), audio(2), audio(8, "eng")},
                 .graphics = {graphics(3), graphics(3, "deu"), graphics(3)},
                 .pipGraphics = {graphics(4)},
                 .secondaryVideo = {video(9)},
                 .dolbyVision = {video(9)}}},
        {.furtherAngles = {{}, {}}}};
    distinct.playItems.push_back(distinct.playItems[0]);
    distinct.marks.resize(4);
    MplsSpec texts;
    for (const std::uint8_t code : Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 255}) {
        texts.playItems[0].stn.graphics.push_back({.pid = code, .attributes = textAttributes("eng", code)});
    }
    bdmeta::BlurayDisc disc;
    disc.volumeId = "A_DISC";
    disc.playlists = {playlistOf(distinct), playlistOf(texts), playlistOf({.playItems = {}})};
    std::string text = Text::words(Derivation(disc), Derivation({}));
    disc.playlists = {{}};
    for (const char* id : {"09afAFB", "A1 1", "01:1", "01/1", "01@1", "01G1", "01`1", "01g1",
                           "112233445566778899AABBCCDDEEFF1122"}) {
        disc.discId = id;  // read up to the first pair that is no number
        text += Text::words("\nidentity", Derivation(disc).summary.discIdBytes);
    }
    EXPECT_EQ(goldenDifference(text + '\n', "bdmeta/golden/title_streams.txt"), "");
}

}  // namespace
