// The part of a scan that needs neither key nor network: reads a disc and derives its titles, totals and package.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "dvdmeta/dvd_disc.h"
#include "scan/disc_scan_result.h"

#include <QByteArray>

#include <variant>

namespace scan {

// A path that is no disc: the error of the Blu-ray reader, then that of the DVD reader.
struct NoDisc {
    QList<Message> readerErrors;
};

// A reader's message, with its arguments decoded from the system's 8-bit encoding.
[[nodiscard]] Message messageOf(const discio::Message& message);

// A disc of either kind, or none.
using ParsedDisc = std::variant<NoDisc, bdmeta::BlurayDisc, dvdmeta::DvdDisc>;

// Reads the disc directory or image at `localPath`, which is in the system's 8-bit encoding. Tries a Blu-ray first: a
// disc of both kinds is a Blu-ray. Logs its steps and, if there is no disc, the errors of both readers.
[[nodiscard]] ParsedDisc readDisc(const QByteArray& localPath);

// Describes a disc of either kind. `ok` stays 0 because no look-up has run. Returns an error result (discType None) if
// there is no disc, it has no titles or no package can be built.
[[nodiscard]] DiscScanResult describeDisc(const ParsedDisc& disc);

}  // namespace scan
