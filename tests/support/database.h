// Access to the local service's database, bypassing the service.
#pragma once

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <stdexcept>
#include <string>

namespace testsupport {

// Runs one statement on the database `path` and returns the first value of its result, or "".
inline std::string firstValue(const std::string& path, const std::string& statement)
{
    std::string value;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(QString::fromStdString(path));
        QSqlQuery query(database.open() ? database : QSqlDatabase());
        query.exec(QString::fromStdString(statement));
        if (query.next()) { value = query.value(0).toByteArray().toStdString(); }
        if (query.lastError().isValid()) { throw std::runtime_error(query.lastError().text().toStdString()); }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
    return value;
}

}  // namespace testsupport
