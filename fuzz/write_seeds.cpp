// Writes the inputs that fuzzing begins with, a folder for each target: write_seeds DIRECTORY
#include "fuzz/disc_files.h"
#include "fuzz/image_cells.h"
#include "monitor/helper_message.h"
#include "tests/support/disc_tree.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>

namespace {

using testsupport::Bytes;
using testsupport::ClpiSpec;
using testsupport::DiscTree;
using testsupport::MplsSpec;
using testsupport::SparseImage;
using testsupport::StnStreamSpec;

void writeSeed(const std::filesystem::path& folder, const std::string& name, const Bytes& bytes)
{
    std::filesystem::create_directories(folder);
    testsupport::writeFile(folder / name, bytes);
}

void writeSeed(const std::filesystem::path& folder, const std::string& name, const std::string& text)
{
    writeSeed(folder, name, Bytes(text.begin(), text.end()));
}

// ---- Images ----

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
    const DiscTree tree = DiscTree()
                              .add("BDMV/index.bdmv", Bytes(10, 1))
                              .add("BDMV/PLAYLIST/00001.mpls", Bytes(10, 2))
                              .add("BDMV/PLAYLIST/00002.mpls", Bytes(3000, 3))
                              .add("BDMV/CLIPINF/00001.clpi", {});
    DiscTree disc = testsupport::sampleBluray();
    for (const char* clip : {"00001", "00002", "00003"}) {
        disc.add(std::string("BDMV/STREAM/") + clip + ".m2ts", Bytes(192));
    }
    writeImageSeed(folder, "disc_iso", disc.iso());
    writeImageSeed(folder, "disc_udf", disc.udf());
    writeImageSeed(folder, "disc_udf250", disc.udf250().image);
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

void writeDvdImages(const std::filesystem::path& folder)
{
    const DiscTree disc = testsupport::sampleDvd();
    writeImageSeed(folder, "iso", disc.iso());
    writeImageSeed(folder, "hybrid", disc.hybrid());
    writeImageSeed(folder, "no_files", DiscTree().add("VIDEO_TS/README", Bytes(10, 1)).iso());
}

// ---- Files of a disc ----

// Every kind of stream that a table can list.
testsupport::StnTableSpec allStreams()
{
    testsupport::StnTableSpec stn = testsupport::sampleStreams();
    stn.primaryVideo.push_back({.pid = 0x1012, .attributes = {0x24, 0x81, 0x12, 0x34}});
    stn.graphics.push_back({.pid = 0x1800, .attributes = testsupport::textAttributes()});
    stn.pipGraphics = {{.pid = 0x1210, .attributes = testsupport::graphicsAttributes()}};
    stn.interactiveGraphics = {{.pid = 0x1400, .attributes = testsupport::graphicsAttributes("eng", 0x91)}};
    stn.secondaryAudio = {{.entryType = 2,
                           .pid = 0x1A00,
                           .attributes = testsupport::audioAttributes("eng", 0xA1),
                           .primaryAudioRefs = {1, 2}}};
    stn.secondaryVideo = {{.entryType = 3,
                           .pid = 0x1B00,
                           .attributes = testsupport::videoAttributes(),
                           .primaryAudioRefs = {1},
                           .pipGraphicsRefs = {1}}};
    stn.dolbyVision = {{.entryType = 4, .pid = 0x1015, .attributes = {0x24, 0x81, 0x12, 0x34}}};
    return stn;
}

void writePlaylists(const std::filesystem::path& folder)
{
    writeSeed(folder, "plain", MplsSpec().build());
    writeSeed(folder, "no_items", MplsSpec{.playItems = {}, .marks = {}}.build());
    MplsSpec film;
    film.playItems = {testsupport::sampleItem("00001", 60), {.clipName = "00002", .stn = allStreams()}};
    film.playItems[0].furtherAngles = {{.clipName = "00002"}, {.clipName = "00003"}};
    film.marks = {{}, {.timeStamp = 450000}, {.refToPlayItemId = 1}};
    film.appInfoLength = 18;
    writeSeed(folder, "film", film.build());
}

ClpiSpec severalSequences()
{
    ClpiSpec clip;
    clip.atcSequences = {{.stcSequences = {{}, {.spnStcStart = 50, .presentationEndTime = 90000}}},
                         {.spnAtcStart = 80, .offsetStcId = 2}};
    clip.programs = {{.streams = {{.codingInfo = testsupport::videoAttributes()},
                                  {.pid = 0x1100, .codingInfo = testsupport::audioAttributes()},
                                  {.pid = 0x1200, .codingInfo = testsupport::graphicsAttributes()},
                                  {.pid = 0x1800, .codingInfo = testsupport::textAttributes()}}},
                     {}};
    clip.epStreams = {testsupport::epStream({{0, 10}, {25600, 60}, {1U << 20U, 70}, {1U << 21U, 1U << 18U}}),
                      testsupport::epStream({{512, 20}})};
    return clip;
}

void writeClips(const std::filesystem::path& folder)
{
    writeSeed(folder, "plain", ClpiSpec().build());
    writeSeed(folder, "sample", testsupport::sampleClip(60));
    writeSeed(folder, "several", severalSequences().build());
}

void writeEpLookups(const std::filesystem::path& folder)
{
    const Bytes questions = {0,    0, 0,    0, 0, 0,  // the start before 0
                             0,    0, 1,    0, 0, 1,  // of another sequence
                             0xFF, 0, 0x40, 0, 1, 0,  // the end
                             0,    1, 0,    9, 1, 2};
    ClpiSpec clip = severalSequences();
    const auto write = [&folder, &questions](const std::string& name, const ClpiSpec& spec) {
        Bytes input = questions;
        testsupport::putBytes(input, input.size(), spec.build());
        writeSeed(folder, name, input);
    };
    write("several", clip);
    clip.epStreams[0].coarse.push_back({.refToEpFineId = 1, .pts = 2, .spn = 1U << 17U});  // backwards
    write("backwards", clip);
    clip.epStreams[1].startAddress = clip.epStreams.size() * 12 + 2;
    write("shared", clip);
}

void writeManagers(const std::filesystem::path& folder)
{
    writeSeed(folder, "one", testsupport::VmgSpec().build());
    testsupport::VmgSpec manager;
    manager.provider = "SAMPLE";
    manager.titles = {
        {.chapters = 3, .vtsn = 1}, {.vtsn = 2}, {.playbackType = 0x7C, .angles = 3, .vtsn = 1}};
    writeSeed(folder, "three", manager.build());
}

void writeTitleSets(const std::filesystem::path& folder)
{
    testsupport::VtsSpec angles = testsupport::sampleFeature();
    angles.titles = {{.ptts = {{1, 1}, {1, 2}}}, {.ptts = {{2, 1}}}};
    angles.pgcs = {{.programMap = {1, 3}, .cells = {{0, 9, 0x50}, {10, 19, 0x90}, {20, 29, 0xD0}, {30, 39}}},
                   {.time = testsupport::playbackTime(0, 5, 0, 12, testsupport::FrameRate::Ntsc)}};
    for (const auto& [name, spec] : {std::pair("feature", testsupport::sampleFeature()),
                                     {"extra", testsupport::sampleExtra()},
                                     {"angles", angles}}) {
        Bytes input(2);
        testsupport::putBytes(input, 2, spec.build());
        writeSeed(folder, name, input);
    }
}

// ---- What the service and a helper send ----

void writeReplies(const std::filesystem::path& root)
{
    const std::string data =
        R"({"disc_name": "A \u00fc disc", "paths": ["00800.mpls", 7], "titles": [{"id": 800, "type": 1, )"
        R"("path": 0, "name": "Film", "note": "", "first_chapter": 1, "last_chapter": 12.5}, null]})";
    std::string quoted;
    for (const char c : data) {
        if (c == '"' || c == '\\') { quoted += '\\'; }
        quoted += c;
    }
    const std::string list =
        R"([{"UID": 3, "Disc ID": "17", "Language Code": "en", "Added By Username": "ada", )"
        R"("Added By UID": 1, "Data": ")" +
        quoted + R"("}, 5, {}])";
    writeSeed(root / "configuration_data", "data", data);
    writeSeed(root / "configurations", "list", list);
    writeSeed(root / "configurations", "empty", "[]");
    writeSeed(root / "find_reply", "found", R"({"Disc ID": 17, "Configurations": )" + list + "}");
    writeSeed(root / "find_reply", "unknown", R"({"Disc ID": null})");
    writeSeed(root / "user_reply", "user", R"({"UID": 17, "Username": "ada", "LatestVersion": "1.3.0"})");
    writeSeed(root / "user_reply", "texts", R"({"UID": "-17", "Username": "\u00e9"})");
}

void writeHelperMessages(const std::filesystem::path& folder)
{
    using monitor::encodeMessage;
    using monitor::MessageKind;
    const std::string path = "/disc/BDMV/STREAM/00001.m2ts";
    writeSeed(folder, "watch",
              encodeMessage(MessageKind::Nothing, "") + encodeMessage(MessageKind::Opened, path) +
                  encodeMessage(MessageKind::Closed, path));
    writeSeed(folder, "failed", encodeMessage(MessageKind::Failed, "no rights") + "rest");
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
        writeSeed(root / "bluray_disc", "sample",
                  fuzz::inputOf(testsupport::sampleBluray(), fuzz::kBlurayPaths));
        writeBlurayImages(root / "bluray_image");
        writeClips(root / "clpi");
        writeSeed(root / "dvd_disc", "sample", fuzz::inputOf(testsupport::sampleDvd(), fuzz::kDvdPaths));
        writeDvdImages(root / "dvd_image");
        writeEpLookups(root / "ep_lookup");
        writeHelperMessages(root / "helper_messages");
        writePlaylists(root / "mpls");
        writeReplies(root);
        writeManagers(root / "video_ts_ifo");
        writeTitleSets(root / "vts_ifo");
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "write_seeds: %s\n", problem.what());
        return 1;
    }
    return 0;
}
