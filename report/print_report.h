// The mode without a window: prints the report of one disc.
#pragma once

#include <QByteArray>

namespace report {

enum class Format { Text, Json };

// Reads the disc at `given`, a path in the file system's encoding (see scan::discPathOf()), and writes its report to
// standard output. Needs no key, no network and no application object. Returns the exit status of the program: 0, or
// 1 if the disc cannot be read or the report cannot be written; then the reason is logged. Writes nothing else to
// standard output.
[[nodiscard]] int printReport(const QByteArray& given, Format format);

}  // namespace report
