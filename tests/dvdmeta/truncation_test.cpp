// Discs that end early: files of a directory cut after every byte, and images cut after every byte, whose
// directories go on claiming the whole length. Each length has its one outcome.
#include "tests/dvdmeta/read_outcome.h"
#include "tests/support/fault_table.h"

using testsupport::DiscForm;
using testsupport::DvdSpec;
using testsupport::kDvdSector;
namespace fs = std::filesystem;

namespace {

constexpr char kSuccess[] = "(success)";

// A length from which on, up to the next step's, a cut gives the message.
struct Step {
    std::size_t from;
    std::string message;
};

// Two titles in one title set; the second one's chapter is the program chain at the file's end.
DvdSpec twoTitles()
{
    DvdSpec spec;
    spec.vmg.titles = {{.vtsTtn = 1}, {.vtsTtn = 2}};
    spec.titleSets[1].titles = {{.ptts = {{1, 1}}}, {.ptts = {{1, 1}}}};
    return spec;
}

// Cuts `path` shorter byte by byte, from `start` + `size` to `start`, and reads `disc` each time.
void cutAndRead(const std::string& disc, const std::string& path, std::size_t start, std::size_t size,
                const std::vector<Step>& steps)
{
    auto step = steps.rbegin();
    for (std::size_t length = size + 1; length-- > 0;) {
        while (length < step->from) {
            ++step;
        }
        fs::resize_file(path, start + length);
        const ReadOutcome outcome = readPath(disc);
        ASSERT_EQ(outcome.code == 0 ? kSuccess : outcome.message, step->message) << "cut to " << length;
        ASSERT_EQ(outcome.disc.titles.size(), outcome.code == 0 ? 2U : 0U);
    }
    // The last step's lengths alone, if it is one of success, miss nothing.
    const std::size_t fails = steps.back().message == kSuccess ? steps.back().from : size + 1;
    testsupport::recordFault("File: cut off after any byte", "fails, with its message", fails);
    testsupport::recordFault("File: cut off after any byte", "read: what it says is there", size + 1 - fails);
}

// Writes the disc as an image whose last file is the one named; where that file begins.
std::size_t writeImageEndingWith(const std::string& name, const testsupport::Bytes& bytes,
                                 const std::string& path)
{
    auto image = twoTitles().tree().remove(name).add(name, bytes).iso();
    image.writeTo(path);
    return image.sizeBytes() - testsupport::roundedUp(bytes.size(), kDvdSector);
}

TEST(CutShort, ManagerInADirectory)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = twoTitles().tree().write(DiscForm::Directory, folder);
    cutAndRead(disc, disc + "/VIDEO_TS/VIDEO_TS.IFO", 0, 2 * kDvdSector,
               {{0, "VIDEO_TS.IFO is not a DVD-Video manager IFO"},
                {kDvdSector, "VIDEO_TS.IFO has no readable title table"},
                {kDvdSector + 8, "VIDEO_TS.IFO has an invalid title table"},
                {kDvdSector + 8 + 24, kSuccess}});
}

TEST(CutShort, ManagerInAnImage)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = folder / "disc.iso";
    const std::size_t start = writeImageEndingWith("VIDEO_TS/VIDEO_TS.IFO", twoTitles().vmg.build(), disc);
    cutAndRead(disc, disc, start, 2 * kDvdSector,
               {{0, "VIDEO_TS.IFO is not a DVD-Video manager IFO"},
                {kDvdSector, "VIDEO_TS.IFO has no readable title table"},
                {kDvdSector + 8, "cannot read title 1"},
                {kDvdSector + 8 + 12, "cannot read title 2"},
                {kDvdSector + 8 + 24, "cannot read VIDEO_TS/VIDEO_TS.IFO"},
                {2 * kDvdSector, kSuccess}});
}

TEST(CutShort, TitleSetInADirectory)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = twoTitles().tree().write(DiscForm::Directory, folder);
    const testsupport::VtsSpec vts = twoTitles().titleSets.at(1);
    const std::size_t table = vts.pgcTableStart();
    const std::size_t pgc = vts.pgcStart(1);
    cutAndRead(disc, disc + "/VIDEO_TS/VTS_01_0.IFO", 0, vts.build().size(),
               {{0, "VTS_01_0.IFO is not a valid VTS IFO"},
                {984, "VTS_01_0.IFO has missing title tables"},
                {table + 8, "VTS_01_0.IFO has invalid PGC data"},
                {table + 16, "cannot read title PGC in VTS_01_0.IFO"},
                {pgc + 236, "VTS_01_0.IFO has invalid cell playback data"},
                {vts.build().size(), kSuccess}});
}

TEST(CutShort, TitleSetInAnImage)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = folder / "disc.iso";
    const testsupport::VtsSpec vts = twoTitles().titleSets.at(1);
    const std::size_t start = writeImageEndingWith("VIDEO_TS/VTS_01_0.IFO", vts.build(), disc);
    const std::size_t table = vts.pgcTableStart();
    const std::size_t pgc = vts.pgcStart(1);
    cutAndRead(disc, disc, start, vts.build().size(),
               {{0, "VTS_01_0.IFO is not a valid VTS IFO"},
                {984, "VTS_01_0.IFO has invalid title PTT data"},
                {kDvdSector + 12, "cannot read PTT table in VTS_01_0.IFO"},
                {kDvdSector + 16, "cannot read first PTT in VTS_01_0.IFO"},
                {kDvdSector + 20, "VTS_01_0.IFO has invalid PGC data"},
                {table + 16, "cannot read title PGC in VTS_01_0.IFO"},
                {pgc + 236, "VTS_01_0.IFO has an invalid title start program"},
                {pgc + 237, "cannot read cell playback data in VTS_01_0.IFO"},
                {vts.build().size(), kSuccess}});
}

// In the structures before the files every cut fails, one way or another.
TEST(CutShort, ImageBeforeItsFiles)
{
    const testsupport::TemporaryFolder folder;
    const std::string disc = twoTitles().tree().write(DiscForm::Iso, folder);
    for (std::size_t length = 20 * kDvdSector; length > 0;
         length -= length > 16 * kDvdSector ? 1 : kDvdSector) {
        fs::resize_file(disc, length);
        const ReadOutcome outcome = readPath(disc);
        ASSERT_EQ(outcome.code, -1) << length;
        ASSERT_NE(outcome.message, "") << length;
    }
    testsupport::recordFault("Image: cut off before its files", "fails, with a message", 4 * kDvdSector + 16);
}

}  // namespace
