#pragma once
// Readable gtest output for Qt and project types; force-included into every test program.

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>
#include <ostream>

inline void PrintTo(const QString &s, std::ostream *os)
{
    *os << '"' << s.toStdString() << '"';
}

inline void PrintTo(const QStringList &list, std::ostream *os)
{
    *os << '{';
    for (qsizetype i = 0; i < list.size(); ++i) {
        *os << (i ? ", \"" : "\"") << list[i].toStdString() << '"';
    }
    *os << '}';
}

inline void PrintTo(const QDateTime &dt, std::ostream *os)
{
    *os << dt.toString(Qt::ISODateWithMs).toStdString();
}

namespace olvex {
class Value;
// Beside Value so that gtest finds it; defined in the test main, so this header needs no
// project include.
void PrintTo(const Value &value, std::ostream *os);
} // namespace olvex
