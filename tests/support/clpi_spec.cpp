#include "tests/support/clpi_spec.h"

namespace testsupport {

namespace {

// Begins a section whose address stands at `addressOffset`: a length of 4 bytes, to be set by endSection().
std::size_t beginSection(Bytes& file, std::size_t addressOffset)
{
    putBe(file, addressOffset, file.size(), 4);
    appendBe(file, {{0, 4}});
    return file.size();
}

void endSection(Bytes& file, std::size_t start)
{
    putBe(file, start - 4, file.size() - start, 4);
}

void appendSequenceInfo(Bytes& file, const std::vector<AtcSequenceSpec>& atcSequences)
{
    const std::size_t start = beginSection(file, 8);
    appendBe(file, {{0, 1}, {atcSequences.size(), 1}});
    for (const AtcSequenceSpec& atc : atcSequences) {
        appendBe(file, {{atc.spnAtcStart, 4}, {atc.stcSequences.size(), 1}, {atc.offsetStcId, 1}});
        for (const StcSequenceSpec& stc : atc.stcSequences) {
            appendBe(file, {{stc.pcrPid, 2}, {stc.spnStcStart, 4}});
            appendBe(file, {{stc.presentationStartTime, 4}, {stc.presentationEndTime, 4}});
        }
    }
    endSection(file, start);
}

void appendProgramInfo(Bytes& file, const std::vector<ProgramSpec>& programs)
{
    const std::size_t start = beginSection(file, 12);
    appendBe(file, {{0, 1}, {programs.size(), 1}});
    for (const ProgramSpec& program : programs) {
        appendBe(file, {{0, 4}, {0x100, 2}, {program.streams.size(), 1}, {0, 1}});
        for (const ClipStreamSpec& stream : program.streams) {
            appendBe(file, {{stream.pid, 2}, {stream.codingInfo.size(), 1}});
            append(file, stream.codingInfo);
        }
    }
    endSection(file, start);
}

void appendCpi(Bytes& file, const std::vector<EpStreamSpec>& streams)
{
    const std::size_t start = beginSection(file, 16);
    appendBe(file, {{1, 2}, {0, 1}, {streams.size(), 1}});
    const std::size_t map = start + 2;
    file.resize(file.size() + 12 * streams.size());
    for (std::size_t i = 0; i < streams.size(); ++i) {
        const auto& [coarseEntries, fineEntries] = streams[i];
        const std::size_t header = map + 2 + 12 * i;
        putBe(file, header, 0x1011, 2);
        putBe(file, header + 2, 1ULL << 34U | coarseEntries.size() << 18U | fineEntries.size(), 6);
        putBe(file, header + 8, file.size() - map, 4);
        appendBe(file, {{4 + 8 * coarseEntries.size(), 4}});  // where the fine entries begin
        for (const EpCoarseSpec& coarse : coarseEntries) {
            appendBe(file, {{coarse.refToEpFineId << 14U | coarse.pts, 4}, {coarse.spn, 4}});
        }
        for (const EpFineSpec& fine : fineEntries) {
            appendBe(file, {{fine.high << 28U | fine.pts << 17U | fine.spn, 4}});
        }
    }
    endSection(file, start);
}

}  // namespace

EpStreamSpec epStream(const std::vector<EntryPoint>& entryPoints)
{
    EpStreamSpec stream;
    for (const EntryPoint& point : entryPoints) {
        const std::uint32_t coarseTime = point.time >> 18U;  // with the bit that the fine time repeats
        const std::uint32_t coarsePacket = point.packet & ~0x1FFFFU;
        const bool isNew = stream.coarse.empty() || stream.coarse.back().pts >> 1U != coarseTime >> 1U ||
                           (stream.coarse.back().spn & ~0x1FFFFU) != coarsePacket;
        if (isNew) {
            stream.coarse.push_back(
                {static_cast<std::uint32_t>(stream.fine.size()), coarseTime, point.packet});
        }
        stream.fine.push_back({(point.time >> 8U) & 0x7FFU, point.packet & 0x1FFFFU});
    }
    return stream;
}

Bytes ClpiSpec::build() const
{
    Bytes file(kSequenceInfoStart);
    putText(file, 0, "HDMV" + version);
    putU8(file, 46, clipStreamType);
    putU8(file, 47, applicationType);
    putBe(file, 52, tsRecordingRate, 4);
    putBe(file, 56, numberOfSourcePackets, 4);
    appendSequenceInfo(file, atcSequences);
    appendProgramInfo(file, programs);
    appendCpi(file, epStreams);
    return file;
}

}  // namespace testsupport
