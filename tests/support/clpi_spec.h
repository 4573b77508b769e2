// Clip information files (.clpi), built by field. Lengths, counts and addresses follow from what a
// specification holds; an optional field, where set, stands in the file in place of the right value.
#pragma once

#include "tests/support/bytes.h"

#include <optional>
#include <string>

namespace testsupport {

// --- SequenceInfo()

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
    std::optional<std::uint8_t> numberOfStcSequences = std::nullopt;
};

// --- ProgramInfo()

struct ClipStreamSpec {
    std::uint16_t pid = 0x1011;
    Bytes codingInfo = {};  // the coding type first; mpls_spec.h has some
    std::optional<std::uint8_t> length = std::nullopt;
};

struct ProgramSpec {
    std::uint32_t spnProgramSequenceStart = 0;
    std::uint16_t programMapPid = 0x100;
    std::vector<ClipStreamSpec> streams = {};
    std::optional<std::uint8_t> numberOfStreams = std::nullopt;
};

// --- CPI()

struct EpFineSpec {
    std::uint32_t pts = 0;  // 11 bits
    std::uint32_t spn = 0;  // 17 bits
    // What stands before them and is of no use to a lookup.
    bool isAngleChangePoint = false;
    std::uint8_t iEndPositionOffset = 1;
};

struct EpCoarseSpec {
    std::uint32_t refToEpFineId = 0;
    std::uint32_t pts = 0;  // 14 bits
    std::uint32_t spn = 0;
};

struct EpStreamSpec {
    std::uint16_t pid = 0x1011;
    std::uint8_t epStreamType = 1;
    std::vector<EpCoarseSpec> coarse = {};
    std::vector<EpFineSpec> fine = {};

    std::optional<std::uint32_t> numberOfEpCoarseEntries = std::nullopt;
    std::optional<std::uint32_t> numberOfEpFineEntries = std::nullopt;
    std::optional<std::uint32_t> startAddress = std::nullopt;             // of its tables, in EP_map()
    std::optional<std::uint32_t> epFineTableStartAddress = std::nullopt;  // in its tables
};

// An entry point as a player sees it: 45 kHz time (a multiple of 256) and source packet number.
struct EntryPoint {
    std::uint32_t time = 0;
    std::uint32_t packet = 0;
};

// The EP stream of these entry points; a coarse entry begins where the high parts of either change.
[[nodiscard]] EpStreamSpec epStream(const std::vector<EntryPoint>& entryPoints);

struct ClpiSpec {
    std::string magic = "HDMV";
    std::string version = "0200";
    std::uint8_t clipStreamType = 1;
    std::uint8_t applicationType = 1;
    std::uint32_t tsRecordingRate = 6000000;
    std::uint32_t numberOfSourcePackets = 100000;
    std::vector<AtcSequenceSpec> atcSequences = {AtcSequenceSpec{}};
    std::vector<ProgramSpec> programs = {ProgramSpec{}};
    std::vector<EpStreamSpec> epStreams = {};

    std::optional<std::uint32_t> sequenceInfoAddress = std::nullopt;
    std::optional<std::uint32_t> sequenceInfoLength = std::nullopt;
    std::optional<std::uint8_t> numberOfAtcSequences = std::nullopt;
    std::optional<std::uint32_t> programInfoAddress = std::nullopt;
    std::optional<std::uint32_t> programInfoLength = std::nullopt;
    std::optional<std::uint8_t> numberOfPrograms = std::nullopt;
    std::optional<std::uint32_t> cpiAddress = std::nullopt;
    std::optional<std::uint32_t> cpiLength = std::nullopt;
    std::optional<std::uint8_t> numberOfEpStreams = std::nullopt;

    // The header, SequenceInfo(), ProgramInfo(), CPI(), and nothing behind them.
    [[nodiscard]] Bytes build() const;

    // Where sections begin, for tests that cut or patch the file.
    [[nodiscard]] std::size_t programInfoStart() const;
    [[nodiscard]] std::size_t cpiStart() const;

private:
    [[nodiscard]] Bytes sequenceInfo() const;
    [[nodiscard]] Bytes programInfo() const;
    [[nodiscard]] Bytes cpi() const;
};

inline constexpr std::size_t kSequenceInfoStart = 60;

}  // namespace testsupport
