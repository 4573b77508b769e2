#include "tests/support/clpi_spec.h"

namespace testsupport {

namespace {

constexpr std::size_t kSectionHeader = 6;
constexpr std::size_t kEpMapHeader = 2;
constexpr std::size_t kEpStreamHeader = 12;

std::uint8_t size8(std::size_t size)
{
    return static_cast<std::uint8_t>(size);
}

std::uint32_t size32(std::size_t size)
{
    return static_cast<std::uint32_t>(size);
}

Bytes epTables(const EpStreamSpec& stream)
{
    Bytes tables(4);
    for (const EpCoarseSpec& coarse : stream.coarse) {
        putBe32(tables, tables.size(), coarse.refToEpFineId << 14U | coarse.pts);
        putBe32(tables, tables.size(), coarse.spn);
    }
    putBe32(tables, 0, stream.epFineTableStartAddress.value_or(size32(tables.size())));
    for (const EpFineSpec& fine : stream.fine) {
        putBe32(tables, tables.size(),
                (fine.isAngleChangePoint ? 1U << 31U : 0U) | std::uint32_t{fine.iEndPositionOffset} << 28U |
                    fine.pts << 17U | fine.spn);
    }
    return tables;
}

Bytes epMap(const std::vector<EpStreamSpec>& streams)
{
    Bytes map(kEpMapHeader + streams.size() * kEpStreamHeader);
    for (std::size_t i = 0; i < streams.size(); ++i) {
        const EpStreamSpec& stream = streams[i];
        const std::size_t header = kEpMapHeader + i * kEpStreamHeader;
        const std::uint64_t coarseCount =
            stream.numberOfEpCoarseEntries.value_or(size32(stream.coarse.size()));
        const std::uint64_t fineCount = stream.numberOfEpFineEntries.value_or(size32(stream.fine.size()));
        putBe16(map, header, stream.pid);
        putBe(map, header + 2, std::uint64_t{stream.epStreamType} << 34U | coarseCount << 18U | fineCount, 6);
        putBe32(map, header + 8, stream.startAddress.value_or(size32(map.size())));
        putBytes(map, map.size(), epTables(stream));
    }
    return map;
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
        if (isNew) { stream.coarse.push_back({size32(stream.fine.size()), coarseTime, point.packet}); }
        stream.fine.push_back({(point.time >> 8U) & 0x7FFU, point.packet & 0x1FFFFU});
    }
    return stream;
}

Bytes ClpiSpec::sequenceInfo() const
{
    Bytes section(kSectionHeader);
    putU8(section, 5, numberOfAtcSequences.value_or(size8(atcSequences.size())));
    for (const AtcSequenceSpec& atc : atcSequences) {
        putBe32(section, section.size(), atc.spnAtcStart);
        putU8(section, section.size(), atc.numberOfStcSequences.value_or(size8(atc.stcSequences.size())));
        putU8(section, section.size(), atc.offsetStcId);
        for (const StcSequenceSpec& stc : atc.stcSequences) {
            putBe16(section, section.size(), stc.pcrPid);
            putBe32(section, section.size(), stc.spnStcStart);
            putBe32(section, section.size(), stc.presentationStartTime);
            putBe32(section, section.size(), stc.presentationEndTime);
        }
    }
    putBe32(section, 0, sequenceInfoLength.value_or(size32(section.size() - 4)));
    return section;
}

Bytes ClpiSpec::programInfo() const
{
    Bytes section(kSectionHeader);
    putU8(section, 5, numberOfPrograms.value_or(size8(programs.size())));
    for (const ProgramSpec& program : programs) {
        putBe32(section, section.size(), program.spnProgramSequenceStart);
        putBe16(section, section.size(), program.programMapPid);
        putU8(section, section.size(), program.numberOfStreams.value_or(size8(program.streams.size())));
        putU8(section, section.size(), 0);
        for (const ClipStreamSpec& stream : program.streams) {
            putBe16(section, section.size(), stream.pid);
            putU8(section, section.size(), stream.length.value_or(size8(stream.codingInfo.size())));
            putBytes(section, section.size(), stream.codingInfo);
        }
    }
    putBe32(section, 0, programInfoLength.value_or(size32(section.size() - 4)));
    return section;
}

Bytes ClpiSpec::cpi() const
{
    const Bytes map = epMap(epStreams);
    Bytes section(6);
    putBe32(section, 0, cpiLength.value_or(size32(map.size() + 2)));
    putBe16(section, 4, 1);
    putBytes(section, 6, map);
    putU8(section, 7, numberOfEpStreams.value_or(size8(epStreams.size())));
    return section;
}

std::size_t ClpiSpec::programInfoStart() const
{
    return kSequenceInfoStart + sequenceInfo().size();
}

std::size_t ClpiSpec::cpiStart() const
{
    return programInfoStart() + programInfo().size();
}

Bytes ClpiSpec::build() const
{
    Bytes file(kSequenceInfoStart);
    putText(file, 0, magic);
    putText(file, 4, version);
    putBe32(file, 8, sequenceInfoAddress.value_or(size32(kSequenceInfoStart)));
    putBe32(file, 12, programInfoAddress.value_or(size32(programInfoStart())));
    putBe32(file, 16, cpiAddress.value_or(size32(cpiStart())));
    putU8(file, 46, clipStreamType);
    putU8(file, 47, applicationType);
    putBe32(file, 52, tsRecordingRate);
    putBe32(file, 56, numberOfSourcePackets);
    putBytes(file, file.size(), sequenceInfo());
    putBytes(file, file.size(), programInfo());
    putBytes(file, file.size(), cpi());
    return file;
}

}  // namespace testsupport
