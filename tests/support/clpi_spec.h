// Clip information files (.clpi), built by field. Lengths, counts and addresses follow from the fields; a test that
// wants a lie patches the bytes.
#pragma once

#include "tests/support/bytes.h"

#include <string>

namespace testsupport {

struct StcSequenceSpec {
    std::uint32_t spnStcStart = 0;
    std::uint32_t presentationStartTime = 0;  // 45 kHz ticks
    std::uint32_t presentationEndTime = 45000;
};
struct AtcSequenceSpec {
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
[[nodiscard]] inline EpStreamSpec epStream(const std::vector<EntryPoint>& entryPoints)
{
    EpStreamSpec stream;
    for (const auto& [time, packet] : entryPoints) {
        // Bit 18 of the time is the lowest of a coarse entry and also the highest of a fine one.
        if (stream.coarse.empty() || stream.coarse.back().pts >> 1U != time >> 19U ||
            stream.coarse.back().spn >> 17U != packet >> 17U) {
            stream.coarse.push_back({static_cast<std::uint32_t>(stream.fine.size()), time >> 18U, packet});
        }
        stream.fine.push_back({time >> 8U & 0x7FFU, packet & 0x1FFFFU});
    }
    return stream;
}

struct ClpiSpec {
    std::uint8_t clipStreamType = 1;
    std::uint8_t applicationType = 1;
    std::uint32_t tsRecordingRate = 6000000;
    std::uint32_t numberOfSourcePackets = 100000;
    std::vector<AtcSequenceSpec> atcSequences = {AtcSequenceSpec{}};
    std::vector<ProgramSpec> programs = {ProgramSpec{}};
    std::vector<EpStreamSpec> epStreams = {};

    // The header, SequenceInfo(), ProgramInfo(), CPI(), and nothing after them. The addresses of the sections are at 8,
    // 12 and 16.
    [[nodiscard]] Bytes build() const
    {
        Bytes file(46);
        putText(file, 0, "HDMV0200");
        appendBe(file, {{clipStreamType, 1}, {applicationType, 1}, {0, 4}});
        appendBe(file, {{tsRecordingRate, 4}, {numberOfSourcePackets, 4}});
        std::size_t address = 8;
        for (const Bytes& section : {sequenceInfo(), programInfo(), cpi()}) {
            putBe(file, address, file.size(), 4);
            appendBe(file, {{section.size(), 4}});
            append(file, section);
            address += 4;
        }
        return file;
    }

private:
    [[nodiscard]] Bytes sequenceInfo() const
    {
        Bytes section = beBytes(atcSequences.size(), 2);
        for (const AtcSequenceSpec& atc : atcSequences) {
            appendBe(section, {{0, 4}, {atc.stcSequences.size(), 1}, {atc.offsetStcId, 1}});
            for (const StcSequenceSpec& stc : atc.stcSequences) {
                appendBe(section, {{0x1001, 2}, {stc.spnStcStart, 4}});
                appendBe(section, {{stc.presentationStartTime, 4}, {stc.presentationEndTime, 4}});
            }
        }
        return section;
    }

    [[nodiscard]] Bytes programInfo() const
    {
        Bytes section = beBytes(programs.size(), 2);
        for (const ProgramSpec& program : programs) {
            appendBe(section, {{0, 4}, {0x100, 2}, {program.streams.size(), 1}, {0, 1}});
            for (const ClipStreamSpec& stream : program.streams) {
                appendBe(section, {{stream.pid, 2}, {stream.codingInfo.size(), 1}});
                append(section, stream.codingInfo);
            }
        }
        return section;
    }

    [[nodiscard]] Bytes cpi() const
    {
        Bytes section = patched(Bytes(4 + 12 * epStreams.size()), {{1, 1, 1}, {3, 1, epStreams.size()}});
        std::size_t header = 4;
        for (const auto& [coarse, fine] : epStreams) {
            putBe(section, header, 0x1011, 2);
            putBe(section, header + 2, 1ULL << 34U | coarse.size() << 18U | fine.size(), 6);
            putBe(section, header + 8, section.size() - 2, 4);  // from the EP map on
            appendBe(section, {{4 + 8 * coarse.size(), 4}});    // where the fine entries begin
            for (const EpCoarseSpec& entry : coarse) {
                appendBe(section, {{entry.refToEpFineId << 14U | entry.pts, 4}, {entry.spn, 4}});
            }
            for (const EpFineSpec& entry : fine) {
                appendBe(section, {{entry.high << 28U | entry.pts << 17U | entry.spn, 4}});
            }
            header += 12;
        }
        return section;
    }
};

}  // namespace testsupport
