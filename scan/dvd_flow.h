// From a parsed DVD to the titles and package of a scan result.
#pragma once

#include "dvdmeta/dvd_disc.h"
#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// The titles of the disc as the window shows them.
[[nodiscard]] QList<DvdTitleInfo> describeDvdTitles(const dvdmeta::DvdDisc& disc);

// Titles, totals, package and digest of a parsed disc: all that needs neither key nor network. `ok` stays 0,
// since no lookup has run. An error result (discType None) when there is nothing to show or no package can be
// built.
[[nodiscard]] DiscScanResult describeDvd(const dvdmeta::DvdDisc* disc);

}  // namespace scan
