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
    const Bytes mpls = MplsSpec().build();
    const Bytes clpi = ClpiSpec().build();
    const std::size_t programs = clpi[14] * std::size_t{256} + clpi[15];
    return {
        {"BDMV/index.bdmv", faults::kWithoutIndex, index},
        {kPlaylist, kBadPlaylist,
         testsupport::patched(mpls, {{testsupport::kPlayListStart + 6, 2, UINT16_MAX}})},
        {kPlaylist, kBadPlaylist, testsupport::patched(mpls, {{mpls[15] + 4U, 2, UINT16_MAX}})},
        {kPlaylist, kBadPlaylist, testsupport::patched(mpls, {{8, 4, UINT32_MAX}})},
        {kPlaylist, kBadPlaylist, testsupport::patched(mpls, {{12, 4, UINT32_MAX}})},
        {kPlaylist, kBadPlaylist, testsupport::patched(mpls, {{testsupport::kFirstPlayItem, 2, UINT16_MAX}})},
        {kPlaylist, kBadPlaylist,
         testsupport::patched(mpls, {{testsupport::kFirstPlayItem + 34 + 4, 1, 255}})},
        {kClip, kBadClip, testsupport::patched(clpi, {{programs + 5, 1, 255}})},
        {kClip, kBadClip, testsupport::patched(clpi, {{12, 4, UINT32_MAX}})},
        {kClip, kBadClip, testsupport::patched(clpi, {{programs, 4, UINT32_MAX}})},
        {kClip, kBadClip, testsupport::patched(clpi, {{programs + 6 + 6, 1, 255}})},
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
