// The service's half of a scan, the same for both disc kinds: ask whether the disc is known, and add it where
// that was asked for.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// Looks up the disc whose kind, package and digest `result` carries, and adds it when the service does not
// know it and `addIfMissing` is set. Fills the service's fields of `result`. On failure `ok` stays 0 and
// `errorMessage` says why; titles and package stay, so that a user without a network still sees the disc.
void lookUpDisc(DiscScanResult& result, const QString& apiKey, bool addIfMissing);

}  // namespace scan
