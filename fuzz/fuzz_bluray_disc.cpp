// A Blu-ray disc's image, from its volume to titles, package and digest.
#include "base/log.h"
#include "discio/bluray_source.h"
#include "fuzz/scratch_image.h"
#include "scan/bluray_flow.h"

void fuzz::target(Input input)
{
    static const logging::ScopedSwitch silence(false);
    const char* const path = writeImage(input);
    discio::BlurayDiscSource source;
    std::vector<std::string> names;
    if (openBluraySource(path, source, nullptr, 0) == 0 &&
        listFilesWithSuffix(source, "BDMV/PLAYLIST", ".mpls", names) == 0) {
        names.resize(std::min<std::size_t>(names.size(), 16));  // of thousands over the same bytes
        for (const std::string& name : names) {
            const std::string file = "BDMV/PLAYLIST/" + name + ".mpls";
            const std::uint64_t sizeBytes = blurayFileSize(source, file);
            std::vector<std::uint8_t> bytes;
            require(readWholeFile(source, file, bytes) != 0 || bytes.size() == sizeBytes);
        }
    }
    bdmeta::BlurayDisc disc;
    char text[256] = {};
    if (readBlurayDisc(path, &disc, text, sizeof(text)) != 0) {
        require(text[0] != '\0' && disc.playlists.empty() && disc.clips.empty());
        return;
    }
    const DiscScanResult result = scan::describeBluray(&disc);
    const bool isShown = result.discType == DiscType::Bluray;
    require(isShown == result.errorMessage.isEmpty());
    require(result.blurayPackageSha256.size() == (isShown ? 32 : 0));
    require(!isShown || static_cast<std::size_t>(result.blurayTitles.size()) == disc.playlists.size());
}
