#include "tests/support/mpls_spec.h"

namespace testsupport {

namespace {

constexpr std::size_t kPlayListStart = 64;
constexpr std::size_t kPlayListHeader = 10;
constexpr std::size_t kStnHeader = 16;
constexpr std::size_t kMarkHeader = 6;
constexpr std::size_t kMarkSize = 14;

std::uint8_t size8(std::size_t size)
{
    return static_cast<std::uint8_t>(size);
}

Bytes nibbles(std::uint8_t codingType, unsigned high, unsigned low)
{
    return {codingType, static_cast<std::uint8_t>(high << 4U | low)};
}

Bytes streamEntry(const StnStreamSpec& stream)
{
    Bytes entry(9);
    entry[0] = stream.entryType;
    switch (stream.entryType) {
    case 1:
        putBe16(entry, 1, stream.pid);
        break;
    case 2:
        entry[1] = stream.refToSubPathId;
        entry[2] = stream.refToSubClipId;
        putBe16(entry, 3, stream.pid);
        break;
    default:
        entry[1] = stream.refToSubPathId;
        putBe16(entry, 2, stream.pid);
        break;
    }
    return entry;
}

void appendReferences(Bytes& bytes, const Bytes& references)
{
    append(bytes, {size8(references.size()), 0});
    append(bytes, references);
    if (references.size() % 2 == 1) { bytes.push_back(0); }
}

void appendStreams(Bytes& bytes, const std::vector<StnStreamSpec>& streams, unsigned referenceLists = 0)
{
    for (const StnStreamSpec& stream : streams) {
        const Bytes entry = stream.entry.value_or(streamEntry(stream));
        bytes.push_back(stream.entryLength.value_or(size8(entry.size())));
        append(bytes, entry);
        bytes.push_back(stream.attributesLength.value_or(size8(stream.attributes.size())));
        append(bytes, stream.attributes);
        if (referenceLists > 0) { appendReferences(bytes, stream.primaryAudioRefs); }
        if (referenceLists > 1) { appendReferences(bytes, stream.pipGraphicsRefs); }
    }
}

void putClip(Bytes& bytes, std::size_t offset, const AngleSpec& clip)
{
    putText(bytes, offset, clip.clipName);
    putText(bytes, offset + 5, clip.codecId);
}

}  // namespace

Bytes videoAttributes(std::uint8_t codingType, std::uint8_t format, std::uint8_t frameRate)
{
    Bytes attributes = nibbles(codingType, format, frameRate);
    attributes.resize(5);
    return attributes;
}

Bytes audioAttributes(const std::string& language, std::uint8_t codingType, std::uint8_t format,
                      std::uint8_t sampleRate)
{
    Bytes attributes = nibbles(codingType, format, sampleRate);
    putText(attributes, 2, language);
    return attributes;
}

Bytes graphicsAttributes(const std::string& language, std::uint8_t codingType)
{
    Bytes attributes = {codingType};
    putText(attributes, 1, language);
    growTo(attributes, 5);
    return attributes;
}

Bytes textAttributes(const std::string& language, std::uint8_t characterCode)
{
    Bytes attributes = {0x92, characterCode};
    putText(attributes, 2, language);
    return attributes;
}

Bytes StnTableSpec::build() const
{
    Bytes table(kStnHeader);
    table[4] = primaryVideoCount.value_or(size8(primaryVideo.size()));
    table[5] = size8(primaryAudio.size());
    table[6] = size8(graphics.size());
    table[7] = size8(interactiveGraphics.size());
    table[8] = size8(secondaryAudio.size());
    table[9] = size8(secondaryVideo.size());
    table[10] = size8(pipGraphics.size());
    table[11] = size8(dolbyVision.size());
    appendStreams(table, primaryVideo);
    appendStreams(table, primaryAudio);
    appendStreams(table, graphics);
    appendStreams(table, pipGraphics);
    appendStreams(table, interactiveGraphics);
    appendStreams(table, secondaryAudio, 1);
    appendStreams(table, secondaryVideo, 2);
    appendStreams(table, dolbyVision);
    putBe16(table, 0, length.value_or(static_cast<std::uint16_t>(table.size() - 2)));
    return table;
}

Bytes PlayItemSpec::build() const
{
    const bool hasAngles = isMultiAngle.value_or(!furtherAngles.empty());
    Bytes item(34);
    putClip(item, 2, {clipName, codecId});
    putU8(item, 12, static_cast<std::uint8_t>((hasAngles ? 0x10U : 0U) | connectionCondition));
    putU8(item, 13, refToStcId);
    putBe32(item, 14, inTime);
    putBe32(item, 18, outTime);
    putU8(item, 30, randomAccess ? 0x80 : 0);
    putU8(item, 31, stillMode);
    putBe16(item, 32, stillTime);
    if (hasAngles) {
        append(item, {numberOfAngles.value_or(size8(furtherAngles.size() + 1)), 0});
        for (const AngleSpec& angle : furtherAngles) {
            putClip(item, item.size(), angle);
            item.push_back(angle.refToStcId);
        }
    }
    append(item, stn.build());
    putBe16(item, 0, length.value_or(static_cast<std::uint16_t>(item.size() - 2)));
    return item;
}

Bytes MplsSpec::build() const
{
    Bytes file(kPlayListStart);
    putText(file, 0, magic);
    putText(file, 4, version);
    putBe32(file, 40, appInfoLength);
    putU8(file, 45, playbackType);
    putU8(file, 56, appInfoFlags);
    growTo(file, kPlayListStart + kPlayListHeader);
    for (const PlayItemSpec& item : playItems) {
        append(file, item.build());
    }
    putBe32(file, kPlayListStart, static_cast<std::uint32_t>(file.size() - kPlayListStart - 4));
    putBe16(file, kPlayListStart + 6,
            numberOfPlayItems.value_or(static_cast<std::uint16_t>(playItems.size())));
    putBe16(file, kPlayListStart + 8, numberOfSubPaths);

    const std::size_t markStart = file.size();
    putBe32(file, 8, playListAddress.value_or(kPlayListStart));
    putBe32(file, 12, markAddress.value_or(static_cast<std::uint32_t>(markStart)));
    putBe32(file, markStart, static_cast<std::uint32_t>(kMarkHeader - 4 + marks.size() * kMarkSize));
    putBe16(file, markStart + 4, numberOfMarks.value_or(static_cast<std::uint16_t>(marks.size())));
    for (const MarkSpec& mark : marks) {
        const std::size_t entry = file.size();
        putU8(file, entry + 1, mark.markType);
        putBe16(file, entry + 2, mark.refToPlayItemId);
        putBe32(file, entry + 4, mark.timeStamp);
        putBe16(file, entry + 8, mark.entryEsPid);
        putBe32(file, entry + 10, mark.duration);
    }
    return file;
}

std::size_t MplsSpec::playItemStart(std::size_t index) const
{
    std::size_t start = kPlayListStart + kPlayListHeader;
    for (std::size_t i = 0; i < index; ++i) {
        start += playItems[i].build().size();
    }
    return start;
}

}  // namespace testsupport
