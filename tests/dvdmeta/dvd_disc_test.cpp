#include "dvdmeta/dvd_disc.h"
#include "tests/dvdmeta/read_outcome.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>

using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DvdSpec;
using testsupport::kDvdSector;
using testsupport::VmgTitleSpec;
using testsupport::VtsSpec;
namespace fs = std::filesystem;

namespace {

constexpr char kNotManager[] = "VIDEO_TS.IFO is not a DVD-Video manager IFO";
constexpr char kNoTable[] = "VIDEO_TS.IFO has no readable title table";
constexpr char kInvalidTable[] = "VIDEO_TS.IFO has an invalid title table";

// Three titles in two title sets with a gap between them, and every kind of stream.
DvdSpec richDisc()
{
    DvdSpec spec;
    spec.vmg.provider = "A PROVIDER";
    spec.vmg.titles = {{.playbackType = 0x7C, .angles = 2, .chapters = 9, .vtsn = 3, .vtsTtn = 2},
                       {.vtsn = 1, .vtsTtn = 1},
                       {.vtsn = 3, .vtsTtn = 1}};
    spec.titleSets[1].audio = {{.language = "de"}};
    VtsSpec& third = spec.titleSets[3];
    third.titleVobSector = 500;
    third.video = {.codingMode = 0, .system = 0, .pictureSize = 3};
    third.audio = {{.codingMode = 6, .channels = 6}, {.codingMode = 4, .languageType = 0, .sampleRate = 1}};
    third.subpicture = {{.language = "fr"}};
    third.titles = {{.ptts = {{1, 1}, {1, 2}}}, {.ptts = {{2, 1}}}};
    third.pgcs = {{.programMap = {1, 2}, .cells = {{0, 9}, {10, 29}}}, {.cells = {{30, 30}}}};
    return spec;
}

std::vector<std::string> rawNames(const dvdmeta::DvdDisc& disc)
{
    std::vector<std::string> names;
    std::ranges::transform(disc.rawIfos, std::back_inserter(names), &dvdmeta::DvdRawIfo::name);
    return names;
}

TEST(DvdDisc, TitlesTakeTheirFieldsFromTableAndTitleSet)
{
    const dvdmeta::DvdDisc disc = discOf(richDisc());
    EXPECT_EQ(disc.providerText, "A PROVIDER");
    ASSERT_EQ(disc.titles.size(), 3U);
    const dvdmeta::DvdTitle& first = disc.titles[0];
    EXPECT_EQ(first.titleNumber, 1U);
    EXPECT_EQ(first.titleSetNumber, 3U);
    EXPECT_EQ(first.vtsTtn, 2U);
    EXPECT_EQ(first.angleCount, 2U);
    EXPECT_EQ(first.multiOrRandomPgc, 1U);
    EXPECT_EQ(first.sizeFromEntryPgcOnly, 1U);
    EXPECT_EQ(first.chapterCount, 1U) << "counted in the title set, not the table's 9";
    EXPECT_EQ(first.playbackSizeBytes, 2048U);
    EXPECT_EQ(first.firstSector, 530U);
    EXPECT_TRUE(first.streams.audio.size() == 2 && first.streams.subpicture.size() == 1);

    EXPECT_EQ(disc.titles[1].streams.audio.front().language, (dvdmeta::DvdLanguage{'d', 'e'}));
    EXPECT_EQ(disc.titles[1].multiOrRandomPgc, 0U);
    const dvdmeta::DvdTitle& third = disc.titles[2];
    EXPECT_EQ(third.titleNumber, 3U);
    EXPECT_EQ(third.chapterCount, 2U);
    EXPECT_EQ(third.playbackSizeBytes, 30U * 2048U);
    EXPECT_EQ(third.streams.video.height, 240U);
}

TEST(DvdDisc, RetainsTheFilesThatExistInAscendingOrder)
{
    const DvdSpec spec = richDisc();
    testsupport::DiscTree tree;  // in an image that lists them the other way round
    tree.add("VIDEO_TS/VTS_03_0.IFO", spec.titleSets.at(3).build());
    tree.add("VIDEO_TS/VTS_01_0.IFO", spec.titleSets.at(1).build());
    tree.add("VIDEO_TS/VIDEO_TS.IFO", spec.vmg.build());
    for (const DiscForm form : testsupport::kAllDiscForms) {
        const ReadOutcome outcome = readTree(tree, form);
        ASSERT_EQ(outcome.code, 0) << outcome.message;
        EXPECT_EQ(rawNames(outcome.disc),
                  (std::vector<std::string>{"VIDEO_TS.IFO", "VTS_01_0.IFO", "VTS_03_0.IFO"}));
        EXPECT_EQ(outcome.disc.rawIfos[0].bytes, spec.vmg.build());
        EXPECT_EQ(outcome.disc.rawIfos[2].bytes, spec.titleSets.at(3).build());
        ASSERT_EQ(outcome.disc.titleSets.size(), 2U);
        EXPECT_EQ(outcome.disc.titleSets[1].number, 3U);
        EXPECT_EQ(outcome.disc.titleSets[1].streams.audio.size(), 2U);
    }
}

TEST(DvdDisc, ImageAndDirectoryGiveEqualDiscs)
{
    const ReadOutcome directory = readTree(richDisc().tree(), DiscForm::Directory);
    const ReadOutcome image = readTree(richDisc().tree(), DiscForm::Iso);
    EXPECT_EQ(directory.code, 0);
    EXPECT_EQ(describe(directory.disc), describe(image.disc));
    EXPECT_FALSE(directory.disc.hasVolumeInfo);
    EXPECT_EQ(directory.disc.volumeLabel, "");
    EXPECT_TRUE(image.disc.hasVolumeInfo);
    EXPECT_EQ(image.disc.volumeLabel, "TEST_DISC");
    EXPECT_EQ(std::string(image.disc.volumeRaw.begin(), image.disc.volumeRaw.end()),
              "TEST_DISC" + std::string(23, ' '));
}

TEST(DvdDisc, ProviderIsTrimmedAsTextAndKeptRaw)
{
    using namespace std::string_literals;
    const std::vector<std::array<std::string, 2>> cases = {{std::string(32, ' '), ""},
                                                           {""s, ""},
                                                           {"  X  ", "  X"},
                                                           {"AB\0CD"s, "AB"},
                                                           {std::string(32, 'P'), std::string(32, 'P')}};
    for (const auto& [provider, text] : cases) {
        DvdSpec spec;
        spec.vmg.provider = provider;
        const dvdmeta::DvdDisc disc = discOf(spec);
        EXPECT_EQ(disc.providerText, text);
        std::string raw = provider;
        raw.resize(32);
        EXPECT_EQ(std::string(disc.providerRaw.begin(), disc.providerRaw.end()), raw);
    }
}

TEST(DvdDisc, TitleTableEndDecidesHowManyTitlesFit)
{
    const auto titleCount = [](std::uint32_t endAddress, std::uint16_t declared) {
        DvdSpec spec;
        spec.vmg.titles.resize(3);
        spec.vmg.endAddress = endAddress;
        spec.vmg.declaredTitleCount = declared;
        return discOf(spec).titles.size();
    };
    EXPECT_EQ(titleCount(0, 3), 3U) << "an end of 0 stands for as many as are declared";
    EXPECT_EQ(titleCount(0, 2), 2U);
    EXPECT_EQ(titleCount(7 + 36, 5), 3U);
    EXPECT_EQ(titleCount(7 + 35, 3), 2U) << "the third is not whole";
    EXPECT_EQ(titleCount(7 + 36, 1), 1U);
    EXPECT_EQ(titleCount(7, 3), 0U);
    EXPECT_EQ(titleCount(7 + 36, 0), 0U);
}

TEST(DvdDisc, NinetyNineTitlesAreTaken)
{
    for (const std::size_t present : {99U, 100U, 120U}) {
        DvdSpec spec;
        spec.vmg.titles.resize(present);
        const dvdmeta::DvdDisc disc = discOf(spec);
        ASSERT_EQ(disc.titles.size(), 99U);
        EXPECT_EQ(disc.titles.back().titleNumber, 99U);
    }
}

TEST(DvdDisc, NinetyNineTitleSetsAreTaken)
{
    DvdSpec spec;
    for (unsigned number = 1; number <= 100; ++number) {
        spec.titleSets[number] = {};
    }
    for (const DiscForm form : testsupport::kAllDiscForms) {
        const ReadOutcome outcome = readTree(spec.tree(), form);
        ASSERT_EQ(outcome.code, 0) << outcome.message;
        EXPECT_EQ(outcome.disc.titleSets.size(), 99U);
        EXPECT_EQ(outcome.disc.rawIfos.size(), 100U);
        EXPECT_EQ(outcome.disc.rawIfos.back().name, "VTS_99_0.IFO");
    }
}

TEST(DvdDisc, TitleSetNumbersAbove99NameALongerFile)
{
    DvdSpec spec;
    spec.vmg.titles = {{.vtsn = 255}};
    spec.titleSets[255] = {};
    const dvdmeta::DvdDisc disc = discOf(spec);
    EXPECT_EQ(disc.titles.front().chapterCount, 1U);
    EXPECT_EQ(rawNames(disc), (std::vector<std::string>{"VIDEO_TS.IFO", "VTS_01_0.IFO"}));
}

TEST(DvdDisc, ManagerFailures)
{
    DvdSpec spec;
    spec.vmg.magic = "DVDVIDEO-VTS";
    expectFailure(spec, kNotManager);
    for (const std::uint32_t sector : {0U, 2U, UINT32_MAX}) {  // the file has two sectors
        spec = {};
        spec.vmg.titleTableSector = sector;
        expectFailure(spec, kNoTable);
    }
    for (const std::uint32_t endAddress : {1U, 6U, 2048U, UINT32_MAX}) {
        spec = {};
        spec.vmg.endAddress = endAddress;
        expectFailure(spec, kInvalidTable);
    }
    spec = {};
    spec.vmg.endAddress = 0;
    spec.vmg.declaredTitleCount = 171;  // 8 + 171 x 12 is more than the sector
    expectFailure(spec, kInvalidTable);
    spec.vmg.declaredTitleCount = 170;  // entries of zeros behind the first: no title set
    expectFailure(spec, "");
}

TEST(DvdDisc, TitleWithoutNumbersFailsWithoutAMessage)
{
    for (const VmgTitleSpec& title : {VmgTitleSpec{.vtsn = 0}, VmgTitleSpec{.vtsTtn = 0}}) {
        DvdSpec spec;
        spec.vmg.titles.push_back(title);
        expectFailure(spec, "");
    }
}

TEST(DvdDisc, MissingFiles)
{
    DvdSpec spec;
    spec.vmg.titles = {{.vtsn = 2}};
    const testsupport::TemporaryFolder folder;
    ReadOutcome outcome = readPath(spec.tree().write(DiscForm::Directory, folder));
    EXPECT_EQ(outcome.message,
              "cannot open '" + folder / "disc/VIDEO_TS/VTS_02_0.IFO" + "': No such file or directory");
    outcome = readTree(spec.tree(), DiscForm::Iso);
    EXPECT_EQ(outcome.message, "ISO image has no VIDEO_TS/VTS_02_0.IFO");
    outcome = readTree(spec.tree().remove("VIDEO_TS/VIDEO_TS.IFO"), DiscForm::Iso);
    EXPECT_EQ(outcome.message, "ISO image has no VIDEO_TS/VIDEO_TS.IFO");
    outcome = readPath(folder / "nothing");
    EXPECT_EQ(outcome.message, "cannot stat '" + folder / "nothing" + "': No such file or directory");
    EXPECT_TRUE(outcome.disc.titles.empty()) << "of the disc read before";
}

TEST(DvdDisc, FilesThatCannotBeRetained)
{
    for (const DiscForm form : testsupport::kAllDiscForms) {
        const ReadOutcome outcome = readTree(DvdSpec().tree().add("VIDEO_TS/VTS_07_0.IFO", {}), form);
        EXPECT_EQ(outcome.code, -1);
        EXPECT_EQ(outcome.message, "DVD has too many or invalid IFO files");
    }
    const testsupport::TemporaryFolder folder;
    DvdSpec().tree().writeDirectory(folder / "disc");
    const std::string videoTs = folder / "disc/VIDEO_TS";
    fs::create_directory(videoTs + "/VTS_02_0.IFO");
    EXPECT_EQ(readPath(videoTs).message, "cannot open '" + videoTs + "/VTS_02_0.IFO': Is a directory");
    fs::remove(videoTs + "/VTS_02_0.IFO");

    // A sparse file claims any size at no cost; memory is not taken for all of it.
    testsupport::writeFile(videoTs + "/VTS_02_0.IFO", VtsSpec().build());
    for (const std::uint64_t sizeBytes : {512ULL << 20U, 1ULL << 40U}) {
        fs::resize_file(videoTs + "/VTS_02_0.IFO", sizeBytes);
        EXPECT_EQ(readPath(videoTs).message, "the navigation files are larger than 512 MiB");
    }
}

TEST(DvdDisc, PathAndDiscAreRequired)
{
    std::array<char, 64> text = {};
    dvdmeta::DvdDisc disc;
    EXPECT_EQ(dvdmeta::readDvdDisc(nullptr, &disc, text.data(), text.size()), -1);
    EXPECT_STREQ(text.data(), "path and disc are required");
    EXPECT_EQ(dvdmeta::readDvdDisc("/", nullptr, text.data(), text.size()), -1);
    EXPECT_STREQ(text.data(), "path and disc are required");
    EXPECT_EQ(dvdmeta::readDvdDisc("/", nullptr, nullptr, 0), -1);
}

TEST(DvdDisc, SharedTitleSetFileIsOpenedOnce)
{
    DvdSpec spec;
    spec.vmg.titles = {{.vtsTtn = 1}, {.vtsTtn = 2}, {.vtsTtn = 1}};
    spec.titleSets[1].titles = {{.ptts = {{1, 1}}}, {.ptts = {{2, 1}, {2, 1}}}};
    spec.titleSets[1].pgcs = {{.cells = {{0, 1}}}, {.cells = {{0, 9}}}};
    const testsupport::TemporaryFolder folder;
    const std::string path = spec.tree().write(DiscForm::Directory, folder);

    const int watcher = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(watcher, 0);
    ASSERT_GE(::inotify_add_watch(watcher, (path + "/VIDEO_TS/VTS_01_0.IFO").c_str(), IN_OPEN | IN_CLOSE), 0);
    const ReadOutcome outcome = readPath(path);
    alignas(inotify_event) std::array<char, 4096> events = {};
    const ssize_t length = ::read(watcher, events.data(), events.size());
    ::close(watcher);
    EXPECT_EQ(length, static_cast<ssize_t>(2 * sizeof(inotify_event))) << "one open, one close";

    ASSERT_EQ(outcome.disc.titles.size(), 3U) << outcome.message;
    EXPECT_EQ(outcome.disc.titles[0].playbackSizeBytes, 2 * kDvdSector);
    EXPECT_EQ(outcome.disc.titles[1].playbackSizeBytes, 10 * kDvdSector);
    EXPECT_EQ(outcome.disc.titles[1].chapterCount, 2U);
    EXPECT_EQ(outcome.disc.titles[2].playbackSizeBytes, 2 * kDvdSector);
    EXPECT_EQ(outcome.disc.rawIfos[1].bytes, spec.titleSets.at(1).build());
}

}  // namespace
