// The one way a scan that came to nothing is reported.
#pragma once

#include "scan/disc_scan_result.h"

namespace scan {

// That memory ran out while a disc was read: a text that takes none to make.
[[nodiscard]] QString noMemoryText();

// Logs the message as an error of the program's own and returns a result that holds nothing but it. The second
// form needs no memory.
[[nodiscard]] DiscScanResult errorResult(const char* message);
[[nodiscard]] DiscScanResult errorResult(const QString& message);

}  // namespace scan
