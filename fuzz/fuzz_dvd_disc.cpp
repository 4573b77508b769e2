// A DVD's image, from its volume to titles, package and digest.
#include "base/log.h"
#include "fuzz/scratch_image.h"
#include "scan/dvd_flow.h"

void fuzz::target(Input input)
{
    static const logging::ScopedSwitch silence(false);
    dvdmeta::DvdDisc disc;
    if (readDvdDisc(writeImage(input), &disc, nullptr, 0) != 0) {
        require(disc.titles.empty() && disc.rawIfos.empty());
        return;
    }
    const DiscScanResult result = scan::describeDvd(&disc);
    const bool isShown = result.discType == DiscType::Dvd;
    require(isShown == result.errorMessage.isEmpty());
    require(result.dvdPackageSha256.size() == (isShown ? 32 : 0));
}
