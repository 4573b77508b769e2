// A whole DVD, from its files to titles, package and digest.
#include "app/log.h"
#include "fuzz/abort_unless.h"
#include "fuzz/disc_files.h"
#include "scan/dvd_flow.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testsupport::TemporaryFolder folder;
    static const std::vector<std::string> paths = fuzz::pathsBelow(folder.path(), fuzz::kDvdPaths);
    const logging::ScopedSwitch silence(false);
    fuzz::writeDiscFiles({data, size}, paths);

    dvdmeta::DvdDisc disc;
    std::array<char, 256> text = {};
    if (readDvdDisc(folder.path().c_str(), &disc, text.data(), text.size()) != 0) {
        fuzz::abortUnless(disc.titles.empty() && disc.rawIfos.empty());
        return 0;
    }
    const DiscScanResult result = scan::describeDvd(&disc);
    const bool isShown = result.discType == DiscType::Dvd;
    fuzz::abortUnless(isShown == result.errorMessage.isEmpty());
    fuzz::abortUnless(result.dvdPackageSha256.size() == (isShown ? 32 : 0));
    return 0;
}
