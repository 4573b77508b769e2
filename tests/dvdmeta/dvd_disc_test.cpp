#include "dvdmeta/dvd_disc.h"
#include "tests/dvdmeta/change_table.h"
#include "tests/dvdmeta/disc_text.h"
#include "tests/support/dvd_spec.h"
#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace testsupport;

namespace {

constexpr char kManager[] = "VIDEO_TS/VIDEO_TS.IFO";

struct Outcome {
    dvdmeta::DvdDisc disc;
    std::string message;  // of a failure, which leaves the disc empty
};

Outcome readPath(const std::string& path)
{
    Outcome outcome;
    outcome.disc.titles.resize(3);  // of a disc read before
    std::array<char, 256> message = {'?'};
    const int code = readDvdDisc(path.c_str(), &outcome.disc, message.data(), message.size());
    outcome.message = message.data();
    EXPECT_TRUE(code == 0 ? message[0] == '\0'
                          : code == -1 && textOf(outcome.disc) == textOf(dvdmeta::DvdDisc()));
    return outcome;
}

// Reads the tree. The disc must hold the files as they are.
Outcome readTree(const DiscTree& tree, DiscForm form = DiscForm::Directory)
{
    const TemporaryFolder folder;
    Outcome outcome = readPath(tree.write(form, folder));
    for (const dvdmeta::DvdRawIfo& ifo : outcome.disc.rawIfos) {
        const auto file = std::ranges::find(tree.files(), "VIDEO_TS/" + ifo.name, &TreeFile::path);
        EXPECT_TRUE(file != tree.files().end() && file->bytes == ifo.bytes) << ifo.name;
    }
    return outcome;
}

TEST(DvdDisc, EveryFormGivesTheRecord)
{
    using namespace std::string_literals;
    DvdSpec spec;  // with a gap between the title sets, and a title without chapters of its own
    spec.vmg = {.provider = "A PROVIDER \0 X"s,
                .titles = {{.playbackType = 0x7C, .angles = 2, .chapters = 9, .vtsn = 3, .vtsTtn = 3},
                           {.angles = 0},
                           {.vtsn = 3},
                           {.vtsn = 3, .vtsTtn = 2}}};
    spec.titleSets[1].audio = {{.language = "de"}};
    spec.titleSets[3] = {
        .titleVobSector = 500,
        .video = {.codingMode = 0, .system = 0, .pictureSize = 3},
        .audio = {{.codingMode = 6, .channels = 6}, {.codingMode = 4, .languageType = 0, .sampleRate = 1}},
        .subpicture = {{.language = "fr"}},
        .titles = {{{1, 1}, {1, 2}}, {}, {{2, 1}}},
        .pgcs = {{.programMap = {1, 2}, .cells = {{0, 9}, {10, 29, 0x90}}}, {.cells = {{30, 30}}}}};
    const std::string volume = "volume TEST_DISC|TEST_DISC" + std::string(23, ' ') + "|\n";
    const std::string text = textOf(readTree(spec.tree()).disc);
    EXPECT_EQ(textOf(readTree(spec.tree(), DiscForm::Iso).disc), volume + text);
    EXPECT_EQ(goldenDifference(text, "dvdmeta/golden/several_titles.txt"), "");
}

// A message, or how many of three titles are read.
TEST(DvdDisc, FieldsOfTheManagerAtAndBeyondTheirLimits)
{
    DvdSpec spec;
    spec.vmg.titles.resize(3);
    expectOutcomes("manager_changes.txt", spec.vmg.build(), [&spec](const Bytes& manager) {
        const Outcome outcome = readTree(spec.tree().add(kManager, manager));
        const bool isRead = !outcome.disc.rawIfos.empty();
        return isRead ? std::to_string(outcome.disc.titles.size()) : outcome.message;
    });
}

// All titles are in one large file: to read it again for each title would take more memory than is allowed. Its number
// is above 99, so it is not retained.
TEST(DvdDisc, MostTitlesAndTitleSets)
{
    DvdSpec spec{
        .vmg = {.provider = std::string(32, ' '), .titles = std::vector<VmgTitleSpec>(120, {.vtsn = 255})}};
    for (unsigned number = 1; number <= 100; ++number) {
        spec.titleSets[number] = {};
    }
    Bytes large = spec.titleSets[1].build();
    large.resize(4U << 20U);
    const dvdmeta::DvdDisc disc = readTree(spec.tree().add("VIDEO_TS/VTS_255_0.IFO", large)).disc;
    EXPECT_EQ(disc.providerText, "");
    EXPECT_EQ(disc.titles.size(), 99U);
    EXPECT_EQ(disc.titleSets.size(), 99U);
    ASSERT_EQ(disc.rawIfos.size(), 100U);
    EXPECT_EQ(disc.rawIfos.back().name, "VTS_99_0.IFO");
}

TEST(DvdDisc, FilesThatAreMissingOrCannotBeRetained)
{
    const DiscTree second = DvdSpec{.vmg = {.titles = {{.vtsn = 2}}}}.tree();
    const auto messageInImage = [](const DiscTree& tree) { return readTree(tree, DiscForm::Iso).message; };
    EXPECT_EQ(messageInImage(second), "ISO image has no VIDEO_TS/VTS_02_0.IFO");
    EXPECT_EQ(messageInImage(DiscTree(second).remove(kManager)), "ISO image has no VIDEO_TS/VIDEO_TS.IFO");
    EXPECT_EQ(messageInImage(DvdSpec().tree().add("VIDEO_TS/VTS_07_0.IFO", {})),
              "DVD has too many or invalid IFO files");

    const TemporaryFolder folder;
    const std::string disc = second.write(DiscForm::Directory, folder);
    const std::string path = disc + "/VIDEO_TS/VTS_02_0.IFO";
    EXPECT_EQ(readPath(disc).message, "cannot open '" + path + "': No such file or directory");
    DvdSpec().tree().writeDirectory(disc);
    std::filesystem::create_directory(path);  // of no title, and still a fault of the disc
    EXPECT_EQ(readPath(disc).message, "cannot open '" + path + "': Is a directory");
    std::filesystem::remove(path);
    writeFile(path, VtsSpec().build());
    std::filesystem::resize_file(path,
                                 512U << 20U);  // sparse; with the other files above the limit of memory
    EXPECT_EQ(readPath(disc).message, "the navigation files are larger than 512 MiB");
}

// The message for a manager that is cut off, and for one in an image that is cut there and whose directory claims the
// whole size.
TEST(DvdDisc, ManagerCutOff)
{
    DvdSpec spec;
    spec.vmg.titles.resize(2);
    const Bytes manager = spec.vmg.build();
    const auto image =
        spec.tree().remove(kManager).add(kManager, manager).image(DiscForm::Iso);  // as the last file
    const TemporaryFolder folder;
    std::string text;
    for (const std::size_t length :
         {0U, 2047U, 2048U, 2055U, 2056U, 2067U, 2068U, 2079U, 2080U, 4095U, 4096U}) {
        Bytes cut = manager;
        cut.resize(length);
        image.writeTo(folder / "disc.iso", image.sizeBytes() - manager.size() + length);
        text += std::to_string(length) + ": " + readTree(spec.tree().add(kManager, cut)).message + "; " +
                readPath(folder / "disc.iso").message + '\n';
    }
    EXPECT_EQ(goldenDifference(text, "dvdmeta/golden/manager_lengths.txt"), "");
}

}  // namespace
