// Images of discs that claim far more than they hold, or lead in circles. Each is read in a process that is watched for
// its time and memory.
#include "tests/faults/small_disc.h"

#include <functional>

using namespace faults;
using namespace testsupport;

namespace {

constexpr Family kDvd = Family::Dvd;
constexpr Family kBluray = Family::Bluray;
constexpr std::uint32_t kFarBlock = 5000;  // after the contents of the small discs
const Bytes kClip = ClpiSpec().build();
const Bytes kPlaylist = MplsSpec().build();

BuiltImage imageOf(Family family, DiscForm form)
{
    return treeOf(family).image(form);
}

// The image with a number at an offset in a place of a file or directory.
BuiltImage with(BuiltImage image, std::uint64_t Place::*place, const std::string& path, std::size_t offset,
                std::uint64_t value, std::size_t width = 4)
{
    image.putLe(image.placeOf(path).*place + offset, value, width);
    return image;
}

// The small disc with another block (2) or size (10) in a directory record of ISO-9660.
BuiltImage withRecord(Family family, const std::string& path, std::size_t offset, std::uint64_t value)
{
    return with(imageOf(family, DiscForm::Iso), &Place::record, path, offset, value);
}

// A thousand directories, each in the one before.
BuiltImage nested(DiscForm form)
{
    std::string path = "BDMV";
    for (int depth = 0; depth < 1000; ++depth) {
        path += "/d";
    }
    return treeOf(kBluray).add(path + "/file", {1}).image(form);
}

// A directory of ISO-9660 with 16 MiB of names more, all of one file.
BuiltImage withNames(Family family, const std::string& path, const std::string& suffix, const Bytes& file)
{
    constexpr std::uint32_t kSize = 16U << 20U;
    const std::uint32_t fileBlock = kFarBlock + kSize / kSector + 10;
    Bytes names;
    for (std::uint32_t number = 1000000; names.size() < kSize - 4 * kSector; ++number) {
        if (number % (kSector / 44) == 0) { names.resize(roundedUp(names.size(), kSector)); }
        append(names, isoRecord({.identifier = std::to_string(number).substr(1) + suffix,
                                 .block = fileBlock,
                                 .sizeBytes = static_cast<std::uint32_t>(file.size())}));
    }
    BuiltImage image = treeOf(family).image(DiscForm::Iso, {.sectors = {{path, kFarBlock}}});
    image.putLe(image.placeOf(path).record + 10, kSize, 4);
    image.put((kFarBlock + 4) * kSector, names).put(fileBlock * kSector, file);
    return image;
}

// Replaces a directory of UDF by `count` names of one file, whose data are `bytes` and what the further extents hold.
BuiltImage withFiles(const std::string& path, std::uint32_t count, const std::string& suffix,
                     const Bytes& bytes, const std::vector<UdfExtent>& extents = {},
                     std::uint32_t block = kFarBlock, BuiltImage image = imageOf(kBluray, DiscForm::Udf))
{
    const auto put = [&image](std::uint32_t at, const Bytes& content) {
        image.put((std::uint64_t{kUdfPartitionSector} + at) * kSector, content);
    };
    UdfFileEntrySpec entry{.descriptors = {{static_cast<std::uint32_t>(bytes.size()), block + 1000}}};
    entry.descriptors.insert(entry.descriptors.end(), extents.begin(), extents.end());
    for (const UdfExtent& extent : entry.descriptors) {
        entry.informationLength += extent.length;
    }
    Bytes names;
    for (std::uint32_t i = 0; i < count; ++i) {
        append(names, udfFileIdentifier({.name = std::to_string(1000000 + i) + suffix, .block = block}));
    }
    const auto size = static_cast<std::uint32_t>(names.size());
    put(block, udfFileEntry(entry));
    put(block + 1000, bytes);
    put(block + 1001, names);
    image.put(
        image.placeOf(path).entry,
        udfFileEntry({.fileType = 4, .informationLength = size, .descriptors = {{size, block + 1001}}}));
    return image;
}

// Clips that are one file, each with a stream file of its name.
BuiltImage withClips(std::uint32_t count)
{
    return withFiles("BDMV/STREAM", count, ".m2ts", kClip, {}, 20000,
                     withFiles("BDMV/CLIPINF", count, ".clpi", kClip));
}

struct HostileImage {
    Family family;
    const char* name;
    const char* expected;  // the beginning of the answer; "": the disc without the lie
    std::function<SparseImage()> build;
    std::uint64_t sizeBytes = 6ULL << 30U;
};

constexpr char kTooManyNames[] = "the directories and file entries are larger than 32 MiB";
constexpr char kCannotEnumerate[] = "cannot enumerate BDMV playlist or clip information files";

const HostileImage kHostileImages[] = {
    {kDvd, "ISO: a directory of 4 GiB", kTooManyNames,
     [] { return withRecord(kDvd, "VIDEO_TS", 10, UINT32_MAX); }},
    {kBluray, "ISO: a directory of 4 GiB", kCannotEnumerate,
     [] { return withRecord(kBluray, "BDMV/PLAYLIST", 10, UINT32_MAX); }},
    {kDvd, "ISO: records of no length", kTooManyNames,
     [] { return with(withRecord(kDvd, "VIDEO_TS", 10, UINT32_MAX), &Place::record, "VIDEO_TS", 2, 30000); }},
    {kDvd, "ISO: a directory that is the root", "ISO image has no VIDEO_TS/VIDEO_TS.IFO",
     [] { return withRecord(kDvd, "VIDEO_TS", 2, 18); }},
    {kBluray, "ISO: a directory that is the root", kCannotEnumerate,
     [] { return withRecord(kBluray, "BDMV", 2, 18); }},
    {kBluray, "ISO: a thousand directories", "", [] { return nested(DiscForm::Iso); }},
    {kBluray, "ISO: blocks of no size", kCannotEnumerate,
     [] { return imageOf(kBluray, DiscForm::Iso).putLe(kIsoDescriptor + 130, 0, 2); }},
    {kDvd, "ISO: a file of 4 GiB", "cannot read VIDEO_TS/VIDEO_TS.IFO",
     [] { return withRecord(kDvd, "VIDEO_TS/VIDEO_TS.IFO", 10, UINT32_MAX); }, 1U << 20U},
    {kBluray, "ISO: a file of 4 GiB", "the navigation files are larger than 512 MiB",
     [] { return withRecord(kBluray, "BDMV/CLIPINF/00002.clpi", 10, UINT32_MAX); }},
    {kDvd, "ISO: a directory of 16 MiB", "", [] { return withNames(kDvd, "VIDEO_TS", ".IFO", {1}); }},
    {kBluray, "ISO: a directory of 16 MiB", "cannot parse playlist 'BDMV/PLAYLIST/000000.mpls'",
     [] { return withNames(kBluray, "BDMV/PLAYLIST", ".mpls", {1}); }},
    {kBluray, "ISO: 360,000 playlists", "the navigation files are larger than the image that holds them",
     [] { return withNames(kBluray, "BDMV/PLAYLIST", ".mpls", kPlaylist); }, 27U << 20U},
    {kBluray, "UDF: a directory of 4 GiB", kTooManyNames,
     [] {
         BuiltImage image = imageOf(kBluray, DiscForm::Udf);
         const UdfFileEntrySpec entry = {261, 4, 0, 4ULL << 30U, std::vector(5, UdfExtent{0x3FFFF800})};
         return image.put(image.placeOf("BDMV/PLAYLIST").entry, udfFileEntry(entry));
     }},
    {kBluray, "UDF: a file of 2^63 bytes", "cannot parse playlist 'BDMV/PLAYLIST/00000.mpls'",
     [] {
         return with(imageOf(kBluray, DiscForm::Udf), &Place::entry, "BDMV/PLAYLIST/00000.mpls", 56,
                     1ULL << 63U, 8);
     }},
    {kBluray, "UDF: a directory that is the root", kCannotEnumerate,  // by the block in the second identifier
     [] { return with(imageOf(kBluray, DiscForm::Udf), &Place::data, "", 40 + 24, 2); }},
    {kBluray, "UDF: a thousand directories", "", [] { return nested(DiscForm::Udf); }},
    {kBluray, "UDF: volume descriptors of 4 GiB", kTooManyNames,
     [] { return imageOf(kBluray, DiscForm::Udf).putLe(kUdfAnchor + 16, UINT32_MAX, 4); }},
    {kBluray, "UDF: 40,000 names that share 1 MiB of descriptors", kTooManyNames,
     [] {
         return withFiles("BDMV/CLIPINF", 40000, ".clpi", kClip, std::vector<UdfExtent>((1U << 17U) - 1));
     }},
    {kBluray, "UDF: 250,000 clips that are one file", "disc 40001325 bytes 3 titles",
     [] { return withClips(250000); }, 64U << 20U},
    {kBluray, "UDF: 300,000 clips that are one file", kTooManyNames, [] { return withClips(300000); }},
    {kBluray, "UDF: files of 130,000 extents of a byte", "the files are in more than 262,144 pieces",
     [] {
         return withFiles("BDMV/PLAYLIST", 80, ".mpls", kPlaylist,
                          std::vector((1U << 17U) - 1, UdfExtent{1}));
     }},
};

TEST(HostileImages, AreAnsweredInTimeAndMemory)
{
    for (const HostileImage& hostile : kHostileImages) {
        SCOPED_TRACE(hostile.name);
        const TemporaryFolder folder;
        hostile.build().writeTo(folder / "disc.iso", hostile.sizeBytes);
        const std::string text = boundedRead(hostile.family, folder / "disc.iso");
        const std::string expected = *hostile.expected ? hostile.expected : wholeDisc(hostile.family);
        EXPECT_EQ(text.substr(0, expected.size()), expected);
    }
}

}  // namespace
