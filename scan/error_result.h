// The result of a scan that has no disc to show.
#pragma once

#include "scan/disc_scan_result.h"

namespace scan {

inline constexpr char kNoMemory[] =
    QT_TRANSLATE_NOOP("Messages", "There is not enough memory to read the disc.");

// Sets the result's error and its English text.
void setError(DiscScanResult& result, const Message& error);

// Logs the message as an error of component "platterscope". Returns a result with that error and nothing else.
[[nodiscard]] DiscScanResult errorResult(const Message& message);

}  // namespace scan
