#pragma once

#include "common/olvexexport.h"

// Command records: the only way the components ask the data acquisition service to do something.
// A command is one XML element written as text (not through an XML library, so that its exact
// spacing is under our control), posted as a message record under a record type.

#include <QDateTime>
#include <QList>
#include <QString>

namespace olvex {

class DataInterface;
class MessageLog;

// The record types a command is posted under.
namespace RecordType {
// Calibration commands: cal start settings, pending-cal answers, raised messages, cylinder fixes.
inline const QString Calibration = QStringLiteral("Q1DRCOMMAND-CAL");
// A write to a channel of the first-generation I/O kind.
inline const QString Q1Io = QStringLiteral("Q1IOCOMMAND");
// A write to a channel of the second-generation I/O kind.
inline const QString Q2Io = QStringLiteral("Q2IOCOMMAND");
} // namespace RecordType

// "&" -> "&amp;", "<" -> "&lt;", ">" -> "&gt;", '"' -> "&quot;", degree sign -> "&#176;".
OLVEX_CORE_EXPORT QString XmlEscape(const QString &text);

// One <Item id=".." newValue=".." /> child of a command.
struct OLVEX_CORE_EXPORT CommandItem
{
    QString id;
    QString newValue;

    // Yes/no items are written "1" / "0".
    static CommandItem flag(const QString &id, bool value);
};

// The attributes of one command element, in the order they are added. Text values are escaped
// as they are added; numbers and formatted dates go in as they are.
//
// Three joinings are in use, and each sender keeps its own:
//   singleLine():  <Command action="X" pid="001234567" />
//   withItems():   "<Command ", "action=\"X\" ", ..., "clientIP=\"..\">", item lines,
//                  "</Command>", joined by CR LF
//   blankJoined(): "<Command ", "action=\"X\" ", ..., "/>" joined by one blank, so that two
//                  blanks stand between the attributes
class OLVEX_CORE_EXPORT CommandBuilder
{
public:
    // action is always the first attribute. element is "Command" for every command but the
    // auto-cal log line.
    explicit CommandBuilder(const QString &action, QString element = QStringLiteral("Command"));

    // Escaped text value: names, user, address, free text.
    CommandBuilder &addText(const QString &name, const QString &value);
    // Value written as it stands: numbers and formatted dates, never outside text.
    CommandBuilder &addRaw(const QString &name, const QString &value);
    CommandBuilder &addNumber(const QString &name, qint64 value);
    // The PID in plain form ("001234567"); empty when the number is no valid PID.
    CommandBuilder &addPid(const QString &name, qint64 pid);
    // "yyyy/MM/dd HH:mm"; empty for an invalid date.
    CommandBuilder &addDate(const QString &name, const QDateTime &value);
    // "0x" + upper-case hexadecimal digits of the 32-bit value (24577 -> "0x6001").
    CommandBuilder &addHex(const QString &name, quint32 value);
    // The user's name and the client's address of the data interface, as user and clientIP.
    // Host errors propagate to the caller's handler.
    CommandBuilder &addEnvelope(DataInterface &dataInterface);
    // One more blank before the next attribute in singleLine(), where a command's layout has it.
    CommandBuilder &extraBlank();

    QString element() const { return m_element; }
    // The value of an attribute as it will be written (escaped); empty when absent.
    QString attributeValue(const QString &name) const;

    QString singleLine() const;
    QString withItems(const QList<CommandItem> &items) const;
    QString blankJoined() const;

private:
    struct Attribute
    {
        QString name;
        QString value; // already escaped
        int blanksBefore = 1;
    };
    CommandBuilder &add(const QString &name, const QString &escapedValue);
    static QString attributeText(const Attribute &attribute);

    QString m_element;
    QList<Attribute> m_attributes;
    int m_pendingExtraBlanks = 0;
};

// The name of the data interface's current user; empty when it has none.
OLVEX_CORE_EXPORT QString CommandUserName(DataInterface &dataInterface);
// The client computer's address as the data interface reports it.
OLVEX_CORE_EXPORT QString CommandClientAddress(DataInterface &dataInterface);

// Posts one command record: site identifier, then the message-record writer, of the data
// interface; the two unused texts are empty. When the writer reports failure, failureLogText is
// logged with severity 4 (if a log is given) and false is returned; errorText, when given,
// receives the writer's error text. Exceptions of the data interface propagate; a failing log
// does not.
OLVEX_CORE_EXPORT bool PostCommand(DataInterface &dataInterface, MessageLog *log,
                                   const QString &recordType, const QString &text,
                                   const QString &sourceCode, const QString &failureLogText,
                                   QString *errorText = nullptr);

} // namespace olvex
