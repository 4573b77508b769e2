// The texts of the configurations view: the page's header, rows, and the details of a configuration's title.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace configurationtext {

// Two lines with the disc's kind and its id in the service, then the note of a successful result or the error of a
// failed one. The service's text is cut to four lines.
[[nodiscard]] QString header(const DiscScanResult& disc);

// The columns of a configuration's row, each one line.
[[nodiscard]] QString name(const service::DiscConfiguration& configuration);
[[nodiscard]] QString language(const service::DiscConfiguration& configuration);
[[nodiscard]] QString addedBy(const service::DiscConfiguration& configuration);

// The first column of a title's row.
[[nodiscard]] QString titleName(const service::ConfigurationTitle& title);

// The details of a title, one fact a line: first those of the configuration, then those of the disc's title, which is
// the first whose playlist id (Blu-ray) or title number (DVD) equals `title.id`.
[[nodiscard]] QString details(const service::ConfigurationTitle& title,
                              const service::DiscConfiguration& configuration, const DiscScanResult& disc);

}  // namespace configurationtext
