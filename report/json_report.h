// A disc as a JSON document for other programs, in the form that docs/REPORT.md describes and
// docs/report.schema.json defines.
#pragma once

#include "scan/disc_reader.h"

#include <QByteArray>
#include <QString>

namespace report {

// The form's name. It gets another number when something is renamed, removed, or means something else; members may be
// added under the same one.
inline constexpr char kJsonSchema[] = "platterscope-report/1";

// The report, in UTF-8 and ended by a line break, of a disc and of what scan::describeDisc() made of it. Equal discs
// give equal bytes, whatever the locale.
//
// Every member is always there: a text that the disc does not give is empty. Bytes are lower-case hexadecimal digits. A
// text is read as UTF-8 (a DVD's language as Latin-1); U+FFFD stands for each byte that is none, so the identifying
// texts, which may be in any encoding, are there in bytes as well. A 64-bit number above 2^53 - 1, which many JSON
// readers would round, is a text of its decimal digits. Characters that could steer a terminal are escapes of JSON.
[[nodiscard]] QByteArray jsonReport(const QString& path, const scan::ParsedDisc& disc,
                                    const DiscScanResult& result);

}  // namespace report
