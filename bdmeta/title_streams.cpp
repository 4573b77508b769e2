#include "bdmeta/title_streams.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <tuple>
#include <unordered_set>

namespace bdmeta {

namespace {

const char* orElse(const char* text, const char* fallback)
{
    return *text != '\0' ? text : fallback;
}

const char* audioDisplayName(std::uint8_t codingType)
{
    switch (codingType) {
    case 3:
        return "MPEG-1 Audio";
    case 4:
        return "MPEG-2 Audio";
    case 128:
        return "LPCM";
    case 129:
        return "AC-3";
    case 130:
        return "DTS";
    case 131:
        return "Dolby TrueHD";
    case 132:
        return "Dolby Digital Plus";
    case 133:
        return "DTS-HD";
    case 134:
        return "DTS-HD Master Audio";
    default:
        return "Unknown";
    }
}

const char* subtitleDisplayName(std::uint8_t codingType)
{
    switch (codingType) {
    case 144:
        return "Presentation Graphics";
    case 146:
        return "Text Subtitle";
    default:
        return "Subtitle";
    }
}

const char* characterEncodingName(std::uint8_t characterCode)
{
    constexpr std::array kNames = {"", "UTF-8", "UTF-16BE", "Shift JIS", "EUC-KR", "GB18030", "GB", "Big5"};
    return characterCode < kNames.size() ? kNames.at(characterCode) : "";
}

BlurayVideoCodec videoCodecOf(const BlurayStream& stream)
{
    return {.codingName = orElse(stream.codingName, "Unknown"),
            .codingType = stream.codingType,
            .entryType = stream.entryType,
            .pid = stream.pid,
            .category = stream.category,
            .width = stream.width,
            .height = stream.height,
            .videoFormatName = stream.videoFormatName,
            .frameRateName = stream.frameRateName};
}

BlurayAudioTrack audioTrackOf(const BlurayStream& stream)
{
    return {.name = orElse(stream.codingName, audioDisplayName(stream.codingType)),
            .language = stream.language,
            .channelLayout = orElse(stream.channelLayoutName, "Unknown"),
            .sampleRate = orElse(stream.sampleRateName, "Unknown"),
            .codingType = stream.codingType,
            .category = stream.category,
            .pid = stream.pid};
}

BluraySubtitleTrack subtitleTrackOf(const BlurayStream& stream)
{
    return {.format = orElse(stream.codingName, subtitleDisplayName(stream.codingType)),
            .language = stream.language,
            .characterEncoding = characterEncodingName(stream.characterCode),
            .codingType = stream.codingType,
            .category = stream.category,
            .pid = stream.pid};
}

// Two entries of a title's list are equal if these fields are.

auto identityOf(const BlurayVideoCodec& codec)
{
    return std::tuple(codec.pid, codec.codingType, codec.category);
}

auto identityOf(const BlurayAudioTrack& track)
{
    return std::tuple(track.pid, track.codingType, track.category, track.language.view(),
                      std::string_view(track.name));
}

auto identityOf(const BluraySubtitleTrack& track)
{
    return std::tuple(track.pid, track.codingType, track.category, track.language.view(),
                      std::string_view(track.format));
}

// Keeps the first of equal entries, in their order. Sorts instead of hashing or comparing pairs: a hostile disc can
// hold millions of streams with chosen values.
template <typename Entry>
void keepDistinct(std::vector<Entry>& entries)
{
    const auto identityAt = [&entries](std::size_t i) { return identityOf(entries[i]); };
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, identityAt);
    const auto isRepeat = [&identityAt](std::size_t left, std::size_t right) {
        return identityAt(left) == identityAt(right);
    };
    order.erase(std::unique(order.begin(), order.end(), isRepeat), order.end());
    std::ranges::sort(order);

    std::vector<Entry> distinct;
    distinct.reserve(order.size());
    std::ranges::transform(order, std::back_inserter(distinct),
                           [&entries](std::size_t i) { return entries[i]; });
    entries = std::move(distinct);
}

void addStream(BlurayTitle& title, const BlurayStream& stream)
{
    if (title.width == 0 && stream.kind == StreamKind::Video) {
        title.width = stream.width;
        title.height = stream.height;
    }
    switch (stream.category) {
    case StreamCategory::PrimaryVideo:
        ++title.primaryVideoCount;
        title.videoCodecs.push_back(videoCodecOf(stream));
        break;
    case StreamCategory::PrimaryAudio:
        ++title.primaryAudioCount;
        title.audioTracks.push_back(audioTrackOf(stream));
        break;
    case StreamCategory::Subtitle:
        ++title.subtitleCount;
        title.subtitleTracks.push_back(subtitleTrackOf(stream));
        break;
    case StreamCategory::InteractiveGraphics:
        ++title.interactiveGraphicsCount;
        break;
    case StreamCategory::SecondaryAudio:
        ++title.secondaryAudioCount;
        title.audioTracks.push_back(audioTrackOf(stream));
        break;
    case StreamCategory::SecondaryVideo:
        ++title.secondaryVideoCount;
        title.videoCodecs.push_back(videoCodecOf(stream));
        break;
    case StreamCategory::DolbyVision:
        title.videoCodecs.push_back(videoCodecOf(stream));
        break;
    case StreamCategory::None:
        break;
    }
}

void keepDistinctStreams(BlurayTitle& title)
{
    keepDistinct(title.videoCodecs);
    keepDistinct(title.audioTracks);
    keepDistinct(title.subtitleTracks);
}

BlurayTitle titleOfTable(const std::vector<BlurayStream>& streams)
{
    BlurayTitle title;
    for (const BlurayStream& stream : streams) {
        addStream(title, stream);
    }
    keepDistinctStreams(title);
    return title;
}

void addCounts(BlurayTitle& title, const BlurayTitle& table)
{
    title.primaryVideoCount += table.primaryVideoCount;
    title.primaryAudioCount += table.primaryAudioCount;
    title.subtitleCount += table.subtitleCount;
    title.interactiveGraphicsCount += table.interactiveGraphicsCount;
    title.secondaryAudioCount += table.secondaryAudioCount;
    title.secondaryVideoCount += table.secondaryVideoCount;
}

template <typename Entry>
void append(std::vector<Entry>& entries, const std::vector<Entry>& more)
{
    entries.insert(entries.end(), more.begin(), more.end());
}

void addStreams(BlurayTitle& title, const BlurayTitle& table)
{
    if (title.width == 0) {
        title.width = table.width;
        title.height = table.height;
    }
    append(title.videoCodecs, table.videoCodecs);
    append(title.audioTracks, table.audioTracks);
    append(title.subtitleTracks, table.subtitleTracks);
}

}  // namespace

void TitleStreams::addTo(BlurayTitle& title, const std::vector<BlurayPlayItem>& playItems)
{
    std::unordered_set<const void*> met;
    for (const BlurayPlayItem& item : playItems) {
        const void* const key = item.streams.get();
        const bool isNew = met.insert(key).second;
        auto known = m_shared.find(key);
        if (known == m_shared.end() && item.streams.use_count() > 1) {
            known = m_shared.emplace(key, titleOfTable(*item.streams)).first;
        }
        const BlurayTitle& table =
            known != m_shared.end() ? known->second : (m_own = titleOfTable(*item.streams));
        addCounts(title, table);
        if (isNew) { addStreams(title, table); }
    }
    keepDistinctStreams(title);
}

}  // namespace bdmeta
