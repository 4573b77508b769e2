// The texts of the configurations view: the page's header, rows, and the details of a configuration's title.
#pragma once

#include "scan/disc_scan_result.h"

#include <QString>

namespace configurationtext {

// Disc kind and id, a line each; behind them the note of a result that is ok, or the error of one that is not.
[[nodiscard]] QString header(const DiscScanResult& disc);

// The columns of a configuration's row.
[[nodiscard]] QString name(const service::DiscConfiguration& configuration);
[[nodiscard]] QString language(const service::DiscConfiguration& configuration);
[[nodiscard]] QString addedBy(const service::DiscConfiguration& configuration);

// The first column of a title's row.
[[nodiscard]] QString titleName(const service::ConfigurationTitle& title);

// The details of a title: what the configuration says of it, then what the disc does. The disc's title is the
// first one whose playlist id or title number is the title's id.
[[nodiscard]] QString details(const service::ConfigurationTitle& title,
                              const service::DiscConfiguration& configuration, const DiscScanResult& disc);

}  // namespace configurationtext
