// A small Blu-ray disc for the tests of whole discs and for tools/run.sh: a short menu, the film in two clips with several
// tracks, and a decoy that plays the film's clips in the wrong order.
#pragma once

#include "tests/support/clpi_spec.h"
#include "tests/support/disc_tree.h"
#include "tests/support/mpls_spec.h"

namespace testsupport {

inline constexpr std::uint32_t kSecond = 45000;  // in the ticks of presentation times

// A clip of ten-second entry points, each 1,000 packets after the previous one.
[[nodiscard]] inline Bytes sampleClip(std::uint32_t seconds)
{
    std::vector<EntryPoint> points;
    for (std::uint32_t second = 0; second < seconds; second += 10) {
        points.push_back({second * kSecond / 256 * 256, second * 100});
    }
    ClpiSpec clip;
    clip.numberOfSourcePackets = seconds * 100;
    clip.atcSequences = {{.stcSequences = {{.presentationEndTime = seconds * kSecond}}}};
    clip.programs = {{.streams = {{.pid = 0x1011, .codingInfo = videoAttributes()}}}};
    clip.epStreams = {epStream(points)};
    return clip.build();
}

[[nodiscard]] inline StnTableSpec sampleStreams()
{
    return {
        .primaryVideo = {{0x1011, videoAttributes()}},
        .primaryAudio = {{0x1100, audioAttributes("eng", 0x83)}, {0x1101, audioAttributes("deu", 0x81, 3)}},
        .graphics = {{0x1200, graphicsAttributes("eng")}, {0x1201, graphicsAttributes("qqq")}}};
}

// A PlayItem that plays a clip from its start to `seconds`.
[[nodiscard]] inline PlayItemSpec sampleItem(const std::string& clipName, std::uint32_t seconds)
{
    return PlayItemSpec{.clipName = clipName, .outTime = seconds * kSecond, .stn = sampleStreams()};
}

// Playlists 00000 (menu), 00800 (film: 2 minutes, 3 marks) and 00801 (decoy); clips 00001 to 00003.
[[nodiscard]] inline DiscTree sampleBluray()
{
    PlayItemSpec menuItem{.clipName = "00003", .outTime = 30 * kSecond};
    menuItem.stn.primaryVideo = sampleStreams().primaryVideo;
    menuItem.stn.interactiveGraphics = {{0x1400, graphicsAttributes("eng", 0x91)}};
    const MplsSpec menu{.playItems = {menuItem}, .marks = {}};
    MplsSpec film{.playItems = {sampleItem("00001", 60), sampleItem("00002", 60)},
                  .marks = {{}, {.timeStamp = 30 * kSecond}, {.refToPlayItemId = 1}}};
    film.playItems[0].furtherAngles = {{.clipName = "00002"}};
    MplsSpec decoy = film;
    std::swap(decoy.playItems[0].clipName, decoy.playItems[1].clipName);

    Bytes index = patched(Bytes(78), {{8, 4, 40}, {68, 2, 2}});
    putText(index, 0, "INDX0200");
    Bytes identity(40);
    putText(identity, 0, "BDID0200");
    appendBe(identity, {{0x0000ABCD, 4}, {0x0001020304050607, 8}, {0x08090A0B0C0D0E0F, 8}});

    DiscTree tree;
    tree.add("BDMV/index.bdmv", index)
        .add("CERTIFICATE/id.bdmv", identity)
        .add("BDMV/PLAYLIST/00000.mpls", menu.build())
        .add("BDMV/PLAYLIST/00800.mpls", film.build())
        .add("BDMV/PLAYLIST/00801.mpls", decoy.build());
    for (const std::string clip : {"00001", "00002", "00003"}) {
        const std::uint32_t seconds = clip == "00003" ? 30 : 60;
        tree.add("BDMV/CLIPINF/" + clip + ".clpi", sampleClip(seconds));
        tree.add("BDMV/STREAM/" + clip + ".m2ts", Bytes(seconds * 100 * 192));  // of source packets
    }
    return tree;
}

}  // namespace testsupport
