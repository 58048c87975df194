#pragma once

#include "common/olvexexport.h"

// XML values of parameters (calibration start records, calibration state, pending
// confirmations) are read through these helpers. They wrap libxml2 in RAII handles and never
// throw: a document that does not load is a null handle plus a coded line in the message log.
//
// Parsing is hardened for text that arrives from outside: no network, no entity substitution, no
// DTD loading, no huge-document mode, and any document that carries a DOCTYPE is refused outright,
// so neither external entities nor entity expansion bombs can do anything. libxml2's own error
// printing is silenced for the duration of each call on the calling thread.

#include <QDateTime>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

// libxml2's own type names, declared here so that users of this header need not include it.
struct _xmlDoc;  // NOLINT(bugprone-reserved-identifier)
struct _xmlNode; // NOLINT(bugprone-reserved-identifier)

namespace olvex {

class MessageLog;

// One node of a loaded document: an element, an attribute, a text node or the document itself.
// The handle keeps its document alive, so it stays valid after the XmlDocument it came from is
// gone or has loaded other text.
class OLVEX_CORE_EXPORT XmlNode
{
public:
    XmlNode() = default;

    bool isNull() const { return m_node == nullptr; }
    explicit operator bool() const { return !isNull(); }

    // Element or attribute name; "#document", "#text", ... for the other kinds.
    QString name() const;
    // The text content (all descendant text of an element, the value of an attribute), as stored.
    QString text() const;
    // Value of an attribute of this element; empty when absent.
    QString attribute(const QString &name) const;

    // First node the XPath expression selects relative to this node; null when nothing matches,
    // the expression is invalid, or it yields no node set (e.g. "count(//a)").
    XmlNode selectSingleNode(const QString &path) const;
    QList<XmlNode> selectNodes(const QString &path) const;

private:
    friend class XmlDocument;
    XmlNode(std::shared_ptr<_xmlDoc> doc, _xmlNode *node);

    std::shared_ptr<_xmlDoc> m_doc;
    _xmlNode *m_node = nullptr;
};

// A document handle with shared ownership: copies refer to the same document.
class OLVEX_CORE_EXPORT XmlDocument
{
public:
    // A null handle (what the loaders give on failure).
    XmlDocument() = default;

    bool isNull() const { return m_doc == nullptr; }
    explicit operator bool() const { return !isNull(); }

    // Replaces the content by the parsed text. On failure the document is left empty (no root
    // element) and false is returned. Never throws except std::bad_alloc.
    bool loadXml(const QString &text);

    // The document node: the context for absolute and relative paths alike.
    XmlNode node() const;
    // The root element; null when the document is empty.
    XmlNode documentElement() const;
    XmlNode selectSingleNode(const QString &path) const { return node().selectSingleNode(path); }
    QList<XmlNode> selectNodes(const QString &path) const { return node().selectNodes(path); }

    // Serialised text of the document (UTF-8 declaration omitted); empty for a null handle.
    QString toXml() const;

private:
    friend XmlDocument NewXmlDocument();
    explicit XmlDocument(std::shared_ptr<_xmlDoc> doc);

    std::shared_ptr<_xmlDoc> m_doc;
};

// A new, empty document ready to load text.
OLVEX_CORE_EXPORT XmlDocument NewXmlDocument();

// The parsed document, or a null handle. Failures are logged (severity 4) when log is given.
OLVEX_CORE_EXPORT XmlDocument LoadXmlDocument(MessageLog *log, const QString &text);

// Loads text that may be several sibling elements or plain text, wrapped in a fixed root
// element (FragmentRootName). Failures are logged (severity 4) when log is given.
OLVEX_CORE_EXPORT XmlDocument LoadXmlFragment(MessageLog *log, const QString &text);

inline constexpr char16_t FragmentRootName[] = u"Z76335016_A23E_E011_A164_0019B97C8595";

// Text of the first node the XPath path selects under node, trimmed; empty when there is none.
OLVEX_CORE_EXPORT QString GetNodeText(const XmlNode &node, const QString &path);
OLVEX_CORE_EXPORT QString GetNodeText(const XmlDocument &doc, const QString &path);

// The node's text as yes/no; nullopt when the node is missing, its text empty or not yes/no.
OLVEX_CORE_EXPORT std::optional<bool> GetNodeBool(const XmlNode &node, const QString &path);
OLVEX_CORE_EXPORT std::optional<bool> GetNodeBool(const XmlDocument &doc, const QString &path);

// The node's text read by ParseXmlDate; the zero date when missing, empty or unreadable.
OLVEX_CORE_EXPORT QDateTime GetNodeDate(const XmlNode &node, const QString &path);
OLVEX_CORE_EXPORT QDateTime GetNodeDate(const XmlDocument &doc, const QString &path);

// "2024-05-01T13:45:10.123" -> 2024-05-01 13:45:10 local time: every "T" becomes a blank and
// everything from the last "." on is dropped before the text is read. Unreadable: the zero date.
OLVEX_CORE_EXPORT QDateTime ParseXmlDate(const QString &text);

// The text itself when it has at most maxLength characters, else its first maxLength characters
// followed by "...".
OLVEX_CORE_EXPORT QString TruncateText(const QString &text, int maxLength);

} // namespace olvex
