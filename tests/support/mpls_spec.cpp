#include "tests/support/mpls_spec.h"

namespace testsupport {

namespace {

void appendText(Bytes& bytes, const std::string& text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

Bytes withLanguage(Bytes attributes, const std::string& language)
{
    appendText(attributes, language);
    growTo(attributes, 5);
    return attributes;
}

Bytes nibbles(std::uint8_t codingType, unsigned high, unsigned low)
{
    return {codingType, static_cast<std::uint8_t>(high << 4U | low)};
}

void appendReferences(Bytes& table, const Bytes& references)
{
    appendBe(table, {{references.size(), 1}, {0, 1}});
    append(table, references);
    if (references.size() % 2 == 1) { table.push_back(0); }
}

void appendStreams(Bytes& table, std::size_t countOffset, const std::vector<StnStreamSpec>& streams,
                   unsigned referenceLists = 0)
{
    table[countOffset] = static_cast<std::uint8_t>(streams.size());
    for (const StnStreamSpec& stream : streams) {
        const std::size_t references = stream.entryType == 1 ? 0 : stream.entryType == 2 ? 2 : 1;
        appendBe(table,
                 {{9, 1}, {stream.entryType, 1}, {0, references}, {stream.pid, 2}, {0, 6 - references}});
        appendBe(table, {{stream.attributes.size(), 1}});
        append(table, stream.attributes);
        if (referenceLists > 0) { appendReferences(table, stream.primaryAudioRefs); }
        if (referenceLists > 1) { appendReferences(table, stream.pipGraphicsRefs); }
    }
}

Bytes buildPlayItem(const PlayItemSpec& spec)
{
    Bytes item(2);
    appendText(item, spec.clipName + spec.codecId);
    appendBe(item, {{0, 1}, {(spec.furtherAngles.empty() ? 0U : 0x10U) | spec.connectionCondition, 1}});
    appendBe(item, {{spec.refToStcId, 1}, {spec.inTime, 4}, {spec.outTime, 4}, {0, 8}});
    appendBe(item, {{spec.randomAccess ? 0x80U : 0U, 1}, {spec.stillMode, 1}, {spec.stillTime, 2}});
    if (!spec.furtherAngles.empty()) { appendBe(item, {{spec.furtherAngles.size() + 1, 1}, {0, 1}}); }
    for (const AngleSpec& angle : spec.furtherAngles) {
        appendText(item, angle.clipName + angle.codecId);
        appendBe(item, {{angle.refToStcId, 1}});
    }
    append(item, spec.stn.build());
    putBe(item, 0, item.size() - 2, 2);
    return item;
}

}  // namespace

Bytes videoAttributes(std::uint8_t codingType, std::uint8_t format, std::uint8_t frameRate)
{
    return withLanguage(nibbles(codingType, format, frameRate), "");
}

Bytes audioAttributes(const std::string& language, std::uint8_t codingType, std::uint8_t format,
                      std::uint8_t sampleRate)
{
    return withLanguage(nibbles(codingType, format, sampleRate), language);
}

Bytes graphicsAttributes(const std::string& language, std::uint8_t codingType)
{
    return withLanguage({codingType}, language);
}

Bytes textAttributes(const std::string& language, std::uint8_t characterCode)
{
    return withLanguage({0x92, characterCode}, language);
}

Bytes StnTableSpec::build() const
{
    Bytes table(16);
    appendStreams(table, 4, primaryVideo);
    appendStreams(table, 5, primaryAudio);
    appendStreams(table, 6, graphics);
    appendStreams(table, 10, pipGraphics);
    appendStreams(table, 7, interactiveGraphics);
    appendStreams(table, 8, secondaryAudio, 1);
    appendStreams(table, 9, secondaryVideo, 2);
    appendStreams(table, 11, dolbyVision);
    putBe(table, 0, table.size() - 2, 2);
    return table;
}

Bytes MplsSpec::build() const
{
    Bytes file(kPlayListStart);
    putText(file, 0, "MPLS" + version);
    putBe(file, 8, kPlayListStart, 4);
    putBe(file, 40, appInfoLength, 4);
    putU8(file, 45, playbackType);
    putU8(file, 56, appInfoFlags);
    appendBe(file, {{0, 6}, {playItems.size(), 2}, {numberOfSubPaths, 2}});
    for (const PlayItemSpec& item : playItems) {
        append(file, buildPlayItem(item));
    }
    putBe(file, kPlayListStart, file.size() - kPlayListStart - 4, 4);
    putBe(file, 12, file.size(), 4);
    appendBe(file, {{2 + 14 * marks.size(), 4}, {marks.size(), 2}});
    for (const MarkSpec& mark : marks) {
        appendBe(file, {{0, 1}, {mark.markType, 1}, {mark.refToPlayItemId, 2}, {mark.timeStamp, 4}});
        appendBe(file, {{mark.entryEsPid, 2}, {mark.duration, 4}});
    }
    return file;
}

}  // namespace testsupport
