// Writes the inputs that fuzzing begins with, a folder for each target; those that are text are in fuzz/seeds.
//
//     write_seeds DIRECTORY
#include "fuzz/scratch_disc.h"
#include "monitor/helper_message.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

using namespace testsupport;  // NOLINT(google-build-using-namespace): a table of what it builds
using monitor::encodeMessage;
using monitor::MessageKind;

namespace {

Bytes operator+(Bytes left, const auto& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes le16(std::size_t value)
{
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value / 256)};
}

// The input that ScratchFolder makes the disc of.
Bytes filesOf(const DiscTree& disc, std::span<const char* const> paths)
{
    Bytes input;
    for (const TreeFile& file : disc.files()) {
        const auto path = std::ranges::find(paths, file.path);
        if (path == paths.end()) { continue; }
        input = input + Bytes{static_cast<std::uint8_t>(path - paths.begin())} + le16(file.bytes.size()) +
                file.bytes;
    }
    return input;
}

// The input that writeImage() makes the image of.
Bytes cellsOf(const SparseImage& image)
{
    const TemporaryFolder folder;
    image.writeTo(folder / "image");
    std::ifstream file(folder / "image", std::ios::binary);
    Bytes input = le16(image.sizeBytes() / fuzz::kCellSize);
    std::string cell(fuzz::kCellSize, '\0');
    for (std::size_t i = 0; file.read(cell.data(), fuzz::kCellSize); ++i) {
        if (cell.find_first_not_of('\0') != std::string::npos) { input = input + le16(i) + cell; }
    }
    return input;
}

// A playlist with every kind of stream that a table can list.
MplsSpec film()
{
    StnTableSpec stn = sampleStreams();
    stn.graphics.push_back({.pid = 0x1800, .attributes = textAttributes()});
    stn.pipGraphics = {{.pid = 0x1210, .attributes = graphicsAttributes()}};
    stn.interactiveGraphics = {{.attributes = graphicsAttributes("eng", 0x91)}};
    stn.secondaryAudio = {
        {.entryType = 2, .attributes = audioAttributes("eng", 0xA1), .primaryAudioRefs = {1}}};
    stn.secondaryVideo = {{.entryType = 3, .attributes = videoAttributes(), .pipGraphicsRefs = {1}}};
    stn.dolbyVision = {{.entryType = 4, .attributes = {0x24, 0x81, 0x12, 0x34}}};
    MplsSpec film;
    film.playItems = {sampleItem("00001", 60), {.clipName = "00002", .stn = stn}};
    film.playItems[0].furtherAngles = {{.clipName = "00002"}, {.clipName = "00003"}};
    film.marks = {{}, {.timeStamp = 450000}, {.refToPlayItemId = 1}};
    return film;
}

// A clip of several sequences, programs and entry points, of which those of one stream go backwards.
ClpiSpec clip()
{
    ClpiSpec clip;
    clip.atcSequences = {{.stcSequences = {{}, {.spnStcStart = 50, .presentationEndTime = 90000}}},
                         {.spnAtcStart = 80, .offsetStcId = 2}};
    clip.programs = {{.streams = {{.codingInfo = videoAttributes()},
                                  {.pid = 0x1100, .codingInfo = audioAttributes()},
                                  {.pid = 0x1200, .codingInfo = graphicsAttributes()},
                                  {.pid = 0x1800, .codingInfo = textAttributes()}}},
                     {}};
    clip.epStreams = {epStream({{0, 10}, {25600, 60}, {1U << 20U, 70}, {1U << 21U, 1U << 18U}}),
                      epStream({{512, 20}})};
    clip.epStreams[0].coarse.push_back({.refToEpFineId = 1, .pts = 2, .spn = 1U << 17U});
    return clip;
}

// A title set with a second title, of angles; its size is as it says.
Bytes titleSet(VtsSpec vts)
{
    vts.titles.push_back({{2, 1}});
    vts.pgcs.push_back(
        {.programMap = {1, 3}, .cells = {{0, 9, 0x50}, {10, 19, 0x90}, {20, 29, 0xD0}, {30, 39}}});
    return le16(0) + vts.build();
}

std::vector<std::pair<std::string, Bytes>> seeds()
{
    DiscTree disc = sampleBluray();  // with streams that are cut: nothing but their size is read
    for (const char* const stream :
         {"BDMV/STREAM/00001.m2ts", "BDMV/STREAM/00002.m2ts", "BDMV/STREAM/00003.m2ts"}) {
        disc.add(stream, Bytes(192));
    }
    const DiscTree tree =
        DiscTree().add("BDMV/index.bdmv", Bytes(10, 1)).add("BDMV/PLAYLIST/00002.mpls", Bytes(3000, 3));
    const auto image = [&tree](DiscForm form, const ImageSpec& spec = {}) {
        return cellsOf(tree.image(form, spec));
    };
    const Bytes questions = {0,    0, 0,    0, 0, 0,  // the start before 0
                             0,    0, 1,    0, 0, 1,  // of another sequence
                             0xFF, 0, 0x40, 0, 1, 0,  // the end
                             0,    1, 0,    9, 1, 2};
    const std::string path = "/disc/BDMV/STREAM/00001.m2ts";
    return {
        {"bluray_disc/sample", filesOf(disc, fuzz::kBlurayPaths)},
        {"bluray_image/iso", cellsOf(disc.image(DiscForm::Iso))},
        {"bluray_image/udf", cellsOf(disc.image(DiscForm::Udf))},
        {"bluray_image/udf250", cellsOf(disc.image(DiscForm::Udf250))},
        {"bluray_image/hybrid", image(DiscForm::Hybrid)},
        {"bluray_image/long",
         image(DiscForm::Udf, {.fileEntryTag = 266, .descriptorKind = 1, .blocksPerExtent = 1})},
        {"bluray_image/embedded", image(DiscForm::Udf, {.descriptorKind = 3})},
        {"bluray_image/one_copy", image(DiscForm::Udf250, {.descriptorKind = 3, .hasMetadataCopy = false})},
        {"bluray_image/map_first", image(DiscForm::Udf250, {.isMetadataMapFirst = true})},
        {"bluray_image/pieces", image(DiscForm::Udf250, {.blocksPerExtent = 1, .unrecordedBlocks = 3})},
        {"bluray_image/mirror", image(DiscForm::Udf250Mirror)},
        {"clpi/plain", ClpiSpec().build()},
        {"clpi/several", clip().build()},
        {"dvd_disc/sample", filesOf(sampleDvd(), fuzz::kDvdPaths)},
        {"dvd_image/iso", cellsOf(sampleDvd().image(DiscForm::Iso))},
        {"dvd_image/hybrid", cellsOf(sampleDvd().image(DiscForm::Hybrid))},
        {"ep_lookup/several", questions + clip().build()},
        {"helper_messages/watch", Bytes() + encodeMessage(MessageKind::Nothing, "") +
                                      encodeMessage(MessageKind::Opened, path) +
                                      encodeMessage(MessageKind::Closed, path)},
        {"helper_messages/failed", Bytes() + encodeMessage(MessageKind::Failed, "no rights") + Bytes(4)},
        {"mpls/no_items", MplsSpec{.playItems = {}, .marks = {}}.build()},
        {"mpls/film", film().build()},
        {"video_ts_ifo/sample", sampleDvdSpec().vmg.build()},
        {"vts_ifo/feature", titleSet(sampleDvdSpec().titleSets[1])},
        {"vts_ifo/extra", titleSet(sampleDvdSpec().titleSets[2])},
    };
}

}  // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) { return 2; }
    for (const auto& [name, bytes] : seeds()) {
        const std::filesystem::path path = std::filesystem::path(argv[1]) / name;
        std::filesystem::create_directories(path.parent_path());
        writeFile(path, bytes);
    }
    return 0;
}
