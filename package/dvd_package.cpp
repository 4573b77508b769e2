#include "package/dvd_package.h"

#include "package/encoding.h"

#include <QtGlobal>

#include <string_view>

namespace package {

using dvdmeta::DvdDisc;

namespace {

constexpr std::array<std::uint8_t, 8> kMagic = {'P', 'S', 'T', 'P', '-', 'D', 'V', 'D'};
constexpr std::string_view kManagerName = "VIDEO_TS.IFO";
constexpr std::string_view kManagerSignature = "DVDVIDEO-VMG";
constexpr std::string_view kTitleSetSignature = "DVDVIDEO-VTS";
constexpr std::size_t kSignatureSize = 12;

constexpr char kIncomplete[] = QT_TRANSLATE_NOOP("Messages", "DVD package input is incomplete.");
constexpr char kNoManager[] =
    QT_TRANSLATE_NOOP("Messages", "DVD package requires VIDEO_TS.IFO as its first raw file.");
constexpr char kInvalidIfo[] = QT_TRANSLATE_NOOP("Messages", "DVD package contains an invalid raw IFO file.");
constexpr char kSignature[] =
    QT_TRANSLATE_NOOP("Messages", "DVD package contains an IFO with an unexpected signature.");
constexpr char kNoTitleSets[] = QT_TRANSLATE_NOOP("Messages", "DVD package contains no VTS metadata.");
constexpr char kInvalidStreams[] =
    QT_TRANSLATE_NOOP("Messages", "DVD package contains invalid VTS stream metadata.");
constexpr char kNoTitles[] = QT_TRANSLATE_NOOP("Messages", "DVD package contains no title metadata.");
constexpr char kTitleOrder[] = QT_TRANSLATE_NOOP("Messages", "DVD title metadata is not in canonical order.");

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isIfoName(std::string_view name)
{
    return name == kManagerName || (name.size() == 12 && name.starts_with("VTS_") && isDigit(name[4]) &&
                                    isDigit(name[5]) && name.ends_with("_0.IFO"));
}

void appendLanguage(QByteArray& out, const dvdmeta::DvdLanguage& language)
{
    const bool isDeclared = language[0] != 0 && language[1] != 0;
    out.append(isDeclared ? '\1' : '\0');
    out.append(isDeclared ? language[0] : '\0');
    out.append(isDeclared ? language[1] : '\0');
    out.append('\0');
}

void appendTitleSet(QByteArray& out, const dvdmeta::DvdTitleSet& titleSet)
{
    const dvdmeta::DvdStreamAttributes& streams = titleSet.streams;
    appendU8(out, static_cast<std::uint8_t>(titleSet.number));
    appendU16BE(out, static_cast<std::uint16_t>(streams.video.width));
    appendU16BE(out, static_cast<std::uint16_t>(streams.video.height));
    appendU8(out, streams.video.codingMode);
    appendVarint(out, streams.audio.size());
    for (const dvdmeta::DvdAudioStream& audio : streams.audio) {
        appendLanguage(out, audio.language);
        appendU8(out, audio.codingMode);
        appendU8(out, audio.channelsMinusOne);
        appendU8(out, audio.sampleRateCode);
    }
    appendVarint(out, streams.subpicture.size());
    for (const dvdmeta::DvdSubpictureStream& subpicture : streams.subpicture) {
        appendLanguage(out, subpicture.language);
        appendU8(out, subpicture.codingMode);
    }
}

QByteArray discBody(const DvdDisc& disc, const DvdDiscTotals& totals)
{
    QByteArray body;
    appendBytes(body, viewOf(disc.providerRaw));
    appendU32BE(body, totals.titleCount);
    appendU64BE(body, totals.durationMs);
    appendU64BE(body, totals.playbackSizeBytes);
    return body;
}

}  // namespace

DvdDiscTotals sumDvdTitles(const DvdDisc& disc)
{
    DvdDiscTotals totals;
    totals.titleCount = static_cast<std::uint32_t>(disc.titles.size());
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        totals.durationMs += title.durationMs;
        totals.playbackSizeBytes += title.playbackSizeBytes;
    }
    return totals;
}

bool writeIfoChunk(const DvdDisc& disc, QByteArray& body, Message* error)
{
    if (disc.rawIfos.empty() || disc.rawIfos.front().name != kManagerName) { return fail(error, kNoManager); }
    appendVarint(body, disc.rawIfos.size());
    // The signature depends on the position in the list, not on the name: a second VIDEO_TS.IFO fails, although
    // its name is valid.
    std::string_view signature = kManagerSignature;
    for (const dvdmeta::DvdRawIfo& ifo : disc.rawIfos) {
        if (!isIfoName(ifo.name) || ifo.bytes.size() < kSignatureSize) { return fail(error, kInvalidIfo); }
        if (!viewOf(ifo.bytes).startsWith(QByteArrayView(signature.data(), kSignatureSize))) {
            return fail(error, kSignature);
        }
        appendFile(body, QByteArrayView(ifo.name.data(), static_cast<qsizetype>(ifo.name.size())), ifo.bytes);
        signature = kTitleSetSignature;
    }
    return true;
}

bool writeTitleSetChunk(const DvdDisc& disc, QByteArray& body, Message* error)
{
    if (disc.titleSets.empty()) { return fail(error, kNoTitleSets); }
    appendVarint(body, disc.titleSets.size());
    for (const dvdmeta::DvdTitleSet& titleSet : disc.titleSets) {
        if (titleSet.number < 1 || titleSet.number > dvdmeta::kMaxTitleSets ||
            titleSet.streams.audio.size() > dvdmeta::kMaxAudioStreams ||
            titleSet.streams.subpicture.size() > dvdmeta::kMaxSubpictureStreams) {
            return fail(error, kInvalidStreams);
        }
        appendTitleSet(body, titleSet);
    }
    return true;
}

bool writeTitleChunk(const DvdDisc& disc, QByteArray& body, Message* error)
{
    if (disc.titles.empty()) { return fail(error, kNoTitles); }
    appendVarint(body, disc.titles.size());
    std::uint32_t expectedNumber = 0;
    for (const dvdmeta::DvdTitle& title : disc.titles) {
        if (title.titleNumber != ++expectedNumber) { return fail(error, kTitleOrder); }
        appendU32BE(body, title.titleNumber);
        appendU32BE(body, title.chapterCount);
        appendU64BE(body, title.durationMs);
        appendU64BE(body, title.playbackSizeBytes);
    }
    return true;
}

QByteArray buildDvdPackage(const DvdDisc* disc, const DvdDiscTotals* totals, QByteArray* sha256Out,
                           Message* error)
{
    if (error != nullptr) { *error = {}; }
    if (disc == nullptr || totals == nullptr || disc->titles.empty()) {
        setError(error, kIncomplete);
        return {};
    }
    std::array<Chunk, 4> chunks = {Chunk{{'D', 'I', 'S', 'C'}, discBody(*disc, *totals)},
                                   Chunk{{'I', 'F', 'O', ' '}, {}}, Chunk{{'V', 'T', 'S', ' '}, {}},
                                   Chunk{{'T', 'I', 'T', 'L'}, {}}};
    if (!writeIfoChunk(*disc, chunks[1].body, error) || !writeTitleSetChunk(*disc, chunks[2].body, error) ||
        !writeTitleChunk(*disc, chunks[3].body, error)) {
        return {};
    }
    QByteArray built = assemble(kMagic, chunks);
    if (sha256Out != nullptr) { *sha256Out = sha256(built); }
    return built;
}

}  // namespace package
