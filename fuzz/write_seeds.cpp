// Writes the inputs that fuzzing begins with, a folder for each target; those that are text are in fuzz/seeds.
//
//     write_seeds DIRECTORY
#include "fuzz/scratch_image.h"
#include "monitor/helper_message.h"
#include "tests/bdmeta/rich_files.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

#include <cstdio>
#include <exception>

using namespace testsupport;  // NOLINT(google-build-using-namespace): a table of what it builds
using monitor::encodeMessage;
using monitor::MessageKind;

namespace {

Bytes operator+(Bytes left, const auto& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// The input that writeImage() makes the image of.
Bytes cellsOf(const SparseImage& image)
{
    const TemporaryFolder folder;
    image.writeTo(folder / "image");
    std::ifstream file(folder / "image", std::ios::binary);
    Bytes input = leBytes(image.sizeBytes() / fuzz::kCellSize, 2);
    std::string cell(fuzz::kCellSize, '\0');
    for (std::size_t i = 0; file.read(cell.data(), fuzz::kCellSize); ++i) {
        if (cell.find_first_not_of('\0') != std::string::npos) { input = input + leBytes(i, 2) + cell; }
    }
    return input;
}

std::vector<std::pair<std::string, Bytes>> seeds()
{
    DiscTree disc = sampleBluray();
    disc.add("BDMV/PLAYLIST/00002.mpls", patched(richPlaylist().build(), {{3000, 1, 0}}));  // of two blocks
    for (const std::string clip : {"00001", "00002", "00003"}) {
        disc.add("BDMV/STREAM/" + clip + ".m2ts", Bytes(192));  // nothing but the size is read
    }
    const auto image = [&disc](DiscForm form, const ImageSpec& spec = {}) {
        return cellsOf(disc.image(form, spec));
    };
    const Bytes questions = {0,    0, 0,    0, 0, 0,  // the start before 0
                             0,    0, 1,    0, 0, 1,  // of another sequence
                             0xFF, 0, 0x40, 0, 1, 0,  // the end
                             0,    1, 0,    9, 1, 2};
    return {
        {"bluray_disc/iso", image(DiscForm::Iso)},
        {"bluray_disc/udf", image(DiscForm::Udf)},
        {"bluray_disc/hybrid", image(DiscForm::Hybrid)},
        {"bluray_disc/long",
         image(DiscForm::Udf, {.fileEntryTag = 266, .descriptorKind = 1, .blocksPerExtent = 1})},
        {"bluray_disc/embedded", image(DiscForm::Udf, {.descriptorKind = 3})},
        {"bluray_disc/udf250", image(DiscForm::Udf250)},
        {"bluray_disc/one_copy", image(DiscForm::Udf250, {.descriptorKind = 3, .hasMetadataCopy = false})},
        {"bluray_disc/map_first", image(DiscForm::Udf250, {.isMetadataMapFirst = true})},
        {"bluray_disc/pieces", image(DiscForm::Udf250, {.blocksPerExtent = 1, .unrecordedBlocks = 3})},
        {"bluray_disc/mirror", image(DiscForm::Udf250Mirror)},
        {"dvd_disc/iso", cellsOf(sampleDvd().image(DiscForm::Iso))},
        {"dvd_disc/hybrid", cellsOf(sampleDvd().image(DiscForm::Hybrid))},
        {"ep_lookup/plain", questions + ClpiSpec().build()},
        {"ep_lookup/rich", questions + richClip().build()},
        {"helper_messages/watch", Bytes() + encodeMessage(MessageKind::Nothing, "") +
                                      encodeMessage(MessageKind::Opened, "/disc/00001.m2ts") +
                                      encodeMessage(MessageKind::Closed, "/disc/00001.m2ts")},
        {"helper_messages/failed", Bytes() + encodeMessage(MessageKind::Failed, "no rights") + Bytes(4)},
        {"mpls/no_items", MplsSpec{.playItems = {}, .marks = {}}.build()},
        {"mpls/rich", richPlaylist().build()},
    };
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) { return 2; }
    try {
        for (const auto& [name, bytes] : seeds()) {
            const std::filesystem::path path = std::filesystem::path(argv[1]) / name;
            std::filesystem::create_directories(path.parent_path());
            writeFile(path, bytes);
        }
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "write_seeds: %s\n", problem.what());
        return 1;
    }
    return 0;
}
