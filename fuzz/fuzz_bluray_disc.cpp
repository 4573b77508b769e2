// A whole Blu-ray disc, from its files to titles, package and digest.
#include "app/log.h"
#include "fuzz/abort_unless.h"
#include "fuzz/disc_files.h"
#include "scan/bluray_flow.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testsupport::TemporaryFolder folder;
    static const std::vector<std::string> paths = fuzz::pathsBelow(folder.path(), fuzz::kBlurayPaths);
    const logging::ScopedSwitch silence(false);
    fuzz::writeDiscFiles({data, size}, paths);

    bdmeta::BlurayDisc disc;
    std::array<char, 256> text = {};
    if (readBlurayDisc(folder.path().c_str(), &disc, text.data(), text.size()) != 0) {
        fuzz::abortUnless(text[0] != '\0' && disc.playlists.empty() && disc.clips.empty());
        return 0;
    }
    const DiscScanResult result = scan::describeBluray(&disc);
    const bool isShown = result.discType == DiscType::Bluray;
    fuzz::abortUnless(isShown == result.errorMessage.isEmpty());
    fuzz::abortUnless(result.blurayPackageSha256.size() == (isShown ? 32 : 0));
    if (isShown) {
        fuzz::abortUnless(static_cast<std::size_t>(result.blurayTitles.size()) == disc.playlists.size());
    }
    return 0;
}
