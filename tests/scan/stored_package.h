// What the local service keeps of a disc.
#pragma once

#include "tests/support/database.h"

// The package of the service's one disc, which it keeps as the zlib stream it came in.
inline QByteArray storedPackage(const std::string& databasePath)
{
    const std::vector<QByteArray> row = testsupport::firstRow(databasePath, "SELECT package FROM discs");
    return row.empty() ? QByteArray() : qUncompress(QByteArray::fromHex("00010000") + row[0]);  // a hint of the size
}
