// Tables that the tests of this folder read from files beside them.
#pragma once

#include <QByteArrayList>
#include <QFile>

#include <gtest/gtest.h>

inline QByteArray readFile(const char* name)
{
    QFile file(QStringLiteral(PLATTERSCOPE_SERVICE_TABLES "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

// The lines of a table and their cells, which tabs separate. "%0A" stands for the byte 0x0A, and so on.
inline QList<QByteArrayList> readTable(const char* name)
{
    QList<QByteArrayList> rows;
    for (const QByteArray& line : readFile(name).trimmed().split('\n')) {
        rows.emplaceBack();
        for (const QByteArray& cell : line.split('\t')) {
            rows.last().append(QByteArray::fromPercentEncoding(cell));
        }
    }
    return rows;
}
