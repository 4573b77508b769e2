#include "bdmeta/bluray_titles.h"

#include "bdmeta/ep_map.h"
#include "bdmeta/title_streams.h"

#include <cstdlib>
#include <map>
#include <new>
#include <string>

namespace bdmeta {

namespace {

constexpr std::size_t kMaxDiscNameLength = 255;

// Computes the playback sizes of titles. Holds the clips by name, and the EP maps of clips that a PlayItem has used.
class PlaybackSizes {
public:
    PlaybackSizes(const BlurayDisc& disc, SizeFallback& fallback, discio::ReadBudget& budget)
        : m_fallback(fallback)
        , m_budget(budget)
    {
        for (const BlurayClip& clip : disc.clips) {
            m_clips.try_emplace(clip.name.view(),
                                UsedClip{&clip, std::nullopt});  // the first of a name counts
        }
    }

    // Sets the size and whether it is approximate. Angle 1 alone counts.
    void addTo(BlurayTitle& title, const BlurayPlaylist& playlist)
    {
        for (const BlurayPlayItem& item : playlist.playItems) {
            const auto found = m_clips.find(item.clipName.view());
            if (found == m_clips.end()) { continue; }
            UsedClip& used = found->second;
            if (!used.epMap) { used.epMap.emplace(*used.clip, m_budget); }
            std::uint64_t size = 0;
            if (computePlayItemSize(*used.epMap, item.inTime, item.outTime, item.stcId, size) != 0) {
                size = used.clip->streamFileSize;
                title.approximate = true;
                noteFallback(playlist, *used.clip);
            }
            title.playbackSize += size;
        }
    }

private:
    struct UsedClip {
        const BlurayClip* clip;
        std::optional<EpMap> epMap;
    };

    void noteFallback(const BlurayPlaylist& playlist, const BlurayClip& clip)
    {
        if (m_fallback.count == 0) {
            m_fallback.firstPlaylist = playlist.name;
            m_fallback.firstClip = clip.name;
        }
        ++m_fallback.count;
    }

    SizeFallback& m_fallback;
    discio::ReadBudget& m_budget;
    std::map<std::string_view, UsedClip> m_clips;
};

std::size_t distinctStreamCount(const BlurayTitle& title)
{
    return title.videoCodecs.size() + title.audioTracks.size() + title.subtitleTracks.size();
}

BlurayTitle deriveTitle(const BlurayPlaylist& playlist, PlaybackSizes& sizes, TitleStreams& streams)
{
    BlurayTitle title;
    title.titleNumber =
        static_cast<std::uint32_t>(std::strtoul(std::string(playlist.name.view()).c_str(), nullptr, 10));
    title.durationMs = playlist.durationMs;
    sizes.addTo(title, playlist);
    title.chapterCount = static_cast<std::uint32_t>(playlist.marks.size());
    title.playmarkCount = title.chapterCount;
    title.clipCount = static_cast<std::uint32_t>(playlist.playItems.size());
    title.segmentMap.reserve(playlist.playItems.size());
    for (const BlurayPlayItem& item : playlist.playItems) {
        const auto angleCount = static_cast<std::uint8_t>(item.angles.size());
        title.angleCount = std::max(title.angleCount, angleCount);
        if (angleCount > 1) { ++title.alternateAngleItemCount; }
        title.segmentMap.push_back(item.clipName);
    }
    streams.addTo(title, playlist.playItems);
    return title;
}

std::optional<unsigned> hexDigit(char digit)
{
    if (digit >= '0' && digit <= '9') { return digit - '0'; }
    if (digit >= 'A' && digit <= 'F') { return digit - 'A' + 10; }
    if (digit >= 'a' && digit <= 'f') { return digit - 'a' + 10; }
    return std::nullopt;
}

// Returns the bytes of pairs of hexadecimal digits, up to the first pair that is missing or invalid.
std::array<std::uint8_t, 16> discIdBytes(std::string_view discId)
{
    std::array<std::uint8_t, 16> bytes = {};
    for (std::size_t i = 0; i < bytes.size() && 2 * i + 1 < discId.size(); ++i) {
        const auto high = hexDigit(discId[2 * i]);
        const auto low = hexDigit(discId[2 * i + 1]);
        if (!high || !low) { break; }
        bytes.at(i) = static_cast<std::uint8_t>(*high << 4U | *low);
    }
    return bytes;
}

BlurayDiscSummary summarize(const BlurayDisc& disc, const std::vector<BlurayTitle>& titles)
{
    BlurayDiscSummary summary;
    summary.discName = disc.volumeId.substr(0, kMaxDiscNameLength);
    summary.discLabel = summary.discName;
    summary.discIdBytes = discIdBytes(disc.discId);
    summary.titleCount = static_cast<std::uint32_t>(titles.size());
    for (const BlurayTitle& title : titles) {
        summary.totalDurationMs += title.durationMs;
        summary.totalPlaybackSize += title.playbackSize;
        summary.totalChapters += title.chapterCount;
        summary.totalPlaymarks += title.playmarkCount;
        summary.totalClips += title.clipCount;
        summary.totalPrimaryVideo += title.primaryVideoCount;
        summary.totalPrimaryAudio += title.primaryAudioCount;
        summary.totalSubtitles += title.subtitleCount;
        summary.totalInteractiveGraphics += title.interactiveGraphicsCount;
        summary.totalSecondaryAudio += title.secondaryAudioCount;
        summary.totalSecondaryVideo += title.secondaryVideoCount;
    }
    return summary;
}

int derive(const BlurayDisc& disc, std::vector<BlurayTitle>& titles, BlurayDiscSummary& summary,
           SizeFallback& fallback, discio::ReadBudget& budget)
{
    if (disc.playlists.empty()) { return 0; }
    PlaybackSizes sizes(disc, fallback, budget);
    titles.reserve(disc.playlists.size());
    TitleStreams streams;
    for (const BlurayPlaylist& playlist : disc.playlists) {
        const auto index = static_cast<std::uint32_t>(titles.size());
        titles.push_back(deriveTitle(playlist, sizes, streams));
        titles.back().index = index;
        const std::size_t rowCount = 1 + distinctStreamCount(titles.back());
        if (!budget.spend(discio::ReadBudget::Bound::TitleRows, rowCount)) { return -1; }
    }
    summary = summarize(disc, titles);
    return 0;
}

}  // namespace

int deriveBlurayTitles(const BlurayDisc* disc, std::vector<BlurayTitle>* titles, BlurayDiscSummary* summary,
                       SizeFallback* fallback, discio::ReadBudget& budget)
{
    if (disc == nullptr || titles == nullptr || summary == nullptr || fallback == nullptr) { return -1; }
    *titles = {};
    *summary = {};
    *fallback = {};
    int outcome = -1;
    try {
        outcome = derive(*disc, *titles, *summary, *fallback, budget);
    } catch (const std::bad_alloc&) {  // returns -1, like other failures
    }
    if (outcome != 0) {
        *titles = {};
        *fallback = {};
    }
    return outcome;
}

}  // namespace bdmeta
