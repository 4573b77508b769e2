// Navigation files whose counts, lengths and addresses claim far more than the file holds, in every form of disc.
#include "tests/faults/bounded_read.h"
#include "tests/support/fault_table.h"

#include <functional>

using faults::Family;
using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::DiscForm;
using testsupport::MplsSpec;

namespace {

struct Lie {
    std::string path;
    std::string expected;
    Bytes file;
};

constexpr char kPlaylist[] = "BDMV/PLAYLIST/00800.mpls";
constexpr char kClip[] = "BDMV/CLIPINF/00002.clpi";
constexpr char kBadPlaylist[] = "cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'";
constexpr char kBadClip[] = "cannot parse clip information 'BDMV/CLIPINF/00002.clpi'";

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

TEST(LyingFiles, OfABlurayDisc)
{
    readInEveryForm(Family::Bluray, faults::blurayTree(), blurayLies(),
                    {DiscForm::Directory, DiscForm::Iso, DiscForm::Udf});
}

}  // namespace
