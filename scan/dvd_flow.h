// Makes the titles and the package of a scan result from a parsed DVD.
#pragma once

#include "dvdmeta/dvd_disc.h"
#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// Converts the titles of the disc to the records that the window shows.
[[nodiscard]] QList<DvdTitleInfo> describeDvdTitles(const dvdmeta::DvdDisc& disc);

// Returns titles, totals, package and digest of a parsed disc. `ok` stays 0 because no look-up has run. Returns an error
// result (discType None) if `disc` is null, has no titles or no package can be built.
[[nodiscard]] DiscScanResult describeDvd(const dvdmeta::DvdDisc* disc);

}  // namespace scan
