#include "bench/bench_disc.h"

#include "tests/support/clpi_spec.h"
#include "tests/support/mpls_spec.h"

#include <cstdio>
#include <filesystem>

namespace bench {

namespace {

using testsupport::StnStreamSpec;

constexpr std::uint32_t kEntryPointTicks = 88 * 256;  // half a second
constexpr std::uint32_t kEntryPointPackets = 3000;

std::string fiveDigits(std::uint32_t number)
{
    std::array<char, 8> text = {};
    std::snprintf(text.data(), text.size(), "%05u", number % 100000);
    return text.data();
}

testsupport::StnTableSpec streams()
{
    testsupport::StnTableSpec stn;
    stn.primaryVideo = {StnStreamSpec{.pid = 0x1011, .attributes = testsupport::videoAttributes()}};
    for (const char* language : {"eng", "deu", "fra", "jpn"}) {
        const auto pid = static_cast<std::uint16_t>(0x1100 + stn.primaryAudio.size());
        stn.primaryAudio.push_back(
            StnStreamSpec{.pid = pid, .attributes = testsupport::audioAttributes(language)});
    }
    for (const char* language : {"eng", "deu", "fra", "jpn", "spa", "ita", "nld", "swe"}) {
        const auto pid = static_cast<std::uint16_t>(0x1200 + stn.graphics.size());
        stn.graphics.push_back(
            StnStreamSpec{.pid = pid, .attributes = testsupport::graphicsAttributes(language)});
    }
    return stn;
}

testsupport::Bytes buildClip(const DiscShape& shape)
{
    std::vector<testsupport::EntryPoint> points;
    for (std::uint32_t i = 0; i < shape.entryPointsPerClip; ++i) {
        points.push_back({i * kEntryPointTicks, i * kEntryPointPackets});
    }
    testsupport::ClpiSpec clip;
    clip.numberOfSourcePackets = shape.entryPointsPerClip * kEntryPointPackets;
    clip.epStreams = {epStream(points)};
    return clip.build();
}

testsupport::Bytes buildPlaylist(const DiscShape& shape, std::uint32_t number)
{
    testsupport::MplsSpec playlist;
    playlist.playItems.clear();
    for (std::uint32_t i = 0; i < shape.playItemsPerPlaylist; ++i) {
        const std::uint32_t begin = (number * 31 + i * 17) % (shape.entryPointsPerClip / 2);
        playlist.playItems.push_back(testsupport::PlayItemSpec{
            .clipName = fiveDigits((number * 7 + i) % shape.clipCount),
            .inTime = begin * kEntryPointTicks + 100,
            .outTime = (begin + shape.entryPointsPerClip / 3) * kEntryPointTicks + 100,
            .stn = streams()});
        playlist.marks.push_back(testsupport::MarkSpec{.refToPlayItemId = static_cast<std::uint16_t>(i)});
    }
    return playlist.build();
}

}  // namespace

testsupport::DiscTree buildDisc(const DiscShape& shape)
{
    testsupport::DiscTree tree;
    for (std::uint32_t i = 0; i < shape.playlistCount; ++i) {
        tree.add("BDMV/PLAYLIST/" + fiveDigits(i) + ".mpls", buildPlaylist(shape, i));
    }
    const testsupport::Bytes clip = buildClip(shape);
    for (std::uint32_t i = 0; i < shape.clipCount; ++i) {
        tree.add("BDMV/CLIPINF/" + fiveDigits(i) + ".clpi", clip);
        tree.add("BDMV/STREAM/" + fiveDigits(i) + ".m2ts", {0});
    }
    return tree;
}

std::uint64_t navigationBytes(const std::string& directory)
{
    std::uint64_t total = 0;
    for (const char* part : {"BDMV/PLAYLIST", "BDMV/CLIPINF"}) {
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(directory) / part)) {
            total += entry.file_size();
        }
    }
    return total;
}

}  // namespace bench
