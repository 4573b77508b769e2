// A disc directory in few bytes: up to the end, for one file after the other,
//
//     0  which of the target's paths, 1 byte     1  its size, 2 bytes, little-endian     3  its bytes, or what is left
//
// A path that comes up twice has the later bytes; one that does not is not there.
#pragma once

#include "fuzz/scratch_file.h"
#include "tests/support/disc_tree.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

inline constexpr std::size_t kFileHeaderSize = 3;

// Writes the files into folders that are there, in place of what an earlier input left.
inline void writeDiscFiles(std::span<const std::uint8_t> input, std::span<const std::string> paths)
{
    for (const std::string& path : paths) {
        ::unlink(path.c_str());
    }
    while (input.size() >= kFileHeaderSize) {
        const std::string& path = paths[input[0] % paths.size()];
        const std::size_t sizeBytes = input[1] + std::size_t{256} * input[2];
        input = input.subspan(kFileHeaderSize);
        const auto content = input.first(std::min(sizeBytes, input.size()));
        ScratchFile(path).write(0, content);
        input = input.subspan(content.size());
    }
}

// The paths below `root`, whose folders are made.
inline std::vector<std::string> pathsBelow(const std::filesystem::path& root,
                                           std::span<const char* const> paths)
{
    std::vector<std::string> absolute;
    for (const char* path : paths) {
        absolute.push_back(root / path);
        std::filesystem::create_directories(std::filesystem::path(absolute.back()).parent_path());
    }
    return absolute;
}

// The input that makes a disc which the tests build; files of other paths are left out. Stream files, of which nothing
// but the size is read, are cut.
inline testsupport::Bytes inputOf(const testsupport::DiscTree& disc, std::span<const char* const> paths)
{
    testsupport::Bytes input;
    for (const testsupport::TreeFile& file : disc.files()) {
        const auto path = std::ranges::find(paths, file.path);
        if (path == paths.end()) { continue; }
        const bool isStream = file.path.ends_with(".m2ts");
        const std::size_t sizeBytes = std::min<std::size_t>(file.bytes.size(), isStream ? 192 : UINT16_MAX);
        input.push_back(static_cast<std::uint8_t>(path - paths.begin()));
        input.push_back(static_cast<std::uint8_t>(sizeBytes));
        input.push_back(static_cast<std::uint8_t>(sizeBytes / 256));
        input.insert(input.end(), file.bytes.begin(),
                     file.bytes.begin() + static_cast<std::ptrdiff_t>(sizeBytes));
    }
    return input;
}

inline constexpr const char* kBlurayPaths[] = {"BDMV/index.bdmv",          "CERTIFICATE/id.bdmv",
                                               "BDMV/PLAYLIST/00000.mpls", "BDMV/PLAYLIST/00800.mpls",
                                               "BDMV/PLAYLIST/00801.mpls", "BDMV/CLIPINF/00001.clpi",
                                               "BDMV/CLIPINF/00002.clpi",  "BDMV/CLIPINF/00003.clpi",
                                               "BDMV/STREAM/00001.m2ts",   "BDMV/STREAM/00002.m2ts"};
inline constexpr const char* kDvdPaths[] = {"VIDEO_TS/VIDEO_TS.IFO", "VIDEO_TS/VTS_01_0.IFO",
                                            "VIDEO_TS/VTS_02_0.IFO", "VIDEO_TS/VTS_03_0.IFO",
                                            "VIDEO_TS/VTS_200_0.IFO"};

}  // namespace fuzz
