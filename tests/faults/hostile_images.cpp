#include "tests/faults/hostile_images.h"

#include "tests/support/dvd_spec.h"

#include <algorithm>
#include <utility>

using testsupport::Bytes;
using testsupport::DiscTree;
using testsupport::kUdfSector;
using testsupport::SparseImage;
using testsupport::UdfFileEntrySpec;
using testsupport::UdfFileIdentifierSpec;
using testsupport::UdfSpec;

namespace faults {

namespace {

constexpr std::uint32_t k16MiB = 16U << 20U;
constexpr std::size_t kSector = 2048;
constexpr std::uint32_t kPartition = 320;  // the first sector of a UDF image's partition
constexpr std::uint32_t kFarBlock = 5000;  // behind all that the small discs hold

void putBlock(SparseImage& image, std::uint32_t block, Bytes bytes)
{
    image.put((std::uint64_t{kPartition} + block) * kUdfSector, std::move(bytes));
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

}  // namespace

SparseImage withDirectory(const std::string& path, const std::vector<UdfFileIdentifierSpec>& identifiers,
                          UdfSpec spec)
{
    Bytes bytes;
    for (const UdfFileIdentifierSpec& identifier : identifiers) {
        const Bytes one = udfFileIdentifier(identifier);
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    const auto size = static_cast<std::uint32_t>(bytes.size());
    spec.nodes[path].informationLength = size;
    spec.nodes[path].descriptors = {{size, kFarBlock}};
    SparseImage image = blurayTree().udf(spec);
    putBlock(image, kFarBlock, std::move(bytes));
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
    Bytes streamNames;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::string name = std::to_string(1000000 + i);
        clipNames.push_back({.name = name + ".clpi", .block = entries});
        const Bytes one = testsupport::udfFileIdentifier({.name = name + ".m2ts", .block = entries});
        streamNames.insert(streamNames.end(), one.begin(), one.end());
    }
    UdfSpec spec;
    const auto streamNamesSize = static_cast<std::uint32_t>(streamNames.size());
    spec.nodes["BDMV/STREAM"].informationLength = streamNamesSize;
    spec.nodes["BDMV/STREAM"].descriptors = {{streamNamesSize, streams}};
    SparseImage image = withDirectory("BDMV/CLIPINF", clipNames, spec);
    putBlock(image, streams, std::move(streamNames));
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
    SparseImage image =
        disc.tree().iso({.records = {{"VIDEO_TS", {.block = kFarBlock, .sizeBytes = k16MiB}}}});
    image.put((kFarBlock + 4) * kSector, manyRecords(k16MiB - 4 * kSector, ".IFO", 0, 1));
    return image;
}

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

}  // namespace faults
