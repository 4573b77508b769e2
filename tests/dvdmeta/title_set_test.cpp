#include "dvdmeta/title_set.h"
#include "tests/dvdmeta/change_table.h"
#include "tests/dvdmeta/disc_text.h"
#include "tests/support/dvd_spec.h"
#include "tests/support/golden.h"

#include <gtest/gtest.h>

using namespace testsupport;

namespace {

// Returns a title as text, or the message of a failure. `sizeBytes` is the size that the directory gives.
std::string titleOf(const Bytes& ifo, std::uint64_t sizeBytes, std::uint32_t vtsTtn = 1)
{
    std::array<char, 128> message = {};
    dvdmeta::DvdTitle title;
    title.vtsTtn = vtsTtn;
    const int outcome =
        readTitle({"VTS_01_0.IFO", {ifo, sizeBytes}}, title, {message.data(), message.size()});
    EXPECT_EQ(outcome, message[0] == '\0' ? 0 : -1);
    return outcome == 0 ? textOf(title) : message.data();
}

TEST(DvdTitle, DurationIsInBcdWithFramesByTheirRate)
{
    const std::pair<std::array<std::uint8_t, 4>, std::uint64_t> rows[] = {
        {{0x01, 0x30, 0, 0x40 | 0x12}, 5'400'480},
        {{0x99, 0x59, 0x59, 0x40 | 0x24}, 359'999'960},
        {{0, 0, 0x01, 0xC0 | 0x29}, 1'967},
        {{0, 0, 0, 0xC0 | 0x01}, 33},
        {{0, 0, 0x01, 0x29}, 1'000},
        {{0, 0, 0x01, 0x80 | 0x10}, 1'000},
        {{0xFF, 0, 0x1A, 0}, 594'020'000},
        {{0, 0, 0, 0x7F}, 45 * 40},  // digits above 9
        {{0, 0, 0, 0xFF}, 1'501}};
    for (const auto& [time, milliseconds] : rows) {
        EXPECT_EQ(dvdmeta::playbackTimeMs(time), milliseconds);
    }
}

TEST(DvdTitle, SizeIsThatOfAngle1FromTheStartProgramOn)
{
    const PgcSpec programs = {.programMap = {1, 2, 4},
                              .cells = {{0, 9}, {10, 19}, {20, 29}, {30, 34}, {100, 100}}};
    const PgcSpec angles = {.cells = {{50, 59, 0x50}, {10, 19, 0x90}, {0, 1'000, 0xD0}, {70, 79}}};
    const std::vector<std::tuple<std::uint16_t, PgcSpec, std::string>> rows = {
        {1, programs, "73728 bytes, sectors 7 to 107"},
        {3, programs, "12288 bytes, sectors 37 to 107"},
        {1, angles, "40960 bytes, sectors 57 to 86, complex angles"},
        // Only block type 1 is of angles, and only block mode 1 is the first cell of one.
        {1, {.cells = {{0, 0, 0x80}, {1, 1, 0xF0}}}, "4096 bytes, sectors 7 to 8"},
        {1, {.cells = {{0, 0, 0x10}}}, "0 bytes, sectors 0 to 0, complex angles"},
        // Cells that end before they begin.
        {1, {.cells = {{9, 8}, {5, 5}, {UINT32_MAX, 0}}}, "2048 bytes, sectors 12 to 12"},
        // The play time of the cells, each sector range once: 1 + 2 + 8 minutes from the second program on.
        {2,
         {.programMap = {1, 2},
          .cells = {{0, 9, 0, {0, 0x40}},
                    {10, 19, 0, {0, 1}},
                    {20, 29, 0x50, {0, 2}},
                    {30, 39, 0xD0, {0, 4}},
                    {10, 19, 0, {0, 1}},
                    {10, 15, 0, {0, 8}}}},
         "73728 bytes, sectors 17 to 36, complex angles, distinct 660000 ms"},
        {1,
         {.cells = std::vector<CellSpec>(255, {0, UINT32_MAX})},
         "2243003720663040 bytes, sectors 7 to 4294967302"},
    };
    for (const auto& [startProgram, pgc, expected] : rows) {
        const VtsSpec vts = {.titleVobSector = 7, .titles = {{{1, startProgram}}}, .pgcs = {pgc}};
        const std::string title = titleOf(vts.build(), vts.build().size());
        EXPECT_EQ(title.substr(title.find(" ms, ") + 5), expected);
    }
}

TEST(DvdTitle, FieldsAtAndBeyondTheirLimits)
{
    const Bytes ifo = VtsSpec().build();
    expectOutcomes("title_changes.txt", ifo,
                   [](const Bytes& changed) { return titleOf(changed, changed.size()); });
    EXPECT_EQ(titleOf(ifo, ifo.size(), 2), "VTS_01_0.IFO has invalid title PTT data");
}

// The outcome for a file that is cut to a length, and for one of the whole size of which only so many bytes can be
// read, as in an image. A line holds up to the length of the next line.
TEST(DvdTitle, CutOff)
{
    const Bytes whole = VtsSpec{.titles = {{{1, 1}}, {{1, 1}}}}.build();
    std::string text;
    std::string former;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        Bytes ifo = whole;
        ifo.resize(length);
        const std::string outcomes = titleOf(ifo, length) + "; " + titleOf(ifo, whole.size());
        if (outcomes != former) { text += std::to_string(length) + ": " + outcomes + '\n'; }
        former = outcomes;
    }
    EXPECT_EQ(goldenDifference(text, "dvdmeta/golden/title_lengths.txt"), "");
}

// Appends the title set to the disc. Returns the message of a failure.
std::string appendTitleSet(const Bytes& ifo, std::uint32_t number, dvdmeta::DvdDisc& disc)
{
    std::array<char, 128> message = {};
    const int outcome =
        readTitleSet({"VTS_01_0.IFO", {ifo, ifo.size()}}, number, disc, {message.data(), message.size()});
    EXPECT_EQ(outcome, message[0] == '\0' ? 0 : -1);
    return message.data();
}

// A title set is read for its streams, whatever its tables are.
TEST(DvdTitleSet, HasANumberAndStreams)
{
    constexpr char kBadNumber[] = "DVD has invalid VTS metadata";
    const std::tuple<std::uint32_t, std::size_t, std::vector<Patch>, std::string> rows[] = {
        {1, 0, {{0xC8, 8, 0}}, ""},
        {99, 98, {}, ""},
        {0, 0, {}, kBadNumber},
        {100, 0, {}, kBadNumber},
        {99, 99, {}, kBadNumber},
        {1, 0, {{11, 1, 'G'}}, "VTS_01_0.IFO is not a valid VTS IFO"},
        {1, 0, {{0x203, 1, 9}}, "VTS_01_0.IFO has an invalid declared stream count"},
    };
    for (const auto& [number, knownSets, patches, message] : rows) {
        dvdmeta::DvdDisc disc;
        disc.titleSets.resize(knownSets);
        EXPECT_EQ(appendTitleSet(patched(VtsSpec().build(), patches), number, disc), message);
        EXPECT_EQ(disc.titleSets.size(), knownSets + (message.empty() ? 1 : 0));
    }
}

// Every system, picture size, coding, number of channels and sample rate; languages, of which some are no text.
TEST(DvdTitleSet, EveryStreamAttribute)
{
    using namespace std::string_literals;
    const std::vector<std::string> languages = {"de", " ~", "fr", "zz", "d\0"s, "\0e"s, "d\x7F", "\xE9s"};
    dvdmeta::DvdDisc disc;
    for (std::uint8_t i = 0; i < 16; ++i) {
        const auto low = static_cast<std::uint8_t>(i % 4);
        const auto high = static_cast<std::uint8_t>(i / 4);
        VtsSpec vts = {.video = {.codingMode = low, .system = high, .pictureSize = low}};
        for (std::uint8_t j = 0; i == 0 && j < 8; ++j) {
            const auto rate = static_cast<std::uint8_t>(j % 4);
            vts.audio.push_back({j, 1, rate, static_cast<std::uint8_t>(j + 1), languages[j]});
        }
        for (std::uint8_t j = 0; i == 0 && j < 32; ++j) {
            const auto mode = static_cast<std::uint8_t>(j % 8);
            vts.subpicture.push_back({mode, static_cast<std::uint8_t>(j < 8 ? 1 : j % 4), languages[mode]});
        }
        if (i > 0) { vts.audio = {{.languageType = low}}; }
        EXPECT_EQ(appendTitleSet(vts.build(), i + 1U, disc), "");
    }
    EXPECT_EQ(goldenDifference(textOf(disc), "dvdmeta/golden/every_attribute.txt"), "");
}

}  // namespace
