#pragma once

#include <QDir>
#include <QStringList>

#include <functional>

/// The paths of the entries of @p folder, which ends in "/", in the order of QDir::Size | QDir::Reversed: the smallest
/// first, of equal ones the last name. Unlike QDir, it asks @p goOn now and then while it reads a folder of many
/// thousands, and once more at the end; on a no it returns nothing.
QStringList EntriesBySize(const QString& folder, QDir::Filters filters, const std::function<bool()>& goOn);
