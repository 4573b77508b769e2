// Navigation files whose counts, lengths and addresses claim far more than the file holds, in every form of disc.
#include "tests/faults/bounded_read.h"
#include "tests/support/fault_table.h"

#include <functional>

using faults::Family;
using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::DiscForm;
using testsupport::MplsSpec;
using testsupport::VmgSpec;
using testsupport::VtsSpec;

namespace {

struct Lie {
    std::string path;
    std::string expected;
    Bytes file;
};

constexpr char kManager[] = "VIDEO_TS/VIDEO_TS.IFO";
constexpr char kTitleSet[] = "VIDEO_TS/VTS_01_0.IFO";
constexpr char kPlaylist[] = "BDMV/PLAYLIST/00800.mpls";
constexpr char kClip[] = "BDMV/CLIPINF/00002.clpi";
constexpr char kBadPlaylist[] = "cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'";
constexpr char kBadClip[] = "cannot parse clip information 'BDMV/CLIPINF/00002.clpi'";

VtsSpec withPgc(const testsupport::PgcSpec& pgc)
{
    return VtsSpec{.pgcs = {pgc}};
}

std::vector<Lie> dvdLies()
{
    return {
        {kManager, "VIDEO_TS.IFO has an invalid title table", VmgSpec{.endAddress = UINT32_MAX}.build()},
        {kManager, "VIDEO_TS.IFO has an invalid title table",
         VmgSpec{.declaredTitleCount = UINT16_MAX, .endAddress = 0}.build()},
        {kManager, "VIDEO_TS.IFO has no readable title table",
         VmgSpec{.titleTableSector = UINT32_MAX}.build()},
        {kTitleSet, "VTS_01_0.IFO has missing title tables", VtsSpec{.pttTableSector = UINT32_MAX}.build()},
        {kTitleSet, "VTS_01_0.IFO has missing title tables", VtsSpec{.pgcTableSector = UINT32_MAX}.build()},
        {kTitleSet, "VTS_01_0.IFO has invalid title PTT data", VtsSpec{.pttEndAddress = UINT32_MAX}.build()},
        {kTitleSet, "VTS_01_0.IFO has malformed PTT offsets",
         VtsSpec{.titles = {{.pttOffset = UINT32_MAX}}}.build()},
        {kTitleSet, "VTS_01_0.IFO has an invalid declared stream count", VtsSpec{.audioCount = 255}.build()},
        {kTitleSet, "VTS_01_0.IFO has invalid PGC data",
         VtsSpec{.titles = {{.ptts = {{.pgcn = UINT16_MAX}}}}, .declaredPgcCount = UINT16_MAX}.build()},
        {kTitleSet, "cannot read title PGC in VTS_01_0.IFO", withPgc({.offset = UINT32_MAX}).build()},
        {kTitleSet, "VTS_01_0.IFO has invalid cell playback data", withPgc({.cellCount = 255}).build()},
        {kTitleSet, "VTS_01_0.IFO has invalid cell playback data",
         withPgc({.cellPlaybackOffset = UINT16_MAX}).build()},
    };
}

std::vector<Lie> blurayLies()
{
    Bytes index;
    testsupport::putText(index, 0, "INDX0200");
    testsupport::putBe32(index, 8, UINT32_MAX);
    testsupport::growTo(index, 78);
    return {
        {"BDMV/index.bdmv", faults::kWithoutIndex, index},
        {kPlaylist, kBadPlaylist, MplsSpec{.numberOfPlayItems = UINT16_MAX}.build()},
        {kPlaylist, kBadPlaylist, MplsSpec{.numberOfMarks = UINT16_MAX}.build()},
        {kPlaylist, kBadPlaylist, MplsSpec{.playListAddress = UINT32_MAX}.build()},
        {kPlaylist, kBadPlaylist, MplsSpec{.markAddress = UINT32_MAX}.build()},
        {kPlaylist, kBadPlaylist, MplsSpec{.playItems = {{.length = UINT16_MAX}}}.build()},
        {kPlaylist, kBadPlaylist, MplsSpec{.playItems = {{.stn = {.primaryVideoCount = 255}}}}.build()},
        {kClip, kBadClip, ClpiSpec{.numberOfPrograms = 255}.build()},
        {kClip, kBadClip, ClpiSpec{.programInfoAddress = UINT32_MAX}.build()},
        {kClip, kBadClip, ClpiSpec{.programInfoLength = UINT32_MAX}.build()},
        {kClip, kBadClip, ClpiSpec{.programs = {{.numberOfStreams = 255}}}.build()},
    };
}

void readInEveryForm(Family family, const testsupport::DiscTree& tree, const std::vector<Lie>& lies,
                     const std::vector<DiscForm>& forms)
{
    for (const Lie& lie : lies) {
        for (const DiscForm form : forms) {
            const testsupport::TemporaryFolder folder;
            const std::string path = testsupport::DiscTree(tree).add(lie.path, lie.file).write(form, folder);
            const std::string read = faults::boundedRead(family, path);
            EXPECT_EQ(read, lie.expected) << "form " << static_cast<int>(form);
            if (!testing::Test::HasFailure()) {
                testsupport::recordFault("File: counts, lengths or addresses that claim more than is there",
                                         faults::isSummary(read) ? "read, without what they lead to"
                                                                 : "fails within a second, with its message");
            }
        }
    }
}

TEST(LyingFiles, OfADvd)
{
    readInEveryForm(Family::Dvd, faults::dvdTree(), dvdLies(), {DiscForm::Directory, DiscForm::Iso});
}

TEST(LyingFiles, OfABlurayDisc)
{
    readInEveryForm(Family::Bluray, faults::blurayTree(), blurayLies(),
                    {DiscForm::Directory, DiscForm::Iso, DiscForm::Udf});
}

}  // namespace
