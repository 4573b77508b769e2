// The report of a disc for people, in the words of the titles view.
#pragma once

#include "scan/disc_reader.h"

#include <QString>

namespace report {

// Makes the report from a disc and the `result` of scan::describeDisc(), one fact a line: the disc's identity, totals
// and package, then, each after an empty line, the titles with their streams indented below them. Characters of the
// path and of the disc's texts that are not printable could move a terminal's cursor or begin a line; they are
// written as \x1b, \u202e or \U000e0001.
[[nodiscard]] QString textReport(const QString& path, const scan::ParsedDisc& disc,
                                 const DiscScanResult& result);

}  // namespace report
