// From a path to a parsed disc, and from that to its titles, totals and package: all of a scan that needs neither key
// nor network.
#pragma once

#include "bdmeta/bluray_disc.h"
#include "dvdmeta/dvd_disc.h"
#include "scan/disc_scan_result.h"

#include <QByteArray>

#include <variant>

namespace scan {

// A path that is no disc, with the error of the Blu-ray reader and that of the DVD reader.
struct NoDisc {
    QStringList readerErrors;
};

// A disc of either kind, or none.
using ParsedDisc = std::variant<NoDisc, bdmeta::BlurayDisc, dvdmeta::DvdDisc>;

// Reads the disc directory or image at `localPath`, a path in the bytes that the system knows it by. A Blu-ray is tried
// first, so a disc that is both is one. Logs how far it comes, and where there is no disc the words of both readers.
[[nodiscard]] ParsedDisc readDisc(const QByteArray& localPath);

// Describes the disc as its kind does it. `ok` stays 0, since no lookup has run. An error result (discType None) where
// there is no disc, nothing to show in it, or no package can be built of it.
[[nodiscard]] DiscScanResult describeDisc(const ParsedDisc& disc);

}  // namespace scan
