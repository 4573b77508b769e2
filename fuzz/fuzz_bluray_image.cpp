// Blu-ray images: what the reader of a disc asks of its source, and the reader itself.
#include "bdmeta/bluray_disc.h"
#include "discio/bluray_source.h"
#include "fuzz/scratch_disc.h"

void fuzz::target(Input input)
{
    constexpr std::size_t kFilesRead = 16;  // of a directory, which may have thousands over the same bytes
    const char* const path = writeImage(input);
    discio::BlurayDiscSource source;
    if (openBluraySource(path, source, nullptr, 0) != 0) { return; }
    std::vector<std::string> files = {"BDMV/index.bdmv"};
    for (const auto& [directory, suffix] : {std::pair{"BDMV/PLAYLIST", ".mpls"}, {"BDMV/CLIPINF", ".clpi"}}) {
        std::vector<std::string> names;
        if (listFilesWithSuffix(source, directory, suffix, names) != 0) { continue; }
        names.resize(std::min(names.size(), kFilesRead));
        for (const std::string& name : names) {
            files.push_back(std::string(directory) + '/' + name + suffix);
        }
    }
    for (const std::string& file : files) {
        std::vector<std::uint8_t> bytes;
        const std::uint64_t sizeBytes = blurayFileSize(source, file);
        require(readWholeFile(source, file, bytes) != 0 || bytes.size() == sizeBytes);
    }
    bdmeta::BlurayDisc disc;
    const bool isRead = readBlurayDisc(path, &disc, nullptr, 0) == 0;
    require(isRead || (disc.playlists.empty() && disc.clips.empty()));
}
