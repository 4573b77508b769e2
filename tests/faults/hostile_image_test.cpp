// Images that claim far more than they hold, or lead in circles. Each is read in a process that is watched for its time
// and memory.
#include "tests/faults/bounded_read.h"
#include "tests/support/dvd_spec.h"
#include "tests/support/fault_table.h"

#include <functional>

using faults::Family;
using testsupport::Bytes;
using testsupport::DiscTree;
using testsupport::IsoSpec;
using testsupport::kUdfSector;
using testsupport::SparseImage;
using testsupport::UdfAllocationDescriptor;
using testsupport::UdfFileEntrySpec;
using testsupport::UdfFileIdentifierSpec;
using testsupport::UdfSpec;

namespace {

constexpr std::uint64_t kGiB = 1ULL << 30U;
constexpr std::uint32_t k16MiB = 16U << 20U;
constexpr std::size_t kSector = 2048;
constexpr std::uint32_t kPartition = 320;  // the first sector of a UDF image's partition
constexpr std::uint32_t kFarBlock = 5000;  // behind all that the small discs hold
constexpr char kWhole[] = "(whole)";
const std::string kNinetyNineTitles = " titles 99 sets 49";
constexpr char kCannotEnumerate[] = "cannot enumerate BDMV playlist or clip information files";

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

SparseImage isoDvd(const IsoSpec& spec)
{
    return faults::dvdTree().iso(spec);
}

SparseImage isoBluray(const IsoSpec& spec)
{
    return faults::blurayTree().iso(spec);
}

SparseImage udfBluray(const UdfSpec& spec)
{
    return faults::blurayTree().udf(spec);
}

void putBlock(SparseImage& image, std::uint32_t block, Bytes bytes)
{
    image.put((std::uint64_t{kPartition} + block) * kUdfSector, std::move(bytes));
}

// The small disc with these identifiers in place of a directory's.
SparseImage withDirectory(const std::string& path, const std::vector<UdfFileIdentifierSpec>& identifiers,
                          UdfSpec spec = {})
{
    Bytes bytes;
    for (const UdfFileIdentifierSpec& identifier : identifiers) {
        const Bytes one = udfFileIdentifier(identifier);
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    const auto size = static_cast<std::uint32_t>(bytes.size());
    spec.nodes[path].informationLength = size;
    spec.nodes[path].descriptors = {{size, kFarBlock}};
    SparseImage image = udfBluray(spec);
    putBlock(image, kFarBlock, std::move(bytes));
    return image;
}

std::string fiveDigits(std::uint32_t number)
{
    return std::to_string(100000 + number).substr(1);
}

// `count` clips of one file entry, whose descriptors take a megabyte and record one extent.
SparseImage sharedDescriptorArea(std::uint32_t count)
{
    const Bytes clip = testsupport::ClpiSpec().build();
    const std::uint32_t entryBlock = kFarBlock + 3000;
    const auto size = static_cast<std::uint32_t>(clip.size());
    UdfFileEntrySpec entry{.informationLength = size};
    entry.descriptors.resize((1U << 20U) / 8);
    entry.descriptors.back() = {size, entryBlock + 1000};
    std::vector<UdfFileIdentifierSpec> names;
    for (std::uint32_t i = 0; i < count; ++i) {
        names.push_back({.name = fiveDigits(i) + ".clpi", .block = entryBlock});
    }
    SparseImage image = withDirectory("BDMV/CLIPINF", names);
    putBlock(image, entryBlock, udfFileEntry(entry));
    putBlock(image, entryBlock + 1000, clip);
    return image;
}

// Playlists of a hundred thousand extents of a byte each.
SparseImage oneByteExtents()
{
    const std::uint32_t dataBlock = kFarBlock + 3000;
    const Bytes playlist = testsupport::MplsSpec().build();
    UdfFileEntrySpec entry{.informationLength = 1U << 17U};
    for (std::uint32_t i = 0; i < 1U << 17U; ++i) {
        entry.descriptors.push_back({1, dataBlock + std::min<std::uint32_t>(i, 400)});
    }
    std::vector<UdfFileIdentifierSpec> names;
    for (std::uint32_t i = 0; i < 80; ++i) {
        names.push_back({.name = fiveDigits(i) + ".mpls", .block = dataBlock - 1000});
    }
    SparseImage image = withDirectory("BDMV/PLAYLIST", names);
    putBlock(image, dataBlock - 1000, udfFileEntry(entry));
    for (std::uint32_t i = 0; i < playlist.size(); ++i) {
        putBlock(image, dataBlock + i, {playlist[i]});
    }
    return image;
}

// A root directory in which every directory is the root itself.
SparseImage rootInItself(SparseImage image)
{
    Bytes root;
    for (const char* name : {"BDMV", "VIDEO_TS"}) {
        const Bytes record =
            testsupport::isoRecord({.identifier = name, .block = 18, .sizeBytes = 2048, .flags = 2});
        root.insert(root.end(), record.begin(), record.end());
    }
    root.resize(2048);
    image.put(18 * 2048, std::move(root));
    return image;
}

// The records of as many files as fit into a directory of this size, all with the same data.
Bytes manyRecords(std::size_t sizeBytes, const std::string& suffix, std::uint32_t block, std::size_t fileSize)
{
    Bytes directory(sizeBytes);
    std::uint32_t number = 0;
    for (std::size_t start = 0; start < sizeBytes; start += kSector) {
        for (std::size_t at = start; at + 50 <= start + kSector; at += 44) {
            const Bytes record =
                testsupport::isoRecord({.identifier = std::to_string(1000000 + number++).substr(1) + suffix,
                                        .block = block,
                                        .sizeBytes = static_cast<std::uint32_t>(fileSize)});
            std::copy(record.begin(), record.end(), directory.begin() + static_cast<std::ptrdiff_t>(at));
        }
    }
    return directory;
}

// 99 titles of 49 title sets, the first in a directory of 16 MiB; 50 more are not there.
SparseImage titleSetsOfALongDirectory()
{
    testsupport::DvdSpec disc;
    disc.vmg.titles.clear();
    for (unsigned i = 0; i < 99; ++i) {
        disc.vmg.titles.push_back({.vtsn = static_cast<std::uint8_t>(i % 49 + 1)});
        disc.titleSets[i % 49 + 1] = {};
    }
    SparseImage image =
        disc.tree().iso({.records = {{"VIDEO_TS", {.block = kFarBlock, .sizeBytes = k16MiB}}}});
    image.put((kFarBlock + 4) * kSector, manyRecords(k16MiB - 4 * kSector, ".IFO", 0, 1));
    return image;
}

// A directory of ISO-9660 of 16 MiB of names, all of one file.
SparseImage isoNames(const std::string& path, const DiscTree& tree, const std::string& suffix,
                     const Bytes& file)
{
    SparseImage image = tree.iso({.records = {{path, {.block = kFarBlock, .sizeBytes = k16MiB}}}});
    const std::uint32_t block = kFarBlock + k16MiB / 2048 + 10;
    image.put(kFarBlock * kSector, manyRecords(k16MiB, suffix, block, file.size()));
    image.put(block * kSector, file);
    return image;
}

DiscTree nested(DiscTree tree, const std::string& top)
{
    std::string path = top;
    for (int depth = 0; depth < 1000; ++depth) {
        path += "/d";
    }
    return tree.add(path + "/file", {1});
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
    std::string expected = hostile.expected == kWhole ? faults::wholeDisc(hostile.family) : hostile.expected;
    const std::size_t place = expected.find("%s");
    if (place != std::string::npos) { expected.replace(place, 2, path); }
    EXPECT_EQ(read, expected);
    if (!HasFailure()) { testsupport::recordFault(hostile.fault, hostile.answer); }
}

const std::string kRead = "read, within a second";
const std::string kFails = "fails within a second, with its message";

// 187,761 playlists come to as much as the whole image holds.
INSTANTIATE_TEST_SUITE_P(
    Iso, HostileImages,
    testing::Values(
        HostileImage{"Image: a directory that claims 4 GiB", kRead, Family::Dvd, kWhole,
                     [] {
                         return isoDvd({.records = {{"VIDEO_TS", {.sizeBytes = UINT32_MAX}}}});
                     },
                     6 * kGiB},
        HostileImage{"Image: a directory that claims 4 GiB", kFails, Family::Bluray, kCannotEnumerate,
                     [] {
                         return isoBluray({.records = {{"BDMV/PLAYLIST", {.sizeBytes = UINT32_MAX}}}});
                     },
                     6 * kGiB},
        HostileImage{"Image: a directory that is its own child", kFails, Family::Bluray, kCannotEnumerate,
                     [] { return rootInItself(isoBluray({})); }},
        HostileImage{"Image: a directory that is its own child", kFails, Family::Dvd,
                     "ISO image has no VIDEO_TS/VIDEO_TS.IFO", [] { return rootInItself(isoDvd({})); }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Bluray, kWhole,
                     [] { return nested(faults::blurayTree(), "BDMV").iso(); }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Dvd, kWhole,
                     [] { return nested(faults::dvdTree(), "VIDEO_TS").iso(); }},
        HostileImage{"Image: directory records of no length", kFails, Family::Dvd,
                     "ISO image has no VIDEO_TS/VIDEO_TS.IFO",
                     [] {
                         SparseImage image =
                             isoDvd({.records = {{"VIDEO_TS", {.block = 30000, .sizeBytes = UINT32_MAX}}}});
                         image.put(30000ULL * 2048, Bytes(2048));
                         return image;
                     },
                     6 * kGiB},
        HostileImage{"Image: blocks of no size", kFails, Family::Bluray, kCannotEnumerate,
                     [] { return isoBluray({.blockSizeBigEndian = 0}); }},
        HostileImage{"Image: blocks of no size", kFails, Family::Dvd,
                     "'%s' has an unsupported ISO block size",
                     [] { return isoDvd({.blockSizeBigEndian = 0}); }},
        HostileImage{"Image: a file that claims 4 GiB", kFails, Family::Dvd,
                     "cannot read VIDEO_TS/VIDEO_TS.IFO",
                     [] {
                         return isoDvd({.records = {{"VIDEO_TS/VIDEO_TS.IFO", {.sizeBytes = UINT32_MAX}}}});
                     }},
        HostileImage{
            "Image: a file that claims 4 GiB", kFails, Family::Bluray,
            "cannot parse clip information 'BDMV/CLIPINF/00002.clpi'",
            [] {
                return isoBluray({.records = {{"BDMV/CLIPINF/00002.clpi", {.sizeBytes = UINT32_MAX}}}});
            },
            6 * kGiB},
        HostileImage{"Image: 99 title sets looked for in a directory of 16 MiB", kRead, Family::Dvd,
                     kNinetyNineTitles, titleSetsOfALongDirectory, kGiB},
        HostileImage{"Image: a directory of 16 MiB of names", kFails, Family::Dvd,
                     "ISO image has no VIDEO_TS/VIDEO_TS.IFO",
                     [] { return isoNames("VIDEO_TS", faults::dvdTree(), ".IFO", {1}); }},
        HostileImage{"Image: a directory of 16 MiB of names", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/000000.mpls'",
                     [] { return isoNames("BDMV/PLAYLIST", faults::blurayTree(), ".mpls", {1}); }},
        HostileImage{"Image: 360,000 playlists that are one file", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/187761.mpls'", [] {
                         return isoNames("BDMV/PLAYLIST", faults::blurayTree(), ".mpls",
                                         testsupport::MplsSpec().build());
                     }}));

INSTANTIATE_TEST_SUITE_P(
    Udf, HostileImages,
    testing::Values(
        HostileImage{
            "Image: a directory that claims 4 GiB", kFails, Family::Bluray, kCannotEnumerate,
            [] {
                UdfSpec spec;
                spec.nodes["BDMV/PLAYLIST"].informationLength = 4 * kGiB;
                spec.nodes["BDMV/PLAYLIST"].descriptors.emplace(5, UdfAllocationDescriptor{0x3FFFF800, 0});
                return udfBluray(spec);
            },
            6 * kGiB},
        HostileImage{"Image: a file that claims 2^63 bytes", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/00000.mpls'",
                     [] {
                         return udfBluray(
                             {.nodes = {{"BDMV/PLAYLIST/00000.mpls", {.informationLength = 1ULL << 63U}}}});
                     }},
        HostileImage{"Image: a file that claims 2^63 bytes", kFails, Family::Bluray,
                     "cannot parse clip information 'BDMV/CLIPINF/00001.clpi'",
                     [] {
                         UdfSpec spec{.descriptorKind = 3};
                         spec.nodes["BDMV/CLIPINF/00001.clpi"].informationLength = 1ULL << 63U;
                         return udfBluray(spec);
                     }},
        HostileImage{"Image: a directory that is its own child", kFails, Family::Bluray, kCannotEnumerate,
                     [] {
                         return withDirectory("", {{.name = "BDMV", .block = 1, .characteristics = 0x02},
                                                   {.name = "PLAYLIST", .block = 1, .characteristics = 0}});
                     }},
        HostileImage{"Image: a file that is its own file entry", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/00800.mpls'",
                     [] {
                         UdfSpec spec;
                         spec.nodes["BDMV/PLAYLIST/00800.mpls"].informationLength = 2048;
                         spec.nodes["BDMV/PLAYLIST/00800.mpls"].descriptors = {{2048, 1}};
                         return udfBluray(spec);
                     }},
        HostileImage{"Image: a thousand directories in each other", kRead, Family::Bluray, kWhole,
                     [] { return nested(faults::blurayTree(), "BDMV").udf(); }},
        HostileImage{"Image: a volume descriptor sequence that claims 4 GiB", kRead, Family::Bluray, kWhole,
                     [] { return udfBluray({.sequenceLength = UINT32_MAX}); }, 6 * kGiB},
        HostileImage{"Image: 40,000 names that share 1 MiB of allocation descriptors", kFails, Family::Bluray,
                     "cannot parse clip information 'BDMV/CLIPINF/00063.clpi'",
                     [] { return sharedDescriptorArea(40000); }, 64U << 20U},
        HostileImage{"Image: files of 130,000 extents of a byte", kFails, Family::Bluray,
                     "cannot parse playlist 'BDMV/PLAYLIST/00002.mpls'", oneByteExtents, 64U << 20U}));

}  // namespace
