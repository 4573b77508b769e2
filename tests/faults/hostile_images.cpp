#include "tests/faults/hostile_images.h"

#include "tests/support/dvd_spec.h"

#include <algorithm>
#include <utility>

using testsupport::BuiltImage;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::kSector;
using testsupport::SparseImage;
using testsupport::UdfFileEntrySpec;
using testsupport::UdfFileIdentifierSpec;

namespace faults {

namespace {

constexpr std::uint32_t k16MiB = 16U << 20U;
constexpr std::uint32_t kFarBlock = 5000;  // behind all that the small discs hold

void putBlock(SparseImage& image, std::uint32_t block, Bytes bytes)
{
    image.put((std::uint64_t{testsupport::kUdfPartitionSector} + block) * kSector, std::move(bytes));
}

std::string fiveDigits(std::uint32_t number)
{
    return std::to_string(100000 + number).substr(1);
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

// Puts these identifiers in place of a directory's.
void putDirectory(BuiltImage& image, const std::string& path,
                  const std::vector<UdfFileIdentifierSpec>& identifiers, std::uint32_t block)
{
    Bytes bytes;
    for (const UdfFileIdentifierSpec& identifier : identifiers) {
        testsupport::append(bytes, udfFileIdentifier(identifier));
    }
    const auto size = static_cast<std::uint32_t>(bytes.size());
    image.put(image.placeOf(path).entry,
              testsupport::udfFileEntry(
                  {.fileType = 4, .informationLength = size, .descriptors = {{size, block}}}));
    putBlock(image, block, std::move(bytes));
}

}  // namespace

BuiltImage withDirectory(const std::string& path, const std::vector<UdfFileIdentifierSpec>& identifiers)
{
    BuiltImage image = blurayTree().image(DiscForm::Udf);
    putDirectory(image, path, identifiers, kFarBlock);
    return image;
}

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

SparseImage udfClips(std::uint32_t count)
{
    const std::uint32_t streams = kFarBlock + 10000;
    const std::uint32_t entries = streams + 10000;
    const Bytes clip = testsupport::ClpiSpec().build();
    const auto size = static_cast<std::uint32_t>(clip.size());
    std::vector<UdfFileIdentifierSpec> clipNames;
    std::vector<UdfFileIdentifierSpec> streamNames;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string name = std::to_string(1000000 + i);
        clipNames.push_back({.name = name + ".clpi", .block = entries});
        streamNames.push_back({.name = name + ".m2ts", .block = entries});
    }
    BuiltImage image = withDirectory("BDMV/CLIPINF", clipNames);
    putDirectory(image, "BDMV/STREAM", streamNames, streams);
    putBlock(image, entries,
             testsupport::udfFileEntry({.informationLength = size, .descriptors = {{size, entries + 1}}}));
    putBlock(image, entries + 1, clip);
    return image;
}

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

SparseImage titleSetsOfALongDirectory()
{
    testsupport::DvdSpec disc;
    disc.vmg.titles.clear();
    for (unsigned i = 0; i < 99; ++i) {
        disc.vmg.titles.push_back({.vtsn = static_cast<std::uint8_t>(i % 49 + 1)});
        disc.titleSets[i % 49 + 1] = {};
    }
    BuiltImage image = disc.tree().image(DiscForm::Iso, {.sectors = {{"VIDEO_TS", kFarBlock}}});
    image.putLe(image.placeOf("VIDEO_TS").record + 10, k16MiB, 4);
    image.put((kFarBlock + 4) * kSector, manyRecords(k16MiB - 4 * kSector, ".IFO", 0, 1));
    return image;
}

SparseImage isoNames(const std::string& path, const DiscTree& tree, const std::string& suffix,
                     const Bytes& file)
{
    BuiltImage image = tree.image(DiscForm::Iso, {.sectors = {{path, kFarBlock}}});
    image.putLe(image.placeOf(path).record + 10, k16MiB, 4);
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

}  // namespace faults
