#include "common/command.h"

#include "common/host.h"
#include "common/pid.h"

#include <QStringList>

namespace olvex {

QString XmlEscape(const QString &text)
{
    // "&" must go first so the other replacements' own ampersands stay as they are.
    QString escaped = text;
    if (escaped.contains(u'&')) {
        escaped.replace(u'&', QStringLiteral("&amp;"));
    }
    if (escaped.contains(u'<')) {
        escaped.replace(u'<', QStringLiteral("&lt;"));
    }
    if (escaped.contains(u'>')) {
        escaped.replace(u'>', QStringLiteral("&gt;"));
    }
    if (escaped.contains(u'"')) {
        escaped.replace(u'"', QStringLiteral("&quot;"));
    }
    if (escaped.contains(QChar(0x00B0))) {
        escaped.replace(QChar(0x00B0), QStringLiteral("&#176;"));
    }
    return escaped;
}

CommandItem CommandItem::flag(const QString &id, bool value)
{
    return {id, value ? QStringLiteral("1") : QStringLiteral("0")};
}

CommandBuilder::CommandBuilder(const QString &action, QString element)
    : m_element(std::move(element))
{
    addText(QStringLiteral("action"), action);
}

CommandBuilder &CommandBuilder::add(const QString &name, const QString &escapedValue)
{
    m_attributes.append({name, escapedValue, 1 + m_pendingExtraBlanks});
    m_pendingExtraBlanks = 0;
    return *this;
}

CommandBuilder &CommandBuilder::addText(const QString &name, const QString &value)
{
    return add(name, XmlEscape(value));
}

CommandBuilder &CommandBuilder::addRaw(const QString &name, const QString &value)
{
    return add(name, value);
}

CommandBuilder &CommandBuilder::addNumber(const QString &name, qint64 value)
{
    return add(name, QString::number(value));
}

CommandBuilder &CommandBuilder::addPid(const QString &name, qint64 pid)
{
    return add(name, FormatPidPlain(pid));
}

CommandBuilder &CommandBuilder::addDate(const QString &name, const QDateTime &value)
{
    // QDateTime::toString with a pattern writes ASCII digits whatever the locale.
    return add(name,
               value.isValid() ? value.toString(QStringLiteral("yyyy/MM/dd HH:mm")) : QString());
}

CommandBuilder &CommandBuilder::addHex(const QString &name, quint32 value)
{
    return add(name, u"0x" + QString::number(value, 16).toUpper());
}

CommandBuilder &CommandBuilder::addEnvelope(DataInterface &dataInterface)
{
    addText(QStringLiteral("user"), CommandUserName(dataInterface));
    return addText(QStringLiteral("clientIP"), CommandClientAddress(dataInterface));
}

CommandBuilder &CommandBuilder::extraBlank()
{
    ++m_pendingExtraBlanks;
    return *this;
}

QString CommandBuilder::attributeValue(const QString &name) const
{
    for (const Attribute &attribute : m_attributes) {
        if (attribute.name == name) {
            return attribute.value;
        }
    }
    return {};
}

QString CommandBuilder::attributeText(const Attribute &attribute)
{
    return attribute.name + u"=\"" + attribute.value + u'"';
}

QString CommandBuilder::singleLine() const
{
    QString text = u'<' + m_element;
    for (const Attribute &attribute : m_attributes) {
        text += QString(attribute.blanksBefore, u' ') + attributeText(attribute);
    }
    return text + u" />";
}

QString CommandBuilder::withItems(const QList<CommandItem> &items) const
{
    QStringList lines;
    lines.reserve(m_attributes.size() + items.size() + 2);
    lines.append(u'<' + m_element + u' ');
    for (qsizetype i = 0; i < m_attributes.size(); ++i) {
        const bool last = i + 1 == m_attributes.size();
        lines.append(attributeText(m_attributes.at(i)) + (last ? u'>' : u' '));
    }
    for (const CommandItem &item : items) {
        lines.append(u"<Item id=\"" + XmlEscape(item.id) + u"\" newValue=\""
                     + XmlEscape(item.newValue) + u"\" />");
    }
    lines.append(u"</" + m_element + u'>');
    return lines.join(u"\r\n");
}

QString CommandBuilder::blankJoined() const
{
    QStringList pieces;
    pieces.reserve(m_attributes.size() + 2);
    pieces.append(u'<' + m_element + u' ');
    for (const Attribute &attribute : m_attributes) {
        pieces.append(attributeText(attribute) + u' ');
    }
    pieces.append(QStringLiteral("/>"));
    return pieces.join(u' ');
}

QString CommandUserName(DataInterface &dataInterface)
{
    const std::shared_ptr<User> user = dataInterface.GetUser();
    return user ? user->UserName() : QString();
}

QString CommandClientAddress(DataInterface &dataInterface)
{
    return dataInterface.ClientAddress();
}

bool PostCommand(DataInterface &dataInterface, MessageLog *log, const QString &recordType,
                 const QString &text, const QString &sourceCode, const QString &failureLogText,
                 QString *errorText)
{
    const QString siteId = dataInterface.GetSiteId();
    const std::shared_ptr<MessageRecords> records = dataInterface.GetMessageRecords();
    QString writerError;
    bool ok = false;
    if (records) {
        records->PostMessageRecord(writerError, siteId, recordType, text, QString(), QString(),
                                   sourceCode, ok);
    } else {
        writerError = QStringLiteral("No message-record writer");
    }
    if (errorText) {
        *errorText = writerError;
    }
    if (!ok && log) {
        try {
            log->LogMessage(Severity::Error, failureLogText);
        } catch (...) {
            // The sender reports the failure through the result; a failing log adds nothing.
        }
    }
    return ok;
}

} // namespace olvex
