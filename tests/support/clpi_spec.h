// Clip information files (.clpi), built by field. Lengths, counts and addresses follow from what a specification holds;
// a test that wants a lie patches the bytes.
#pragma once

#include "tests/support/bytes.h"

#include <string>

namespace testsupport {

struct StcSequenceSpec {
    std::uint16_t pcrPid = 0x1001;
    std::uint32_t spnStcStart = 0;
    std::uint32_t presentationStartTime = 0;  // 45 kHz ticks
    std::uint32_t presentationEndTime = 45000;
};

struct AtcSequenceSpec {
    std::uint32_t spnAtcStart = 0;
    std::uint8_t offsetStcId = 0;
    std::vector<StcSequenceSpec> stcSequences = {StcSequenceSpec{}};
};

struct ClipStreamSpec {
    std::uint16_t pid = 0x1011;
    Bytes codingInfo = {};  // the coding type first; mpls_spec.h has some
};

struct ProgramSpec {
    std::vector<ClipStreamSpec> streams = {};
};

struct EpFineSpec {
    std::uint32_t pts = 0;   // 11 bits
    std::uint32_t spn = 0;   // 17 bits
    std::uint32_t high = 1;  // 4 bits: angle change point and I-picture size, of no use to a lookup
};

struct EpCoarseSpec {
    std::uint32_t refToEpFineId = 0;
    std::uint32_t pts = 0;  // 14 bits
    std::uint32_t spn = 0;
};

struct EpStreamSpec {
    std::vector<EpCoarseSpec> coarse = {};
    std::vector<EpFineSpec> fine = {};
};

// An entry point as a player sees it: 45 kHz time (a multiple of 256) and source packet number.
struct EntryPoint {
    std::uint32_t time = 0;
    std::uint32_t packet = 0;
};

// The EP stream of these entry points; a coarse entry begins where the high parts of either change.
[[nodiscard]] EpStreamSpec epStream(const std::vector<EntryPoint>& entryPoints);

inline constexpr std::size_t kSequenceInfoStart = 60;

struct ClpiSpec {
    std::string version = "0200";
    std::uint8_t clipStreamType = 1;
    std::uint8_t applicationType = 1;
    std::uint32_t tsRecordingRate = 6000000;
    std::uint32_t numberOfSourcePackets = 100000;
    std::vector<AtcSequenceSpec> atcSequences = {AtcSequenceSpec{}};
    std::vector<ProgramSpec> programs = {ProgramSpec{}};
    std::vector<EpStreamSpec> epStreams = {};

    // The header, SequenceInfo(), ProgramInfo(), CPI(), and nothing behind them. The addresses of the sections are at 8,
    // 12 and 16.
    [[nodiscard]] Bytes build() const;
};

}  // namespace testsupport
