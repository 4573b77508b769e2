// Images that claim far more than they hold, or lead in circles. Each is read in a process that is watched for its time
// and memory.
#include "tests/faults/bounded_read.h"
#include "tests/faults/hostile_images.h"
#include "tests/support/fault_table.h"

#include <functional>

using faults::Family;
using testsupport::BuiltImage;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::SparseImage;
using testsupport::udfFileEntry;

namespace {

constexpr std::uint64_t kGiB = 1ULL << 30U;
constexpr char kWhole[] = "(whole)";
constexpr char kTooManyNames[] = "the directories and file entries are larger than 32 MiB";
constexpr char kLargerThanImage[] = "the navigation files are larger than the image that holds them";
constexpr char kTooLarge[] = "the navigation files are larger than 512 MiB";
const std::string kNinetyNineTitles = " titles 99 sets 49";

struct HostileImage {
    std::string fault;   // for the table of faults
    std::string answer;  // likewise
    Family family = Family::Bluray;
    std::string expected;  // what reading gives; kWhole stands for the disc without the lie, %s for the path
    std::function<SparseImage()> build;
    std::uint64_t sizeBytes = 0;  // where it is longer than what stands in it
};

std::ostream& operator<<(std::ostream& out, const HostileImage& image)
{
    return out << image.fault;
}

BuiltImage isoOf(Family family)
{
    return faults::treeOf(family).image(DiscForm::Iso);
}

// A directory or file whose record claims 4 GiB.
BuiltImage claiming4GiB(Family family, const std::string& path)
{
    BuiltImage image = isoOf(family);
    image.putLe(image.placeOf(path).record + 10, UINT32_MAX, 4);
    return image;
}

BuiltImage withoutBlockSize(Family family)
{
    BuiltImage image = isoOf(family);
    image.putLe(testsupport::kIsoDescriptor + 130, 0, 2);
    return image;
}

// The small Blu-ray disc with another file entry.
BuiltImage withEntry(const std::string& path, const testsupport::UdfFileEntrySpec& entry)
{
    BuiltImage image = faults::blurayTree().image(DiscForm::Udf);
    image.put(image.placeOf(path).entry, udfFileEntry(entry));
    return image;
}

BuiltImage claiming2To63(const std::string& path, std::uint8_t descriptorKind)
{
    BuiltImage image = faults::blurayTree().image(DiscForm::Udf, {.descriptorKind = descriptorKind});
    image.putLe(image.placeOf(path).entry + 56, 1ULL << 63U, 8);
    return image;
}

class HostileImages : public testing::TestWithParam<HostileImage> {};

TEST_P(HostileImages, AreAnsweredInTimeAndMemory)
{
    const HostileImage& hostile = GetParam();
    const testsupport::TemporaryFolder folder;
    const std::string path = folder / "disc.iso";
    {
        const SparseImage image = hostile.build();
        image.writeTo(path, std::max(hostile.sizeBytes, image.sizeBytes()));
    }
    std::string read = faults::boundedRead(hostile.family, path);
    if (hostile.expected == kNinetyNineTitles) { read.resize(hostile.expected.size()); }
    const std::string expected =
        hostile.expected == kWhole ? faults::wholeDisc(hostile.family) : hostile.expected;
    EXPECT_EQ(read, faults::filledIn(expected, path));
    EXPECT_EQ(faults::boundedDescription(hostile.family, path).empty(), hostile.answer.starts_with("fails"));
    if (!HasFailure()) { testsupport::recordFault(hostile.fault, hostile.answer); }
}

const std::string kRead = "read, within a second";
const std::string kFails = "fails within a second, with its message";

INSTANTIATE_TEST_SUITE_P(
    Iso, HostileImages,
    testing::Values(
        HostileImage{"Image: a directory that claims 4 GiB", kFails, Family::Dvd, kTooManyNames,
                     [] { return claiming4GiB(Family::Dvd, "VIDEO_TS"); }, 6 * kGiB},
        HostileImage{"Image: a directory that claims 4 GiB", kFails, Family::Bluray, faults::kCannotEnumerate,
                     [] { return claiming4GiB(Family::Bluray, "BDMV/PLAYLIST"); }, 6 * kGiB},
        HostileImage{"Image: a directory that is its own child", kFails, Family::Bluray,
                     faults::kCannotEnumerate, [] { return faults::rootInItself(isoOf(Family::Bluray)); }},
        HostileImage{"Image: a directory that is its own child", kFails, Family::Dvd,
                     "ISO image has no VIDEO_TS/VIDEO_TS.IFO",
                     [] { return faults::rootInItself(isoOf(Family::Dvd)); }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Bluray, kWhole,
                     [] { return faults::nested(faults::blurayTree(), "BDMV").image(DiscForm::Iso); }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Dvd, kWhole,
                     [] { return faults::nested(faults::dvdTree(), "VIDEO_TS").image(DiscForm::Iso); }},
        HostileImage{"Image: directory records of no length", kFails, Family::Dvd, kTooManyNames,
                     [] {
                         BuiltImage image = claiming4GiB(Family::Dvd, "VIDEO_TS");
                         image.putLe(image.placeOf("VIDEO_TS").record + 2, 30000, 4);
                         return image.wipe(30000 * testsupport::kSector);
                     },
                     6 * kGiB},
        HostileImage{"Image: blocks of no size", kFails, Family::Bluray, faults::kCannotEnumerate,
                     [] { return withoutBlockSize(Family::Bluray); }},
        HostileImage{"Image: blocks of no size", kFails, Family::Dvd,
                     "'%s' has an unsupported ISO block size", [] { return withoutBlockSize(Family::Dvd); }},
        HostileImage{"Image: a file that claims 4 GiB", kFails, Family::Dvd,
                     "cannot read VIDEO_TS/VIDEO_TS.IFO",
                     [] { return claiming4GiB(Family::Dvd, "VIDEO_TS/VIDEO_TS.IFO"); }},
        HostileImage{"Image: a file that claims 4 GiB", kFails, Family::Bluray, kTooLarge,
                     [] { return claiming4GiB(Family::Bluray, "BDMV/CLIPINF/00002.clpi"); }, 6 * kGiB},
        HostileImage{"Image: 99 title sets looked for in a directory of 16 MiB", kRead, Family::Dvd,
                     kNinetyNineTitles, faults::titleSetsOfALongDirectory, kGiB},
        HostileImage{"Image: a directory of 16 MiB of names", kFails, Family::Dvd,
                     "ISO image has no VIDEO_TS/VIDEO_TS.IFO",
                     [] { return faults::isoNames("VIDEO_TS", faults::dvdTree(), ".IFO", {1}); }},
        HostileImage{"Image: a directory of 16 MiB of names", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/000000.mpls'",
                     [] { return faults::isoNames("BDMV/PLAYLIST", faults::blurayTree(), ".mpls", {1}); }},
        HostileImage{"Image: 360,000 playlists that are one file", kFails, Family::Bluray, kLargerThanImage,
                     [] {
                         return faults::isoNames("BDMV/PLAYLIST", faults::blurayTree(), ".mpls",
                                                 testsupport::MplsSpec().build());
                     }}));

INSTANTIATE_TEST_SUITE_P(
    Udf, HostileImages,
    testing::Values(
        HostileImage{"Image: a directory that claims 4 GiB", kFails, Family::Bluray, kTooManyNames,
                     [] {
                         return withEntry("BDMV/PLAYLIST", {.fileType = 4,
                                                            .informationLength = 4 * kGiB,
                                                            .descriptors = std::vector(
                                                                5, testsupport::UdfExtent{0x3FFFF800, 0})});
                     },
                     6 * kGiB},
        HostileImage{"Image: a file that claims 2^63 bytes", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/00000.mpls'",
                     [] { return claiming2To63("BDMV/PLAYLIST/00000.mpls", 0); }},
        HostileImage{"Image: a file that claims 2^63 bytes", kFails, Family::Bluray,
                     "cannot parse clip information 'BDMV/CLIPINF/00001.clpi'",
                     [] { return claiming2To63("BDMV/CLIPINF/00001.clpi", 3); }},
        HostileImage{
            "Image: a directory that is its own child", kFails, Family::Bluray, faults::kCannotEnumerate,
            [] {
                return faults::withDirectory("", {{.name = "BDMV", .block = 2, .characteristics = 0x02},
                                                  {.name = "PLAYLIST", .block = 2, .characteristics = 0}});
            }},
        HostileImage{"Image: a file that is its own file entry", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'",
                     [] {
                         return withEntry("BDMV/PLAYLIST/00800.mpls",
                                          {.informationLength = 2048, .descriptors = {{2048, 2}}});
                     }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Bluray, kWhole,
                     [] { return faults::nested(faults::blurayTree(), "BDMV").image(DiscForm::Udf); }},
        HostileImage{"Image: a volume descriptor sequence that claims 4 GiB", kFails, Family::Bluray,
                     kTooManyNames,
                     [] {
                         return faults::blurayTree()
                             .image(DiscForm::Udf)
                             .putLe(testsupport::kUdfAnchor + 16, UINT32_MAX, 4);
                     },
                     6 * kGiB},
        HostileImage{"Image: 40,000 names that share 1 MiB of allocation descriptors", kFails, Family::Bluray,
                     kTooManyNames, [] { return faults::sharedDescriptorArea(40000); }, 64U << 20U},
        HostileImage{"Image: 250,000 clips that are one file", kRead, Family::Bluray,
                     "id 0001 titles 2 playlists 3 clips 250000 bytes 27000950 streams 27000000",
                     [] { return faults::udfClips(250000); }},
        HostileImage{"Image: 300,000 clips that are one file", kFails, Family::Bluray, kTooManyNames,
                     [] { return faults::udfClips(300000); }},
        HostileImage{"Image: files of 130,000 extents of a byte", kFails, Family::Bluray,
                     "the files are in more than 262,144 pieces", faults::oneByteExtents, 64U << 20U}));

}  // namespace
