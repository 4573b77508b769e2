// The service's part of a scan, the same for both disc kinds: look up the disc and, on request, add it.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// Looks up the disc of `result` by its kind, package and digest. Adds an unknown disc if `addIfMissing` is set. Fills the
// service's fields of `result`. On failure `ok` stays 0 and `error` is set; titles and package stay, so that a user
// without a network sees the disc.
void lookUpDisc(DiscScanResult& result, const QString& apiKey, bool addIfMissing);

}  // namespace scan
