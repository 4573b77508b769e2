// The report of a disc as a JSON document for other programs. docs/REPORT.md describes the format,
// docs/report.schema.json defines it.
#pragma once

#include "scan/disc_reader.h"

#include <QByteArray>
#include <QString>

namespace report {

// The name of the format. Its number changes when a member is renamed, removed or gets another meaning, but not when
// one is added.
inline constexpr char kJsonSchema[] = "platterscope-report/1";

// Makes the report from a disc and the `result` of scan::describeDisc(): UTF-8, with a line break at the end. Equal
// discs give equal bytes in every locale.
//
// No member is ever missing; a text that the disc does not have is empty. Bytes are lower-case hexadecimal digits.
// Texts are decoded as UTF-8 (a DVD's languages as Latin-1), with U+FFFD for invalid bytes; the report has the bytes of
// the identifying texts as well, because they may be in any encoding. A 64-bit number above 2^53 - 1, which many JSON
// readers would round, is a text of its decimal digits. Characters that a terminal could act on are JSON escapes.
[[nodiscard]] QByteArray jsonReport(const QString& path, const scan::ParsedDisc& disc,
                                    const DiscScanResult& result);

}  // namespace report
