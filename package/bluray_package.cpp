#include "package/bluray_package.h"

#include "package/encoding.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace package {

using bdmeta::BlurayDisc;
using bdmeta::BlurayDiscSummary;
using bdmeta::BlurayTitle;

namespace {

// Deliberate: the magic ends with the bytes 00 01, not with letters as the DVD's.
constexpr std::array<std::uint8_t, 8> kMagic = {'P', 'S', 'T', 'P', 'B', 'D', 0x00, 0x01};
constexpr std::uint32_t kHasOrganizationId = 0x01;
constexpr std::uint32_t kHasDiscId = 0x02;
constexpr std::size_t kOrganizationIdSize = 4;
constexpr std::size_t kDiscIdSize = 16;
constexpr std::size_t kIdentifierLength = 5;

constexpr char kIncomplete[] = QT_TRANSLATE_NOOP("Messages", "Blu-ray package input is incomplete.");
constexpr char kNoClipBytes[] =
    QT_TRANSLATE_NOOP("Messages", "A Blu-ray clip information file could not be retained for packaging.");
constexpr char kNoPlaylistBytes[] =
    QT_TRANSLATE_NOOP("Messages", "A Blu-ray playlist could not be retained for packaging.");
constexpr char kMismatch[] =
    QT_TRANSLATE_NOOP("Messages", "Blu-ray title data does not match its playlist manifest.");
constexpr char kIdentifiers[] =
    QT_TRANSLATE_NOOP("Messages", "Blu-ray package requires five-character BDMV identifiers.");

// Returns the `size` bytes that `digits` gives in hexadecimal; empty if it is any other text.
QByteArray identifierBytes(const std::string& digits, std::size_t size)
{
    const auto isDigit = [](unsigned char character) { return std::isxdigit(character) != 0; };
    if (digits.size() != 2 * size || !std::ranges::all_of(digits, isDigit)) { return {}; }
    return QByteArray::fromHex(QByteArray::fromStdString(digits));
}

QByteArray fileName(std::string_view identifier, const char* suffix)
{
    return QByteArray(identifier.data(), static_cast<qsizetype>(identifier.size())) + suffix;
}

}  // namespace

bool writeDiscChunk(const BlurayDisc* disc, const BlurayDiscSummary* summary, std::size_t titleCount,
                    QByteArray& body)
{
    if (disc == nullptr || summary == nullptr) { return false; }
    const QByteArray organizationId = identifierBytes(disc->organizationId, kOrganizationIdSize);
    const QByteArray discId = identifierBytes(disc->discId, kDiscIdSize);
    appendU32BE(body,
                (organizationId.isEmpty() ? 0 : kHasOrganizationId) | (discId.isEmpty() ? 0 : kHasDiscId));
    body.append(viewOf(disc->indexVersion));
    appendU32BE(body, disc->titleCount);
    appendU32BE(body, static_cast<std::uint32_t>(disc->playlists.size()));
    appendU32BE(body, static_cast<std::uint32_t>(disc->clips.size()));
    appendU32BE(body, static_cast<std::uint32_t>(titleCount));
    appendU64BE(body, summary->totalDurationMs);
    appendU64BE(body, summary->totalPlaybackSize);
    appendU32BE(body, summary->totalPlaymarks);
    body.append(organizationId);
    body.append(discId);
    return true;
}

bool writeClipChunk(const BlurayDisc& disc, QByteArray& body, Message* error)
{
    appendVarint(body, disc.clips.size());
    for (const bdmeta::BlurayClip& clip : disc.clips) {
        if (clip.rawData.empty()) { return fail(error, kNoClipBytes); }
        appendFile(body, fileName(clip.name.view(), ".clpi"), clip.rawData);
        appendU64BE(body, clip.streamFileSize);
    }
    return true;
}

bool writePlaylistChunk(const BlurayDisc& disc, QByteArray& body, Message* error)
{
    appendVarint(body, disc.playlists.size());
    for (const bdmeta::BlurayPlaylist& playlist : disc.playlists) {
        if (playlist.rawData.empty()) { return fail(error, kNoPlaylistBytes); }
        appendFile(body, fileName(playlist.name.view(), ".mpls"), playlist.rawData);
    }
    return true;
}

bool writeTitleChunk(const BlurayDisc& disc, std::span<const BlurayTitle> titles, QByteArray& body,
                     Message* error)
{
    appendVarint(body, titles.size());
    for (std::size_t i = 0; i < titles.size(); ++i) {
        if (i >= disc.playlists.size()) { return fail(error, kMismatch); }
        const std::string_view identifier = disc.playlists[i].name.view();
        if (identifier.size() != kIdentifierLength) { return fail(error, kIdentifiers); }
        body.append(identifier.data(), static_cast<qsizetype>(identifier.size()));
        appendU64BE(body, titles[i].durationMs);
        appendU64BE(body, titles[i].playbackSize);
        appendU32BE(body, titles[i].playmarkCount);
    }
    return true;
}

QByteArray buildBlurayPackage(const BlurayDisc* disc, std::span<const BlurayTitle> titles,
                              const BlurayDiscSummary* summary, QByteArray* sha256Out, Message* error)
{
    if (error != nullptr) { *error = {}; }
    if (titles.empty() || (disc != nullptr && titles.size() != disc->playlists.size())) {
        setError(error, kIncomplete);
        return {};
    }
    std::array<Chunk, 4> chunks = {Chunk{{'D', 'I', 'S', 'C'}, {}}, Chunk{{'C', 'L', 'P', 'I'}, {}},
                                   Chunk{{'M', 'P', 'L', 'S'}, {}}, Chunk{{'T', 'I', 'T', 'L'}, {}}};
    if (!writeDiscChunk(disc, summary, titles.size(), chunks[0].body) ||
        !writeClipChunk(*disc, chunks[1].body, error) || !writePlaylistChunk(*disc, chunks[2].body, error) ||
        !writeTitleChunk(*disc, titles, chunks[3].body, error)) {
        return {};
    }
    QByteArray built = assemble(kMagic, chunks);
    if (sha256Out != nullptr) { *sha256Out = sha256(built); }
    return built;
}

}  // namespace package
