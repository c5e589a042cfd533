#pragma once

#include <QtTest>

/// Makes a table of texts for a test: @p columns are the names of the columns, and each of @p rows is the name of the
/// row and its texts, of which the last may be left out when they are empty.
inline void AddRows(std::initializer_list<const char*> columns, const QList<QStringList>& rows)
{
    for (const char* column : columns) // which Qt does not copy
        QTest::addColumn<QString>(column);
    for (const QStringList& row : rows) {
        QTestData& data = QTest::newRow(qPrintable(row.first()));
        for (int column = 1; column <= static_cast<int>(columns.size()); ++column)
            data << row.value(column);
    }
}
