// A whole Blu-ray disc, from its files to titles, package and digest.
#include "base/log.h"
#include "fuzz/scratch_disc.h"
#include "scan/bluray_flow.h"

void fuzz::target(Input input)
{
    static const ScratchFolder folder(kBlurayPaths);
    static const logging::ScopedSwitch silence(false);
    bdmeta::BlurayDisc disc;
    char text[256] = {};
    if (readBlurayDisc(folder.write(input), &disc, text, sizeof(text)) != 0) {
        require(text[0] != '\0' && disc.playlists.empty() && disc.clips.empty());
        return;
    }
    const DiscScanResult result = scan::describeBluray(&disc);
    const bool isShown = result.discType == DiscType::Bluray;
    require(isShown == result.errorMessage.isEmpty());
    require(result.blurayPackageSha256.size() == (isShown ? 32 : 0));
    require(!isShown || static_cast<std::size_t>(result.blurayTitles.size()) == disc.playlists.size());
}
