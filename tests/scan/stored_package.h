// What the local service keeps of a disc.
#pragma once

#include <QByteArray>

#include <sqlite3.h>

#include <memory>
#include <string>

// The package of the service's one disc, which it keeps as the zlib stream it came in.
inline QByteArray storedPackage(const std::string& databasePath)
{
    sqlite3* opened = nullptr;
    sqlite3_open_v2(databasePath.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(opened, "SELECT package FROM discs", -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared, sqlite3_finalize);
    if (sqlite3_step(prepared) != SQLITE_ROW) { return {}; }
    const QByteArray stream(static_cast<const char*>(sqlite3_column_blob(prepared, 0)),
                            sqlite3_column_bytes(prepared, 0));
    return qUncompress(QByteArray::fromHex("00010000") + stream);  // a hint of the size, then the stream
}
