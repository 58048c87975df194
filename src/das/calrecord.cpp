#include "das/calrecord.h"

#include "common/command.h"
#include "common/error.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/xml.h"
#include "host/sitestore.h"
#include "host/storeerrors.h"

#include <QHash>

namespace olvex {

namespace {

// Where one direct child of CalStart stands in the text.
struct ChildSpan
{
    qsizetype tagStart = 0;     // its '<'
    qsizetype contentStart = 0; // after its start tag
    qsizetype contentEnd = 0;   // its end tag's '<' (== contentStart when self-closing)
    qsizetype end = 0;          // after its end tag
    bool selfClosing = false;
};

struct CalStartLayout
{
    QHash<QString, ChildSpan> children; // the first child of each name
    qsizetype closeTag = -1;            // the '<' of </CalStart>
    qsizetype lastChildStart = -1;
};

[[noreturn]] void refuse(const QString &why)
{
    throw Error(StoreError::InvalidRequest, why);
}

qsizetype skipPast(const QString &xml, qsizetype from, QStringView marker)
{
    const qsizetype at = xml.indexOf(marker, from);
    if (at < 0) {
        refuse(QStringLiteral("the calibration start record is not well-formed XML"));
    }
    return at + marker.size();
}

QString tagName(const QString &xml, qsizetype from)
{
    qsizetype end = from;
    while (end < xml.size()) {
        const QChar c = xml.at(end);
        if (c.isSpace() || c == u'/' || c == u'>') {
            break;
        }
        ++end;
    }
    return xml.mid(from, end - from);
}

// The end of a start tag: its '>', stepping over quoted attribute values.
qsizetype startTagEnd(const QString &xml, qsizetype from)
{
    QChar quote;
    for (qsizetype i = from; i < xml.size(); ++i) {
        const QChar c = xml.at(i);
        if (!quote.isNull()) {
            if (c == quote) {
                quote = QChar();
            }
        } else if (c == u'"' || c == u'\'') {
            quote = c;
        } else if (c == u'>') {
            return i;
        }
    }
    refuse(QStringLiteral("the calibration start record is not well-formed XML"));
}

// A small scan of text that libxml2 has already accepted as well-formed: it only needs to find
// the tags, not to check them.
CalStartLayout scanLayout(const QString &xml)
{
    CalStartLayout layout;
    QStringList open;
    qsizetype calStartDepth = -1;
    qsizetype i = 0;
    ChildSpan *current = nullptr;
    while (true) {
        const qsizetype lt = xml.indexOf(u'<', i);
        if (lt < 0) {
            break;
        }
        const QStringView rest = QStringView(xml).mid(lt);
        if (rest.startsWith(u"<!--")) {
            i = skipPast(xml, lt, u"-->");
        } else if (rest.startsWith(u"<![CDATA[")) {
            i = skipPast(xml, lt, u"]]>");
        } else if (rest.startsWith(u"<?")) {
            i = skipPast(xml, lt, u"?>");
        } else if (rest.startsWith(u"<!")) {
            i = skipPast(xml, lt, u">");
        } else if (rest.startsWith(u"</")) {
            i = skipPast(xml, lt, u">");
            if (calStartDepth >= 0 && open.size() == calStartDepth + 2 && current) {
                current->contentEnd = lt;
                current->end = i;
                current = nullptr;
            }
            if (!open.isEmpty()) {
                open.removeLast();
            }
            if (calStartDepth >= 0 && open.size() == calStartDepth) {
                layout.closeTag = lt;
                return layout;
            }
        } else {
            const qsizetype gt = startTagEnd(xml, lt);
            const bool selfClosing = xml.at(gt - 1) == u'/';
            const QString name = tagName(xml, lt + 1);
            if (calStartDepth >= 0 && open.size() == calStartDepth + 1) {
                layout.lastChildStart = lt;
                if (!layout.children.contains(name)) {
                    const ChildSpan span{lt, gt + 1, gt + 1, gt + 1, selfClosing};
                    auto inserted = layout.children.insert(name, span);
                    current = selfClosing ? nullptr : &inserted.value();
                }
            }
            if (!selfClosing) {
                if (calStartDepth < 0 && name == u"CalStart") {
                    calStartDepth = open.size();
                }
                open.append(name);
            } else if (calStartDepth < 0 && name == u"CalStart") {
                // An empty <CalStart/>: open it up so that elements can be added.
                layout.closeTag = lt;
                return layout;
            }
            i = gt + 1;
        }
    }
    refuse(QStringLiteral("the record holds no CalStart element"));
}

QString indentBefore(const QString &xml, qsizetype at)
{
    qsizetype start = at;
    while (start > 0 && (xml.at(start - 1) == u' ' || xml.at(start - 1) == u'\t')) {
        --start;
    }
    return xml.mid(start, at - start);
}

} // namespace

QString editCalStartElements(const QString &xml, const QList<CalRecordEdit> &edits)
{
    if (LoadXmlDocument(nullptr, xml).selectSingleNode(QStringLiteral("//CalStart")).isNull()) {
        refuse(QStringLiteral("the calibration start record is not well-formed XML or holds no "
                              "CalStart element"));
    }
    QString out = xml;
    // Applied from the end of the text backwards, so the spans found first stay valid.
    struct Replacement
    {
        qsizetype from;
        qsizetype to;
        QString text;
    };
    QList<Replacement> replacements;
    const CalStartLayout layout = scanLayout(xml);
    QStringList added;
    for (const CalRecordEdit &edit : edits) {
        const QString escaped = XmlEscape(edit.text);
        const auto it = layout.children.constFind(edit.element);
        if (it == layout.children.cend()) {
            added.append(u'<' + edit.element + u'>' + escaped + u"</" + edit.element + u'>');
            continue;
        }
        const ChildSpan &span = *it;
        if (span.selfClosing) {
            // <Name/> or <Name a="1"/>: keep the attributes, open the element up.
            const QString startTag = xml.mid(span.tagStart, span.contentStart - span.tagStart);
            replacements.append(
                {span.tagStart, span.end,
                 startTag.chopped(2).trimmed() + u'>' + escaped + u"</" + edit.element + u'>'});
        } else {
            replacements.append({span.contentStart, span.contentEnd, escaped});
        }
    }
    if (!added.isEmpty()) {
        const qsizetype closeEnd = xml.indexOf(u'>', layout.closeTag) + 1;
        if (xml.at(layout.closeTag + 1) != u'/') {
            // <CalStart/>
            replacements.append({layout.closeTag, closeEnd,
                                 u"<CalStart>" + added.join(QString()) + u"</CalStart>"});
        } else {
            // A close tag on a line of its own: one line per new element, indented like the
            // last sibling, so that the record still reads as it was written.
            const QString closeIndent = indentBefore(xml, layout.closeTag);
            const qsizetype lineStart = layout.closeTag - closeIndent.size();
            const bool ownLine = lineStart == 0 || xml.at(lineStart - 1) == u'\n';
            if (ownLine) {
                const QString indent = layout.lastChildStart >= 0
                                           ? indentBefore(xml, layout.lastChildStart)
                                           : closeIndent;
                const QString lineEnd
                    = xml.contains(u"\r\n") ? QStringLiteral("\r\n") : QStringLiteral("\n");
                QString lines;
                for (const QString &element : std::as_const(added)) {
                    lines += indent + element + lineEnd;
                }
                replacements.append({lineStart, lineStart, lines});
            } else {
                replacements.append({layout.closeTag, layout.closeTag, added.join(QString())});
            }
        }
    }
    std::sort(replacements.begin(), replacements.end(),
              [](const Replacement &a, const Replacement &b) { return a.from > b.from; });
    for (const Replacement &r : replacements) {
        out.replace(r.from, r.to - r.from, r.text);
    }
    return out;
}

QString readCalRecord(SiteStore &store, qint32 pid)
{
    const std::optional<ParameterRecord> parameter = store.parameter(pid);
    if (!parameter) {
        throw Error(StoreError::UnknownPid, u"PID " + FormatPid(pid) + u" has no definition");
    }
    if (parameter->type != ParameterTypes::Calibration) {
        throw Error(StoreError::InvalidRequest,
                    u"PID " + FormatPid(pid) + u" is no calibration parameter");
    }
    return store.liveState(pid).current.Value.toText();
}

void writeCalRecord(SiteStore &store, qint32 pid, const QString &text, const Actor &who,
                    const QString &source)
{
    Transaction transaction(store.sql(), SqlConnection::TransactionKind::Write);
    store.setCurrentValue(pid, Value(text), 0, who, source);
    store.setCurrentData(pid, QStringLiteral("1m"), text, 0);
    transaction.commit();
}

QString editCalRecord(SiteStore &store, qint32 pid, const QList<CalRecordEdit> &edits,
                      const Actor &who, const QString &source)
{
    const QString before = readCalRecord(store, pid);
    if (before.isEmpty()) {
        throw Error(StoreError::InvalidRequest,
                    u"PID " + FormatPid(pid) + u" has no calibration start record");
    }
    const QString after = editCalStartElements(before, edits);
    if (after != before) {
        writeCalRecord(store, pid, after, who, source);
    }
    return after;
}

std::optional<QString> calStartElement(const QString &xml, const QString &element)
{
    const XmlDocument document = LoadXmlDocument(nullptr, xml);
    const XmlNode node = document.selectSingleNode(u"//CalStart/" + element);
    if (node.isNull()) {
        return std::nullopt;
    }
    return node.text();
}

} // namespace olvex
