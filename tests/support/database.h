// The local service's database, read and changed behind its back.
#pragma once

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <stdexcept>
#include <string>
#include <vector>

namespace testsupport {

// Runs one statement on the database `path` and returns the first row, its columns as bytes.
inline std::vector<QByteArray> firstRow(const std::string& path, const std::string& statement)
{
    std::vector<QByteArray> columns;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(QString::fromStdString(path));
        QSqlQuery query(database.open() ? database : QSqlDatabase());
        query.exec(QString::fromStdString(statement));
        if (query.next()) {
            for (int i = 0; i < query.record().count(); ++i) {
                columns.push_back(query.value(i).toByteArray());
            }
        }
        if (query.lastError().isValid()) { throw std::runtime_error(query.lastError().text().toStdString()); }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
    return columns;
}

}  // namespace testsupport
