// Streams, playlists, clips and titles of whole and of lying files, held against golden texts.
#include "bdmeta/distinct_play_time.h"
#include "bdmeta/stream_attributes.h"
#include "tests/bdmeta/built_records.h"
#include "tests/bdmeta/rich_files.h"
#include "tests/support/golden.h"

#include <algorithm>
#include <array>

using bdmeta::BlurayStream;
using testsupport::append;
using testsupport::audio;
using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::fullTable;
using testsupport::goldenDifference;
using testsupport::graphics;
using testsupport::MplsSpec;
using testsupport::patched;
using testsupport::StnStreamSpec;
using testsupport::StnTableSpec;
using testsupport::video;

namespace {

using Files = std::vector<std::pair<std::string, Bytes>>;

// Holds what the files contain against a golden file. `parse` gives an optional record, `textOf` its text.
template <typename Parse, typename TextOf>
void expectGolden(const std::string& golden, const Files& files, Parse parse, TextOf textOf)
{
    std::string text;
    for (const auto& [name, file] : files) {
        const auto record = parse(file);
        text += name + ": " + (record ? textOf(*record) : "malformed") + '\n';
    }
    EXPECT_EQ(goldenDifference(text, "bdmeta/golden/" + golden), "");
}

Bytes resized(Bytes bytes, std::size_t size)
{
    bytes.resize(size);
    return bytes;
}

std::size_t be32(const Bytes& bytes, std::size_t offset)
{
    std::size_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8U | bytes.at(offset + i);
    }
    return value;
}

// ---- Streams ----

std::string decoded(const Bytes& attributes, bool isFromClip = false)
{
    BlurayStream stream;
    stream.language = bdmeta::LanguageCode("old");  // of a stream decoded before
    stream.width = 1;
    bdmeta::decodeStreamAttributes(stream, 0x1011, attributes, isFromClip);
    return describe(stream);
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
        text += decoded(testsupport::videoAttributes(2, code, other));
        text += decoded(testsupport::audioAttributes("deu", 0x83, code, other));
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

// A table of one primary video stream.
Bytes tableOf(const Bytes& entry, const Bytes& attributes = {27})
{
    Bytes table = patched(Bytes(16), {{0, 2, 14}, {4, 1, 1}});
    for (const Bytes& counted : {entry, attributes}) {
        table.push_back(static_cast<std::uint8_t>(counted.size()));
        append(table, counted);
    }
    return table;
}

TEST(Streams, OfATable)
{
    const Bytes full = fullTable().build();
    const Bytes empty = StnTableSpec().build();
    StnTableSpec most;
    for (const auto group : testsupport::kStreamGroups) {
        (most.*group).assign(255, video(1));
    }
    const Files tables = {{"every group", full},
                          {"255 of every group", most.build()},
                          {"entries beyond the declared length", patched(full, {{0, 2, 14}})},
                          {"the last byte missing", resized(full, full.size() - 1)},
                          {"no entries", empty},
                          {"length less than the header's", patched(empty, {{0, 2, 13}})},
                          {"length 0", patched(empty, {{0, 2, 0}})},
                          {"header cut", resized(empty, 15)},
                          {"length to the end", patched(resized(empty, 20), {{0, 2, 18}})},
                          {"length beyond the end", patched(resized(empty, 20), {{0, 2, 19}})},
                          {"type 1", tableOf({1, 0x1A, 0x0B})},
                          {"type 1 cut", tableOf({1, 0x1A})},
                          {"type 2", tableOf({2, 9, 9, 0x1A, 0x0B})},
                          {"type 2 cut", tableOf({2, 9, 9, 0x1A})},
                          {"type 3", tableOf({3, 9, 0x1A, 0x0B})},
                          {"type 3 cut", tableOf({3, 9, 0x1A})},
                          {"type 4", tableOf({4, 9, 0x1A, 0x0B})},
                          {"type 0", tableOf({0, 0x1A, 0x0B, 0x1A, 0x0B})},
                          {"type 5", tableOf({5, 0x1A, 0x0B, 0x1A, 0x0B})},
                          {"type alone", tableOf({1})},
                          {"empty entry", tableOf({})},
                          {"empty attributes", tableOf({1, 2, 3}, {})}};
    expectGolden("stream_tables.txt", tables, bdmeta::parseStreamTable,
                 [](const bdmeta::ParsedStreamTable& table) {
                     std::string text = words(table.streams.size(), "streams to", table.sizeBytes);
                     for (const BlurayStream& s : table.streams) {
                         if (s.pid != 1) { text += words(",", s.pid, s.category, s.entryType, s.language); }
                     }
                     return text;
                 });
}

TEST(Streams, EqualTablesAreShared)
{
    Bytes bytes = patched(fullTable().build(), {{0, 2, 14}});
    discio::ReadBudget budget;
    bdmeta::StreamTables tables(budget);
    const auto first = tables.read(bytes);
    ASSERT_TRUE(first);
    bytes.push_back(0xFF);  // behind the table
    for (std::size_t i = 12; i < bytes.size() - 1; ++i) {
        ASSERT_EQ(tables.read(bytes), first);
        Bytes changed = bytes;
        changed[i] ^= 0x01;
        const auto alone = bdmeta::parseStreamTable(changed);
        const auto other = tables.read(changed);
        ASSERT_NE(other, first) << i;
        ASSERT_EQ(other ? describe(*other) : "none", alone ? describe(alone->streams) : "none") << i;
    }
    // The declared length is held against the end of each file.
    const Bytes longer = resized(patched(tableOf({1, 2, 3}), {{0, 2, 60}}), 62);
    EXPECT_TRUE(tables.read(longer));
    EXPECT_FALSE(tables.read(resized(longer, 61)));
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

// ---- Playlists ----

constexpr std::size_t kItem = testsupport::kFirstPlayItem;
constexpr std::size_t kTable = kItem + 34;  // of an item without further angles

// One PlayItem of a second with one video stream; one mark.
const Bytes kPlain = MplsSpec{.playItems = {{.stn = {.primaryVideo = {video(5)}}}}}.build();

Bytes ofTimes(std::uint32_t inTime, std::uint32_t outTime)
{
    return MplsSpec{.playItems = {{.inTime = inTime, .outTime = outTime}}, .marks = {}}.build();
}

// With bytes put into it before its marks.
Bytes withInserted(Bytes playlist, std::size_t offset, const Bytes& content)
{
    playlist.insert(playlist.begin() + static_cast<std::ptrdiff_t>(offset), content.begin(), content.end());
    return patched(playlist, {{12, 4, be32(playlist, 12) + content.size()}});
}

// With a number of angles, but no angle beyond the item's own.
Bytes ofOneAngle(std::uint8_t number, std::uint16_t itemLength)
{
    return patched(withInserted(kPlain, kTable, {number, 0}),
                   {{kItem, 2, itemLength}, {kItem + 12, 1, 0x11}});
}

Bytes withAppInfo(std::size_t length, std::uint8_t flags)
{
    return patched(kPlain, {{40, 4, length}, {45, 1, 3}, {56, 1, flags}});
}

TEST(Playlists, WholeAndLying)
{
    const std::size_t size = kPlain.size();
    const std::size_t marks = be32(kPlain, 12);
    const Bytes two = MplsSpec{.playItems = {{}, {.clipName = "00008"}}}.build();
    const Bytes angles = MplsSpec{.playItems = {{.furtherAngles = {{}, {}}}}}.build();
    const std::vector<testsupport::AngleSpec> most(254, {.clipName = "00002"});
    const Bytes smallest = patched(Bytes(58), {{0, 4, 0x4D504C53}, {8, 4, 48}, {12, 4, 52}});
    const Files playlists = {
        {"rich", testsupport::richPlaylist().build()},
        {"plain", kPlain},
        {"magic in other letters", patched(kPlain, {{3, 1, 's'}})},
        {"a list of less than its header", patched(kPlain, {{8, 4, size - 9}})},
        {"a list far out", patched(kPlain, {{8, 4, UINT32_MAX}})},
        {"marks of less than their header", patched(kPlain, {{12, 4, size - 5}})},
        {"marks far out", patched(kPlain, {{12, 4, UINT32_MAX}})},
        {"empty lists at the very end",
         patched(resized(kPlain, size + 10), {{8, 4, size}, {12, 4, size + 4}})},
        {"58 bytes", smallest},
        {"57 bytes", resized(patched(smallest, {{8, 4, 47}, {12, 4, 51}}), 57)},
        {"more items", patched(kPlain, {{kItem - 4, 2, 2}})},
        {"fewer items", patched(two, {{kItem - 4, 2, 1}})},
        {"more marks", patched(kPlain, {{marks + 4, 2, 2}})},
        {"fewer marks", patched(kPlain, {{marks + 4, 2, 0}})},
        {"item of less than its fields", patched(kPlain, {{kItem, 2, 31}})},
        {"item of its fields", patched(kPlain, {{kItem, 2, 32}})},
        {"item to the end", patched(kPlain, {{kItem, 2, size - kItem - 2}})},
        {"item beyond the end", patched(kPlain, {{kItem, 2, size - kItem - 1}})},
        {"second item in the first's table", patched(two, {{kItem, 2, 32}})},
        {"second item as the first's stream", patched(two, {{kTable + 4, 1, 1}})},
        {"second item behind a gap",
         patched(withInserted(two, kTable + 16, Bytes(12, 0xEE)), {{kItem, 2, 60}})},
        {"table reaching into the marks", patched(kPlain, {{kTable, 2, 14}, {12, 4, kTable + 16}})},
        {"angle number 0", ofOneAngle(0, 34)},
        {"angle number 1", ofOneAngle(1, 34)},
        {"angle number cut", ofOneAngle(1, 33)},
        {"angles to the item's end", patched(angles, {{kItem, 2, 34 + 20}})},
        {"angles cut", patched(angles, {{kItem, 2, 34 + 19}})},
        {"AppInfo of 16 bytes", withAppInfo(16, 0xFF)},
        {"AppInfo of 17 bytes", withAppInfo(17, 0xA0)},
        {"AppInfo to the end", withAppInfo(size - 44, 0x40)},
        {"AppInfo beyond the end", withAppInfo(size - 43, 0xFF)},
        {"times that wrap around", ofTimes(45000, 0)},
        {"44 ticks", ofTimes(7, 51)},
        {"45 ticks", ofTimes(7, 52)},
    };
    expectGolden("playlists.txt", playlists, parsePlaylist,
                 [](const auto& record) { return describe(record); });
    EXPECT_EQ(playlistOf({.playItems = {{.furtherAngles = most}}}).playItems[0].angles.back().clipName.view(),
              "00002");
}

// ---- Clips ----

Bytes ofPresentation(std::uint32_t start, std::uint32_t end)
{
    ClpiSpec spec;
    spec.atcSequences[0].stcSequences = {{.presentationStartTime = start, .presentationEndTime = end}};
    return spec.build();
}

TEST(Clips, WholeAndLying)
{
    const Bytes rich = testsupport::richClip().build();
    const std::size_t sequences = testsupport::kSequenceInfoStart;
    const std::size_t programs = be32(rich, 12);
    const std::size_t length = be32(rich, programs);
    const std::size_t second = programs + 6 + 8 + 3 + 4 + 3 + 5;  // program
    const std::size_t toEnd = rich.size() - 4;
    const Bytes empty = ClpiSpec{.atcSequences = {}, .programs = {}}.build();
    const Bytes smallest = patched(Bytes(60), {{0, 4, 0x48444D56}, {12, 4, 54}, {54, 4, 2}});
    const Files clips = {
        {"rich", rich},
        {"another magic", patched(rich, {{3, 1, 'v'}})},
        {"60 bytes", smallest},
        {"59 bytes", resized(patched(smallest, {{12, 4, 53}, {53, 4, 2}}), 59)},
        {"no programs", empty},
        {"not even a number of programs", patched(empty, {{be32(empty, 12), 4, 1}})},
        {"ProgramInfo nowhere", patched(rich, {{12, 4, 0}})},
        {"ProgramInfo of less than its header", patched(rich, {{12, 4, rich.size() - 5}})},
        {"ProgramInfo cut", patched(rich, {{programs, 4, length - 1}})},
        {"ProgramInfo to the end", patched(rich, {{programs, 4, toEnd - programs}})},
        {"ProgramInfo beyond the end", patched(rich, {{programs, 4, toEnd - programs + 1}})},
        {"more programs", patched(rich, {{programs + 5, 1, 3}})},
        {"more streams", patched(rich, {{second + 6, 1, 2}})},
        {"stream without attributes", patched(rich, {{second + 10, 1, 0}})},
        {"stream cut", patched(rich, {{second + 10, 1, 6}})},
        {"SequenceInfo nowhere", patched(rich, {{8, 4, 0}})},
        {"SequenceInfo far out", patched(rich, {{8, 4, UINT32_MAX}})},
        {"SequenceInfo to the end", patched(rich, {{sequences, 4, toEnd - sequences}})},
        {"SequenceInfo beyond the end", patched(rich, {{sequences, 4, toEnd - sequences + 1}})},
        {"SequenceInfo cut in the first STC sequence", patched(rich, {{sequences, 4, 21}})},
        {"SequenceInfo cut behind it", patched(rich, {{sequences, 4, 22}})},
        {"SequenceInfo cut in the second", patched(rich, {{sequences, 4, 41}})},
        {"SequenceInfo cut behind the second", patched(rich, {{sequences, 4, 42}})},
        {"fewer ATC sequences", patched(rich, {{sequences + 5, 1, 1}})},
        {"longest presentation", ofPresentation(0, UINT32_MAX)},
        {"presentation that ends before it starts", ofPresentation(1, 0)},
    };
    expectGolden("clips.txt", clips, bdmeta::parseClipInfoBytes,
                 [](const auto& record) { return describe(record); });
}

// ---- Titles ----

// Entry points at 1, 2 and 3 times 25,600 ticks.
ClpiSpec mapped(std::uint32_t first = 1000, std::uint32_t second = 3000, std::uint32_t third = 6000)
{
    ClpiSpec spec;
    spec.numberOfSourcePackets = 9000;
    spec.epStreams = {testsupport::epStream({{25600, first}, {51200, second}, {76800, third}})};
    return spec;
}

testsupport::PlayItemSpec playing(const std::string& clip, std::uint32_t inTime, std::uint32_t outTime,
                                  std::uint8_t stcId = 0)
{
    return {.clipName = clip, .refToStcId = stcId, .inTime = inTime, .outTime = outTime};
}

std::string textOf(const Derivation& derivation)
{
    std::string text;
    for (const bdmeta::BlurayTitle& title : derivation.titles) {
        text += describe(title);
    }
    const bdmeta::BlurayDiscSummary& d = derivation.summary;
    return text + words("disc", d.discName, d.discLabel, d.titleCount, d.totalDurationMs, "ms",
                        d.totalPlaybackSize, "bytes, chapters", d.totalChapters, d.totalPlaymarks, "clips",
                        d.totalClips, "streams", d.totalPrimaryVideo, d.totalPrimaryAudio, d.totalSubtitles,
                        d.totalInteractiveGraphics, d.totalSecondaryAudio, d.totalSecondaryVideo, "fallbacks",
                        derivation.fallback.count, derivation.fallback.firstPlaylist,
                        derivation.fallback.firstClip, "\n");
}

TEST(Titles, SizesOfWhatTheyPlay)
{
    constexpr std::uint32_t kHuge = UINT32_MAX;
    bdmeta::BlurayDisc disc;
    disc.clips = {
        clipOf(mapped(), 9000 * 192, "whole"),   clipOf(mapped(), 4000 * 192, "cut.."),
        clipOf(mapped(), 500 * 192, "short"),    clipOf(mapped(), 0, "none."),
        clipOf(mapped(3000, 1000), 77, "falls"), clipOf(mapped(0, kHuge, 0), 1ULL << 40U, "huge."),
        clipOf({}, 10'000'000'000, "nomap"),     clipOf({}, 77, "whole")};  // the first of a name counts
    MplsSpec all;
    all.playItems = {
        playing("whole", 25600, 60000),   playing("whole", 51200, 76800), playing("whole", 30000, 30001),
        playing("whole", 60000, 59999),   playing("whole", 25599, 60000), playing("whole", 25599, 25599),
        playing("whole", 30000, 30000),   playing("whole", 80000, 80000), playing("cut..", 25600, 60000),
        playing("short", 25600, 60000),   playing("none.", 25600, 60000), playing("falls", 25600, 30000),
        playing("huge.", 25600, 30000),   playing("nomap", 0, 45000),     playing("other", 0, 45000),
        playing("whole", 25600, 60000, 1)};  // no such STC sequence
    for (const char* name :
         {"00800", "99999", "12ab", "abc", "", " 7", "-1", "8", "9", "10", "11", "12", "13", "14", "15"}) {
        disc.playlists.push_back(playlistOf({.playItems = {all.playItems[disc.playlists.size()]}}, name));
    }
    disc.playlists.push_back(playlistOf(all));
    EXPECT_EQ(goldenDifference(textOf(derive(disc)), "bdmeta/golden/title_sizes.txt"), "");
}

TEST(Titles, StreamsOfTheirItems)
{
    MplsSpec distinct;  // streams that differ in one of the values that tell them apart, or in none
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
        texts.playItems[0].stn.graphics.push_back({.attributes = testsupport::textAttributes("eng", code)});
        texts.playItems[0].stn.graphics.back().pid = code;
    }
    bdmeta::BlurayDisc disc;
    disc.volumeId = "A_DISC";
    disc.playlists = {playlistOf(distinct), playlistOf(texts), playlistOf({}), playlistOf({.playItems = {}})};
    std::vector<BlurayStream> nameless;  // as no file gives them
    for (const std::uint8_t coding : Bytes{0, 3, 4, 128, 129, 130, 131, 132, 133, 134, 161, 144, 145, 146}) {
        nameless.emplace_back().codingType = coding;
        nameless.back().category = coding == 0        ? bdmeta::StreamCategory::PrimaryVideo
                                   : coding / 16 == 9 ? bdmeta::StreamCategory::Subtitle
                                                      : bdmeta::StreamCategory::PrimaryAudio;
    }
    disc.playlists[2].playItems[0].streams =
        std::make_shared<const std::vector<BlurayStream>>(std::move(nameless));
    EXPECT_EQ(goldenDifference(textOf(derive(disc)), "bdmeta/golden/title_streams.txt"), "");
    EXPECT_EQ(textOf(derive({})),
              "disc   0 0 ms 0 bytes, chapters 0 0 clips 0 streams 0 0 0 0 0 0 fallbacks 0 [] [] \n");
}

TEST(Titles, PlayTimeCountsEachStretchOfAClipOnce)
{
    constexpr std::uint32_t kSecond = 45'000;
    const auto item = [](const char* clip, std::uint32_t in, std::uint32_t out, std::uint8_t stcId = 0) {
        return playing(clip, in * kSecond, out * kSecond, stcId);
    };
    MplsSpec spec;
    spec.playItems = {item("00001", 10, 20), item("00001", 15, 30),    item("00001", 40, 41),
                      item("00001", 10, 20), item("00001", 10, 20, 1), item("00002", 0, 100)};
    EXPECT_EQ(bdmeta::distinctPlayTimeMs(playlistOf(spec)), (20U + 1 + 10 + 100) * 1000);
    spec.playItems = std::vector(300, item("00001", 600, 650));
    EXPECT_EQ(bdmeta::distinctPlayTimeMs(playlistOf(spec)), 50'000U);
}

TEST(Titles, IdentifierIsReadUpToTheFirstPairThatIsNone)
{
    bdmeta::BlurayDisc disc;
    disc.playlists = {playlistOf({})};
    for (const auto& [text, bytes] : Files{{"", {}},
                                           {"A1B", {0xA1}},
                                           {"A1BG22", {0xA1}},
                                           {"A1 122", {0xA1}},
                                           {"09afAF", {0x09, 0xAF, 0xAF}},
                                           {"/:@G`g", {}},
                                           {std::string(40, 'F'), Bytes(16, 0xFF)}}) {
        disc.discId = text;
        const auto derived = derive(disc).summary.discIdBytes;
        EXPECT_EQ(Bytes(derived.begin(), derived.end()), resized(bytes, 16)) << text;
    }
}

}  // namespace
