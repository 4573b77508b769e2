// A small DVD that the tests of the upper rooms open: two titles in two title sets, so that titles, streams
// and title sets can be told apart.
#pragma once

#include "tests/support/disc_tree.h"
#include "tests/support/ifo_spec.h"

namespace testsupport {

// Title 1: PAL, 1:01:01, three chapters, 1,000 sectors, AC-3 English and MPEG German audio, German subtitles.
[[nodiscard]] inline VtsSpec sampleFeature()
{
    VtsSpec vts;
    vts.audio = {{.codingMode = 0, .channels = 6, .language = "en"},
                 {.codingMode = 2, .channels = 2, .language = "de"}};
    vts.subpicture = {{.language = "de"}};
    vts.titles = {{.ptts = {{1, 1}, {1, 2}, {1, 3}}}};
    vts.pgcs = {{.time = playbackTime(1, 1, 1),
                 .programMap = {1, 2, 3},
                 .cells = {{0, 399, 0, playbackTime(1, 0, 0)},
                           {400, 799, 0, playbackTime(0, 0, 30)},
                           {800, 999, 0, playbackTime(0, 0, 30)}}}};
    return vts;
}

// Title 2: NTSC, 30 seconds, one chapter, 50 sectors, LPCM audio of no stated language.
[[nodiscard]] inline VtsSpec sampleExtra()
{
    VtsSpec vts;
    vts.video.system = 0;
    vts.audio = {{.codingMode = 4, .languageType = 0, .channels = 1}};
    vts.pgcs = {{.time = playbackTime(0, 0, 30, 0, FrameRate::Ntsc), .cells = {CellSpec{0, 49}}}};
    return vts;
}

[[nodiscard]] inline DiscTree sampleDvd()
{
    VmgSpec manager;
    manager.provider = "SAMPLE";
    manager.titles = {{.chapters = 3, .vtsn = 1}, {.chapters = 1, .vtsn = 2}};
    return DiscTree()
        .add("VIDEO_TS/VIDEO_TS.IFO", manager.build())
        .add("VIDEO_TS/VTS_01_0.IFO", sampleFeature().build())
        .add("VIDEO_TS/VTS_02_0.IFO", sampleExtra().build());
}

}  // namespace testsupport
