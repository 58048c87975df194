#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace olvex {

class SiteStore;
struct Actor;

// The service's side of a calibration parameter's calibration start record: the XML text value
// of the parameter, which the service owns. Its current value and its "1m" current-data item
// always carry the same text, so the calibration start control (which reads the value) and the
// confirmation panel (which reads the current data) see one record.
//
// Edits touch only the text of the elements they name: every other byte of the record stays as
// it was, including elements this service does not know.

// One element of the record's CalStart element and its new text (unescaped).
struct CalRecordEdit
{
    QString element;
    QString text;
};

// The record text with the edits applied to the direct children of the first CalStart element;
// an element that is missing is added before </CalStart>, indented like its last sibling.
// Throws olvex::Error (InvalidRequest) when the text is not well-formed XML or holds no CalStart
// element.
QString editCalStartElements(const QString &xml, const QList<CalRecordEdit> &edits);

// The record of a calibration parameter; an empty text when the parameter has no value. Throws
// olvex::Error (UnknownPid, InvalidRequest) when pid is no calibration parameter.
QString readCalRecord(SiteStore &store, qint32 pid);

// Stores text as the parameter's current value (with its audit row) and as its "1m" item, in
// one transaction (or the caller's).
void writeCalRecord(SiteStore &store, qint32 pid, const QString &text, const Actor &who,
                    const QString &source);

// readCalRecord, editCalStartElements and writeCalRecord in one go; returns the new text.
// Nothing is written when the edits change nothing.
QString editCalRecord(SiteStore &store, qint32 pid, const QList<CalRecordEdit> &edits,
                      const Actor &who, const QString &source);

// The text of //CalStart/<element> of a record; nullopt when the element is missing or the
// text does not load.
std::optional<QString> calStartElement(const QString &xml, const QString &element);

} // namespace olvex
