// A small DVD: two titles in two title sets, so that titles, streams and title sets can be distinguished.
#pragma once

#include "tests/support/dvd_spec.h"

namespace testsupport {

// Title 1: PAL, 1:01:01, three chapters, 1,000 sectors, AC-3 English and MPEG German audio, German subtitles.
// Title 2: NTSC, 30 seconds, one chapter, 50 sectors, LPCM audio of no stated language.
[[nodiscard]] inline DvdSpec sampleDvdSpec()
{
    DvdSpec spec;
    spec.vmg = {.provider = "SAMPLE", .titles = {{.chapters = 3, .vtsn = 1}, {.chapters = 1, .vtsn = 2}}};
    spec.titleSets[1] = {.audio = {{.channels = 6}, {.codingMode = 2, .language = "de"}},
                         .subpicture = {{.language = "de"}},
                         .titles = {{{1, 1}, {1, 2}, {1, 3}}},
                         .pgcs = {{.time = {0x01, 0x01, 0x01, 0x40},
                                   .programMap = {1, 2, 3},
                                   .cells = {{0, 399, 0, {0x01, 0, 0, 0x40}},
                                             {400, 799, 0, {0, 0, 0x30, 0x40}},
                                             {800, 999, 0, {0, 0, 0x30, 0x40}}}}}};
    spec.titleSets[2] = {.video = {.system = 0},
                         .audio = {{.codingMode = 4, .languageType = 0, .channels = 1}},
                         .pgcs = {{.time = {0, 0, 0x30, 0xC0}, .cells = {CellSpec{0, 49}}}}};
    return spec;
}

[[nodiscard]] inline DiscTree sampleDvd()
{
    return sampleDvdSpec().tree();
}

}  // namespace testsupport
