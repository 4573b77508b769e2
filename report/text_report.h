// A disc in words for people, worded like the titles view.
#pragma once

#include "scan/disc_reader.h"

#include <QString>

namespace report {

// The report, a fact on each line, of a disc and of what scan::describeDisc() made of it: the disc's identity, totals
// and package, and behind an empty line each title with its streams indented below it. Whatever of the path and of the
// disc's texts is no printable character, and so could move a terminal's cursor or begin a line, is written as \x1b,
// \u202e or \U000e0001.
[[nodiscard]] QString textReport(const QString& path, const scan::ParsedDisc& disc,
                                 const DiscScanResult& result);

}  // namespace report
