#pragma once

#include <QLocale>
#include <QString>

#include <cstdint>

namespace vrkview {

/// "1 point", "12,345 points".
inline QString counted(std::uint64_t number, const QString& one, const QString& many)
{
    return QLocale(QLocale::English).toString(static_cast<qulonglong>(number)) + ' ' + (number == 1 ? one : many);
}

} // namespace vrkview
