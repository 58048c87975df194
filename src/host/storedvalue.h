#pragma once

#include "common/value.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVariant>

#include <array>

namespace olvex {

// A Value as the store keeps it: its kind in one column and its content as text in another,
// so every kind comes back exactly (Null is not Empty, 1 is not 1.0, a date stays a date):
//   Empty, Null   no text (SQL NULL)
//   Boolean       "1" or "0"
//   Integer       decimal digits
//   Double        the shortest text that reads back to the same double ("inf", "nan" too)
//   Text          as it stands
//   DateTime      "yyyy-MM-ddTHH:mm:ss.zzz" local calendar time ("Z" appended for UTC values;
//                 empty text for an invalid date-time)
//   Array         a JSON array of [kind, text] pairs, elements encoded by these same rules
// The kind numbers are Value::Kind's and are part of the file format: never renumber them.
struct StoredValue
{
    int kind = 0;
    QVariant text; // a null QString for Empty and Null
};

StoredValue encodeValue(const Value &value);
// Throws olvex::Error (StoreError::SqlFailed) for an unknown kind or unreadable text: a site
// that holds such a value was damaged outside this program.
Value decodeValue(int kind, const QString &text);
Value decodeValue(int kind, const QVariant &text);

// Local date-time texts of one batch read, each distinct date-time converted once. Building a
// local QDateTime consults the system's time-zone rules (and, on Linux, the zone file) every
// time, which costs more than the rest of a row; in a batch, values written together share
// their time, and a setting's date values repeat. Same results as dateTimeFromText.
class DateTimeTexts
{
public:
    // dateTimeFromText of the UTF-8 bytes of a text, as a batch read gets them.
    QDateTime fromUtf8(QByteArrayView text);

private:
    QHash<quint64, QDateTime> m_seen;    // by calendar fields, packed
    QHash<qint64, bool> m_offsetChanges; // by Julian day: does the UTC offset change that day?
    // The text converted last: a column of times mostly repeats the row before (the service
    // stores a scan's values at one time).
    std::array<char, 24> m_lastText{};
    qsizetype m_lastSize = -1;
    QDateTime m_last;
};

// decodeValue for a batch read: from the UTF-8 bytes of the text (a null view for SQL NULL),
// converting date-times through times.
Value decodeValue(int kind, QByteArrayView text, DateTimeTexts &times);

// Text for a NOT NULL column: Qt binds a null QString as SQL NULL, an empty one as ''.
inline QString notNull(const QString &text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

// Points in time of the queue and the logs: milliseconds since the epoch (UTC), comparable in
// SQL on both backends.
qint64 toStoreTime(const QDateTime &time);
QDateTime fromStoreTime(const QVariant &ms);

// Local date-time texts of current values ("yyyy-MM-ddTHH:mm:ss.zzz").
QString dateTimeText(const QDateTime &value);
QDateTime dateTimeFromText(const QString &text);

} // namespace olvex
