// Reloads the configurations of a scanned disc.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// Returns a copy of `previous` with the service's current configurations. On failure `ok` is 0, `error` is set and
// everything else is unchanged. Logs its steps and its failure under "tessera".
[[nodiscard]] DiscScanResult refreshConfigurations(const DiscScanResult& previous, const QString& apiKey);

}  // namespace scan
