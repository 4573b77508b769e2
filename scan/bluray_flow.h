// From a parsed Blu-ray disc to the titles and package of a scan result.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "bdmeta/bluray_titles.h"
#include "scan/disc_scan_result.h"

#include <QString>

#include <span>

namespace scan {

// The derived titles of the disc as the window shows them.
[[nodiscard]] QList<BlurayTitleInfo> describeBlurayTitles(const bdmeta::BlurayDisc& disc,
                                                          std::span<const bdmeta::BlurayTitle> titles);

// Titles, totals, package and digest of a parsed disc: all that needs neither key nor network. `ok` stays 0,
// since no lookup has run. An error result (discType None) when there is nothing to show or no package can be
// built.
[[nodiscard]] DiscScanResult describeBluray(const bdmeta::BlurayDisc* disc);

}  // namespace scan
