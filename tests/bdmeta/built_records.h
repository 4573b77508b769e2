// Playlists and clips as the reader makes them from files that a test builds.
#pragma once

#include "bdmeta/clpi.h"
#include "bdmeta/mpls.h"
#include "tests/support/clpi_spec.h"
#include "tests/support/mpls_spec.h"

#include <gtest/gtest.h>

#include <sstream>

inline std::optional<bdmeta::BlurayPlaylist> parsePlaylist(const testsupport::Bytes& bytes)
{
    discio::ReadBudget budget;
    bdmeta::StreamTables tables(budget);
    return bdmeta::parsePlaylistBytes(bytes, tables);
}

inline bdmeta::BlurayPlaylist playlistOf(const testsupport::MplsSpec& spec, std::string_view name = "00000")
{
    const testsupport::Bytes bytes = spec.build();
    auto playlist = parsePlaylist(bytes);
    EXPECT_TRUE(playlist);
    if (!playlist) { return {}; }
    playlist->name = bdmeta::FixedText<5>(name);
    playlist->rawData = bytes;
    return std::move(*playlist);
}

inline bdmeta::BlurayClip clipOf(const testsupport::ClpiSpec& spec, std::uint64_t streamFileSize = 0,
                                 std::string_view name = "00001")
{
    const testsupport::Bytes bytes = spec.build();
    auto clip = bdmeta::parseClipInfoBytes(bytes);
    EXPECT_TRUE(clip);
    if (!clip) { return {}; }
    clip->name = bdmeta::ClipName(name);
    clip->rawData = bytes;
    clip->streamFileSize = streamFileSize;
    return std::move(*clip);
}

// All that a stream's record says.
inline std::string describe(const bdmeta::BlurayStream& stream)
{
    std::ostringstream out;
    out << stream.pid << ' ' << int{stream.codingType} << ' ' << stream.codingName << " entry "
        << int{stream.entryType} << " kind " << static_cast<int>(stream.kind) << " category "
        << static_cast<int>(stream.category) << " [" << stream.language.view() << "] video "
        << int{stream.videoFormat} << ' ' << stream.videoFormatName << ' ' << int{stream.frameRate} << ' '
        << stream.frameRateName << ' ' << stream.width << 'x' << stream.height << " audio "
        << int{stream.audioFormat} << ' ' << stream.channelLayoutName << ' ' << int{stream.sampleRate} << ' '
        << stream.sampleRateName << " text " << int{stream.characterCode} << " hevc "
        << int{stream.dynamicRangeType} << ' ' << int{stream.colorSpace};
    return out.str();
}
