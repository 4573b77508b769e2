// Reloads the configurations of a disc that has been scanned.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace scan {

// A copy of `previous` with the configurations that the service has now. Where that fails, its `ok` is 0, its
// `errorMessage` says why, and all else is as it was. Logs its steps and its failure under "tessera".
[[nodiscard]] DiscScanResult refreshConfigurations(const DiscScanResult& previous, const QString& apiKey);

}  // namespace scan
