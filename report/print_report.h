// The mode without a window: one disc, described on standard output.
#pragma once

#include <QByteArray>

namespace report {

enum class Format { Text, Json };

// Reads the disc at `given`, a path in the bytes that the system knows it by (see scan::discPathOf()), and writes its report to standard
// output, which gets nothing else and nothing at all where there is no disc. Needs neither key, network nor an
// application object. The program's exit status: 0, or 1 where the disc cannot be read or the report not be written,
// which standard error tells.
[[nodiscard]] int printReport(const QByteArray& given, Format format);

}  // namespace report
