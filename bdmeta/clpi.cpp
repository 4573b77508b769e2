#include "bdmeta/clpi.h"

#include "bdmeta/field_text.h"
#include "bdmeta/stream_attributes.h"

#include <algorithm>

namespace bdmeta {

using discio::ByteReader;

namespace {

constexpr std::string_view kMagic = "HDMV";
constexpr std::size_t kMinimumSize = 60;
constexpr std::size_t kSectionHeaderSize = 6;  // of ProgramInfo() and of SequenceInfo()
constexpr std::size_t kLengthFieldSize = 4;

constexpr std::uint64_t kTicksPerSecond = 45000;

struct Header {
    std::uint32_t sequenceInfoAddress = 0;
    std::uint32_t programInfoAddress = 0;
};

Header parseHeader(ByteReader file, BlurayClip& clip)
{
    Header header;
    file.skip(kMagic.size());
    clip.version = readText<4>(file);
    header.sequenceInfoAddress = file.be32();
    header.programInfoAddress = file.be32();
    file.seek(46);
    clip.clipStreamType = file.u8();
    clip.applicationType = file.u8();
    file.skip(4);
    clip.tsRecordingRate = file.be32();
    clip.sourcePacketCount = file.be32();
    return header;
}

// Returns a reader over a section and its length field; a failed reader if the section has no address or is not all in
// the file.
ByteReader section(ByteReader file, std::uint32_t address)
{
    if (address == 0) { return file.slice(file.size(), 1); }
    file.seek(address);
    const std::size_t length = file.be32();
    return file.slice(address, kLengthFieldSize + length);
}

bool parseProgram(ByteReader& reader, std::vector<BlurayStream>& streams)
{
    reader.skip(6);
    const unsigned streamCount = reader.u8();
    reader.skip(1);
    for (unsigned i = 0; i < streamCount && reader.ok(); ++i) {
        const std::uint16_t pid = reader.be16();
        const std::size_t length = reader.u8();
        const auto attributes = reader.bytes(length);
        if (attributes.empty()) { return false; }
        decodeStreamAttributes(streams.emplace_back(), pid, attributes, true);
    }
    return reader.ok();
}

bool parseProgramInfo(ByteReader reader, BlurayClip& clip)
{
    if (!reader.ok() || reader.size() < kSectionHeaderSize) { return false; }
    reader.skip(5);
    clip.programCount = reader.u8();
    for (unsigned i = 0; i < clip.programCount; ++i) {
        if (!parseProgram(reader, clip.streams)) { return false; }
    }
    clip.streams.shrink_to_fit();
    return true;
}

// Counts the STC sequences up to the first that is not whole.
void parseSequenceInfo(ByteReader reader, BlurayClip& clip)
{
    reader.skip(5);
    const unsigned atcCount = reader.u8();
    for (unsigned atc = 0; atc < atcCount && reader.ok(); ++atc) {
        reader.skip(4);
        const unsigned stcCount = reader.u8();
        reader.skip(1);
        for (unsigned stc = 0; stc < stcCount; ++stc) {
            reader.skip(6);
            const std::uint64_t start = reader.be32();
            const std::uint64_t end = reader.be32();
            if (!reader.ok()) { return; }
            if (end < start) { continue; }
            clip.maxStcDurationMs = std::max(clip.maxStcDurationMs, (end - start) * 1000 / kTicksPerSecond);
        }
    }
}

}  // namespace

std::optional<BlurayClip> parseClipInfoBytes(std::span<const std::uint8_t> bytes)
{
    const ByteReader file(bytes);
    ByteReader start = file;
    if (bytes.size() < kMinimumSize || readText<4>(start).view() != kMagic) { return std::nullopt; }
    BlurayClip clip;
    const Header header = parseHeader(file, clip);
    if (!parseProgramInfo(section(file, header.programInfoAddress), clip)) { return std::nullopt; }
    parseSequenceInfo(section(file, header.sequenceInfoAddress), clip);
    return clip;
}

}  // namespace bdmeta
