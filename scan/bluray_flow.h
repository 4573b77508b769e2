// Makes the titles and the package of a scan result from a parsed Blu-ray disc.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "bdmeta/bluray_titles.h"
#include "scan/disc_scan_result.h"

#include <QString>

#include <span>

namespace scan {

// Converts the derived titles of the disc to the records that the window shows.
[[nodiscard]] QList<BlurayTitleInfo> describeBlurayTitles(const bdmeta::BlurayDisc& disc,
                                                          std::span<const bdmeta::BlurayTitle> titles);

// Returns titles, totals, package and digest of a parsed disc. `ok` stays 0 because no look-up has run. Returns an error
// result (discType None) if `disc` is null, has no titles or no package can be built.
[[nodiscard]] DiscScanResult describeBluray(const bdmeta::BlurayDisc* disc);

}  // namespace scan
