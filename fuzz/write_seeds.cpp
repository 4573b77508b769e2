// Writes the inputs that fuzzing begins with, a folder for each target: write_seeds DIRECTORY
#include "fuzz/image_cells.h"
#include "tests/support/disc_tree.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

using testsupport::Bytes;
using testsupport::SparseImage;

void writeSeed(const std::filesystem::path& folder, const std::string& name, const Bytes& bytes)
{
    std::filesystem::create_directories(folder);
    testsupport::writeFile(folder / name, bytes);
}

// ---- bluray_image ----

void writeImageSeed(const std::filesystem::path& folder, const std::string& name, const SparseImage& image)
{
    const testsupport::TemporaryFolder scratch;
    image.writeTo(scratch / "image");
    Bytes bytes(image.sizeBytes());
    std::ifstream(scratch / "image", std::ios::binary)
        .read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    writeSeed(folder, name, fuzz::cellsOf(bytes));
}

void writeBlurayImages(const std::filesystem::path& folder)
{
    const testsupport::DiscTree tree = testsupport::DiscTree()
                                           .add("BDMV/index.bdmv", Bytes(10, 1))
                                           .add("BDMV/PLAYLIST/00001.mpls", Bytes(10, 2))
                                           .add("BDMV/PLAYLIST/00002.mpls", Bytes(3000, 3))
                                           .add("BDMV/CLIPINF/00001.clpi", {});
    writeImageSeed(folder, "iso", tree.iso());
    writeImageSeed(folder, "udf_short", tree.udf());
    writeImageSeed(folder, "udf_long",
                   tree.udf({.fileEntryTag = 266, .descriptorKind = 1, .blocksPerExtent = 1}));
    writeImageSeed(folder, "udf_embedded", tree.udf({.descriptorKind = 3}));
    writeImageSeed(folder, "hybrid", tree.hybrid());
    writeImageSeed(folder, "udf250", tree.udf250().image);
    writeImageSeed(folder, "udf250_one_copy",
                   tree.udf250({.duplicateMetadata = false, .directoryKind = 3}).image);
    writeImageSeed(folder, "udf250_map_first", tree.udf250({.isMetadataMapFirst = true}).image);
    writeImageSeed(
        folder, "udf250_pieces",
        tree.udf250({.metadataBlocksPerExtent = 1, .unrecordedBlocks = 3, .directoryKind = 1}).image);
    testsupport::Udf250Image mirror = tree.udf250();
    writeImageSeed(folder, "udf250_mirror", mirror.wipe(mirror.metadataFileSector).image);
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fputs("usage: write_seeds DIRECTORY\n", stderr);
        return 2;
    }
    try {
        const std::filesystem::path root = argv[1];
        writeBlurayImages(root / "bluray_image");
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "write_seeds: %s\n", problem.what());
        return 1;
    }
    return 0;
}
