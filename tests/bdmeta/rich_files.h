// A playlist and a clip information file with some of all that they can hold.
#pragma once

#include "tests/support/clpi_spec.h"
#include "tests/support/mpls_spec.h"

#include <array>

namespace testsupport {

inline StnStreamSpec video(std::uint16_t pid, std::uint8_t coding = 27, std::uint8_t format = 6)
{
    return {.pid = pid, .attributes = videoAttributes(coding, format)};
}
inline StnStreamSpec audio(std::uint16_t pid, const std::string& language = "eng", std::uint8_t coding = 0x81)
{
    return {.pid = pid, .attributes = audioAttributes(language, coding)};
}
inline StnStreamSpec graphics(std::uint16_t pid, const std::string& language = "eng")
{
    return {.pid = pid, .attributes = graphicsAttributes(language)};
}

inline constexpr std::array kStreamGroups = {
    &StnTableSpec::primaryVideo,   &StnTableSpec::primaryAudio,        &StnTableSpec::graphics,
    &StnTableSpec::pipGraphics,    &StnTableSpec::interactiveGraphics, &StnTableSpec::secondaryAudio,
    &StnTableSpec::secondaryVideo, &StnTableSpec::dolbyVision};

// Two streams in each group, 11 and 12 in the first, those of the secondary groups with references.
inline StnTableSpec fullTable()
{
    StnTableSpec stn;
    std::uint16_t pid = 1;
    for (const auto group : kStreamGroups) {
        pid = static_cast<std::uint16_t>(pid + 10);
        stn.*group = {video(pid), audio(static_cast<std::uint16_t>(pid + 1))};
    }
    stn.secondaryAudio[0].primaryAudioRefs = {0, 1, 2};
    stn.secondaryVideo[0].primaryAudioRefs = {1, 2};
    stn.secondaryVideo[0].pipGraphicsRefs = {7};
    return stn;
}

// PlayItems with still time, with angles and with times that wrap around; two marks.
inline MplsSpec richPlaylist()
{
    MplsSpec spec{.appInfoLength = 17, .playbackType = 3, .appInfoFlags = 0x40, .numberOfSubPaths = 3};
    spec.playItems = {{.clipName = "00007",
                       .connectionCondition = 6,
                       .refToStcId = 2,
                       .inTime = 90000,
                       .outTime = 180000,
                       .randomAccess = true,
                       .stillMode = 1,
                       .stillTime = 300,
                       .stn = fullTable()},
                      {.clipName = "00008",
                       .inTime = 1,
                       .furtherAngles = {{"00009", "M2TS", 4}, {"00010", "FMTS", 5}},
                       .stn = {.primaryVideo = {video(0x1012)}}},
                      {.inTime = 45044, .outTime = 0}};
    spec.marks = {
        {.timeStamp = 90000},
        {.markType = 2, .refToPlayItemId = 1, .timeStamp = 5, .entryEsPid = 0x1100, .duration = 77}};
    return spec;
}

// Two programs, two ATC sequences, the longest presentation in the second, and two streams of entry points, of which
// those of the first go back.
inline ClpiSpec richClip()
{
    ClpiSpec spec{.clipStreamType = 3, .applicationType = 6, .tsRecordingRate = 12345678};
    spec.numberOfSourcePackets = 0x89ABCDEF;
    spec.programs = {
        {.streams = {{0x1011, {36, 0x81, 0b0101'1010, 0xC7}}, {0x1100, audio(0, "jpn").attributes}}},
        {.streams = {{0x1200, graphics(0).attributes}}}};
    spec.atcSequences = {{.stcSequences = {{.presentationStartTime = 1000, .presentationEndTime = 46000}}},
                         {.offsetStcId = 2,
                          .stcSequences = {{.spnStcStart = 50, .presentationEndTime = 90044},
                                           {.presentationStartTime = 5, .presentationEndTime = 4}}}};
    spec.epStreams = {epStream({{0, 10}, {25600, 60}, {1U << 20U, 70}, {1U << 21U, 1U << 18U}}),
                      epStream({{512, 20}})};
    spec.epStreams[0].coarse.push_back({.refToEpFineId = 1, .pts = 2, .spn = 1U << 17U});
    return spec;
}

}  // namespace testsupport
