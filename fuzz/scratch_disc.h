// Discs in few bytes, so that the fuzzer changes what matters.
#pragma once

#include "fuzz/target.h"
#include "tests/support/temporary_folder.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace fuzz {

using File = std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })>;

inline void writeAt(const File& file, std::size_t offset, Input bytes)
{
    require(file && std::fseek(file.get(), static_cast<long>(offset), SEEK_SET) == 0);
    require(std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size());
}

inline std::size_t le16(Input bytes, std::size_t offset)
{
    return bytes[offset] + std::size_t{256} * bytes[offset + 1];
}

// A disc directory. Its input, for one file after the other: 1 byte for the place of its path in the list, 2 for its
// size, little-endian; then its bytes, or what is left. A path that comes again replaces the file.
class ScratchFolder {
public:
    explicit ScratchFolder(std::span<const char* const> paths)
    {
        for (const char* path : paths) {
            m_paths.push_back(m_folder / path);
            std::filesystem::create_directories(std::filesystem::path(m_paths.back()).parent_path());
        }
    }

    // Writes the files in place of those of the last input. Returns the directory's path.
    const char* write(Input input) const
    {
        for (const std::string& path : m_paths) {
            ::unlink(path.c_str());
        }
        while (input.size() >= 3) {
            const std::string& path = m_paths[input[0] % m_paths.size()];
            const std::size_t sizeBytes = std::min(le16(input, 1), input.size() - 3);
            writeAt(File(std::fopen(path.c_str(), "wb")), 0, input.subspan(3, sizeBytes));
            input = input.subspan(3 + sizeBytes);
        }
        return m_folder.path().c_str();
    }

private:
    testsupport::TemporaryFolder m_folder;
    std::vector<std::string> m_paths;
};

inline constexpr const char* kBlurayPaths[] = {"BDMV/index.bdmv",          "CERTIFICATE/id.bdmv",
                                               "BDMV/PLAYLIST/00000.mpls", "BDMV/PLAYLIST/00800.mpls",
                                               "BDMV/PLAYLIST/00801.mpls", "BDMV/CLIPINF/00001.clpi",
                                               "BDMV/CLIPINF/00002.clpi",  "BDMV/CLIPINF/00003.clpi",
                                               "BDMV/STREAM/00001.m2ts",   "BDMV/STREAM/00002.m2ts"};
inline constexpr const char* kDvdPaths[] = {"VIDEO_TS/VIDEO_TS.IFO", "VIDEO_TS/VTS_01_0.IFO",
                                            "VIDEO_TS/VTS_02_0.IFO", "VIDEO_TS/VTS_03_0.IFO",
                                            "VIDEO_TS/VTS_200_0.IFO"};

inline constexpr std::size_t kCellSize = 512;

// Writes a disc image; nearly all of one is zeros. Its input: 2 bytes for its size in cells, little-endian; then, for
// one cell after the other, 2 bytes for its number, and its 512 bytes or what is left. Returns the image's path.
inline const char* writeImage(Input input)
{
    static const testsupport::TemporaryFolder folder;
    static const std::string path = folder / "image";
    const File image(std::fopen(path.c_str(), "wb"));
    const std::size_t count = input.size() < 2 ? 0 : le16(input, 0);
    for (std::size_t at = 2; at + 2 < input.size(); at += 2 + kCellSize) {
        const std::size_t cell = le16(input, at);
        if (cell >= count) { continue; }
        writeAt(image, cell * kCellSize, input.subspan(at + 2, std::min(kCellSize, input.size() - at - 2)));
    }
    require(std::fflush(image.get()) == 0 &&
            ::truncate(path.c_str(), static_cast<off_t>(count * kCellSize)) == 0);
    return path.c_str();
}

}  // namespace fuzz
