#include "common/xml.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/host.h"
#include "common/value.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlsave.h>
#include <libxml/xpath.h>

#include <QByteArray>
#include <QRegularExpression>

#include <algorithm>
#include <climits>
#include <new>

namespace olvex {

namespace {

void initLibxml()
{
    // xmlInitParser must run once before any thread parses; a function-local static gives that.
    static const bool initialised = [] {
        xmlInitParser();
        return true;
    }();
    (void)initialised;
}

void discardGenericError(void *, const char *, ...) {}
void discardStructuredError(void *, xmlErrorPtr) {}

// Silences libxml2's error printing on this thread for the lifetime of the object. libxml2 keeps
// these handlers per thread, so other threads' settings are untouched; the previous handlers
// come back on destruction.
class ErrorSilencer
{
public:
    ErrorSilencer()
        : m_generic(xmlGenericError)
        , m_genericContext(xmlGenericErrorContext)
        , m_structured(xmlStructuredError)
        , m_structuredContext(xmlStructuredErrorContext)
    {
        xmlSetGenericErrorFunc(nullptr, &discardGenericError);
        xmlSetStructuredErrorFunc(nullptr, &discardStructuredError);
    }
    ~ErrorSilencer()
    {
        // The last error keeps copies of its texts; drop them so nothing lingers per thread.
        xmlResetLastError();
        xmlSetGenericErrorFunc(m_genericContext, m_generic);
        xmlSetStructuredErrorFunc(m_structuredContext, m_structured);
    }
    ErrorSilencer(const ErrorSilencer &) = delete;
    ErrorSilencer &operator=(const ErrorSilencer &) = delete;

private:
    xmlGenericErrorFunc m_generic;
    void *m_genericContext;
    xmlStructuredErrorFunc m_structured;
    void *m_structuredContext;
};

struct ParserContextDeleter
{
    void operator()(xmlParserCtxt *ctxt) const { xmlFreeParserCtxt(ctxt); }
};
using ParserContextPtr = std::unique_ptr<xmlParserCtxt, ParserContextDeleter>;

struct XPathContextDeleter
{
    void operator()(xmlXPathContext *ctx) const { xmlXPathFreeContext(ctx); }
};
struct XPathObjectDeleter
{
    void operator()(xmlXPathObject *obj) const { xmlXPathFreeObject(obj); }
};

struct DocDeleter
{
    void operator()(xmlDoc *doc) const { xmlFreeDoc(doc); }
};

std::shared_ptr<xmlDoc> adoptDoc(xmlDoc *doc)
{
    // shared_ptr's constructor frees the document itself if it cannot allocate its control block.
    return {doc, DocDeleter()};
}

// Set on the parser context (_private) so the SAX hook can flag a refused document.
struct ParseState
{
    bool doctypeRefused = false;
};

// Called when the parser meets "<!DOCTYPE name ...", before any internal subset is read. Nothing
// this system stores needs a DTD, and refusing it here keeps entity declarations, external
// subsets and expansion bombs out of reach.
void refuseDoctype(void *userData, const xmlChar *, const xmlChar *, const xmlChar *)
{
    auto *ctxt = static_cast<xmlParserCtxtPtr>(userData);
    if (auto *state = static_cast<ParseState *>(ctxt->_private)) {
        state->doctypeRefused = true;
    }
    xmlStopParser(ctxt);
}

constexpr int parseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING
                             | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA | XML_PARSE_IGNORE_ENC;

// The parsed document, or null. Text always reaches libxml2 as UTF-8, whatever the declaration
// inside it says: it arrived as a QString, so it has no byte encoding of its own any more.
std::shared_ptr<xmlDoc> parseText(const QString &text)
{
    initLibxml();
    const QByteArray utf8 = text.toUtf8();
    if (utf8.isEmpty() || utf8.size() > INT_MAX) {
        return {};
    }
    ErrorSilencer silencer;
    ParserContextPtr ctxt(xmlCreateMemoryParserCtxt(utf8.constData(), int(utf8.size())));
    if (!ctxt) {
        throw std::bad_alloc();
    }
    ParseState state;
    ctxt->_private = &state;
    xmlCtxtUseOptions(ctxt.get(), parseOptions);
    // Whatever the thread's libxml2 defaults say, these stay off.
    ctxt->replaceEntities = 0;
    ctxt->loadsubset = 0;
    ctxt->validate = 0;
    ctxt->pedantic = 0;
    ctxt->sax->internalSubset = &refuseDoctype;
    ctxt->sax->externalSubset = nullptr;
    ctxt->sax->resolveEntity = nullptr;
    ctxt->sax->serror = &discardStructuredError;
    ctxt->sax->error = nullptr;
    ctxt->sax->warning = nullptr;
    ctxt->sax->fatalError = nullptr;
    xmlSwitchEncoding(ctxt.get(), XML_CHAR_ENCODING_UTF8);

    xmlParseDocument(ctxt.get());

    std::shared_ptr<xmlDoc> doc = adoptDoc(ctxt->myDoc);
    ctxt->myDoc = nullptr;
    if (!ctxt->wellFormed || state.doctypeRefused || !doc || !xmlDocGetRootElement(doc.get())) {
        return {};
    }
    return doc;
}

void logQuietly(MessageLog *log, const QString &text) noexcept
{
    if (!log) {
        return;
    }
    try {
        log->LogMessage(Severity::Error, text);
    } catch (...) {
        // A failing log must not turn a tolerated XML problem into an error of the caller.
    }
}

QString fromXmlChars(const xmlChar *chars)
{
    return chars ? QString::fromUtf8(reinterpret_cast<const char *>(chars)) : QString();
}

struct XmlCharsDeleter
{
    void operator()(xmlChar *chars) const { xmlFree(chars); }
};
using XmlCharsPtr = std::unique_ptr<xmlChar, XmlCharsDeleter>;

QString nodeContent(const xmlNode *node)
{
    XmlCharsPtr content(xmlNodeGetContent(node));
    return fromXmlChars(content.get());
}

// Runs an XPath expression relative to node and hands each selected node to visit until it
// returns false. Namespace nodes are skipped: libxml2 builds them as copies owned by the result,
// so they cannot outlive it.
template<class Visit>
void evaluatePath(xmlDoc *doc, xmlNode *node, const QString &path, Visit &&visit)
{
    if (!doc || !node || path.isEmpty()) {
        return;
    }
    ErrorSilencer silencer;
    std::unique_ptr<xmlXPathContext, XPathContextDeleter> context(xmlXPathNewContext(doc));
    if (!context) {
        throw std::bad_alloc();
    }
    context->node = node;
    context->error = &discardStructuredError;
    const QByteArray expression = path.toUtf8();
    std::unique_ptr<xmlXPathObject, XPathObjectDeleter> result(xmlXPathEvalExpression(
        reinterpret_cast<const xmlChar *>(expression.constData()), context.get()));
    if (!result || result->type != XPATH_NODESET || !result->nodesetval) {
        return;
    }
    const xmlNodeSet *set = result->nodesetval;
    for (int i = 0; i < set->nodeNr; ++i) {
        xmlNode *selected = set->nodeTab[i];
        if (selected && selected->type != XML_NAMESPACE_DECL && !visit(selected)) {
            return;
        }
    }
}

// "2024-05-01 13:45:10", "2024-05-01 13:45" or "2024-05-01" as a local date and time; nullopt
// for any other text and for impossible dates.
std::optional<QDateTime> readIsoDateTime(const QString &text)
{
    static const QRegularExpression iso(QStringLiteral(
        "^([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})(?: +([0-9]{1,2}):([0-9]{2})(?::([0-9]{2}))?)?$"));
    const QRegularExpressionMatch match = iso.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const auto number = [&](int group) {
        return match.capturedView(group).toInt();
    };
    const QDate date(number(1), number(2), number(3));
    const QTime time = match.hasCaptured(4) ? QTime(number(4), number(5), number(6)) : QTime(0, 0);
    if (!date.isValid() || !time.isValid()) {
        return std::nullopt;
    }
    return QDateTime(date, time);
}

} // namespace

// --- XmlNode ---

XmlNode::XmlNode(std::shared_ptr<_xmlDoc> doc, _xmlNode *node)
    : m_doc(std::move(doc))
    , m_node(node)
{}

QString XmlNode::name() const
{
    if (!m_node) {
        return {};
    }
    switch (m_node->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE:
    case XML_PI_NODE:
        return fromXmlChars(m_node->name);
    case XML_TEXT_NODE:
        return QStringLiteral("#text");
    case XML_CDATA_SECTION_NODE:
        return QStringLiteral("#cdata-section");
    case XML_COMMENT_NODE:
        return QStringLiteral("#comment");
    case XML_DOCUMENT_NODE:
        return QStringLiteral("#document");
    default:
        return fromXmlChars(m_node->name);
    }
}

QString XmlNode::text() const
{
    if (!m_node) {
        return {};
    }
    try {
        return nodeContent(m_node);
    } catch (...) {
        return {};
    }
}

QString XmlNode::attribute(const QString &name) const
{
    if (!m_node || m_node->type != XML_ELEMENT_NODE) {
        return {};
    }
    try {
        const QByteArray key = name.toUtf8();
        XmlCharsPtr value(xmlGetProp(m_node, reinterpret_cast<const xmlChar *>(key.constData())));
        return fromXmlChars(value.get());
    } catch (...) {
        return {};
    }
}

XmlNode XmlNode::selectSingleNode(const QString &path) const
{
    XmlNode found;
    try {
        evaluatePath(m_doc.get(), m_node, path, [&](xmlNode *node) {
            found = XmlNode(m_doc, node);
            return false;
        });
    } catch (...) {
        return {};
    }
    return found;
}

QList<XmlNode> XmlNode::selectNodes(const QString &path) const
{
    QList<XmlNode> nodes;
    try {
        evaluatePath(m_doc.get(), m_node, path, [&](xmlNode *node) {
            nodes.append(XmlNode(m_doc, node));
            return true;
        });
    } catch (...) {
        return {};
    }
    return nodes;
}

// --- XmlDocument ---

XmlDocument::XmlDocument(std::shared_ptr<_xmlDoc> doc)
    : m_doc(std::move(doc))
{}

bool XmlDocument::loadXml(const QString &text)
{
    std::shared_ptr<xmlDoc> parsed = parseText(text);
    if (!parsed) {
        initLibxml();
        m_doc = adoptDoc(xmlNewDoc(reinterpret_cast<const xmlChar *>("1.0")));
        if (!m_doc) {
            throw std::bad_alloc();
        }
        return false;
    }
    m_doc = std::move(parsed);
    return true;
}

XmlNode XmlDocument::node() const
{
    if (!m_doc) {
        return {};
    }
    return {m_doc, reinterpret_cast<xmlNode *>(m_doc.get())};
}

XmlNode XmlDocument::documentElement() const
{
    if (!m_doc) {
        return {};
    }
    xmlNode *root = xmlDocGetRootElement(m_doc.get());
    return root ? XmlNode(m_doc, root) : XmlNode();
}

QString XmlDocument::toXml() const
{
    xmlNode *root = m_doc ? xmlDocGetRootElement(m_doc.get()) : nullptr;
    if (!root) {
        return {};
    }
    std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(), &xmlBufferFree);
    if (!buffer) {
        return {};
    }
    ErrorSilencer silencer;
    if (xmlNodeDump(buffer.get(), m_doc.get(), root, 0, 0) < 0) {
        return {};
    }
    return fromXmlChars(xmlBufferContent(buffer.get()));
}

// --- free functions ---

XmlDocument NewXmlDocument()
{
    initLibxml();
    std::shared_ptr<xmlDoc> doc = adoptDoc(xmlNewDoc(reinterpret_cast<const xmlChar *>("1.0")));
    if (!doc) {
        throw std::bad_alloc();
    }
    return XmlDocument(std::move(doc));
}

XmlDocument LoadXmlDocument(MessageLog *log, const QString &text)
{
    try {
        XmlDocument doc = NewXmlDocument();
        if (!doc.loadXml(text)) {
            logQuietly(log, u"XMLDOM-0001: Cannot parse XML document; " + TruncateText(text, 40));
            return {};
        }
        return doc;
    } catch (...) {
        try {
            logQuietly(log,
                       u"XMLDOM-0002: Cannot load XML; " + currentError().numberAndDescription());
        } catch (...) {
        }
        return {};
    }
}

XmlDocument LoadXmlFragment(MessageLog *log, const QString &text)
{
    try {
        const QString root = QString::fromUtf16(FragmentRootName);
        // Built around the text rather than by replacing a placeholder, so a "$" in the fragment
        // is kept as it stands.
        const QString wrapped = u'<' + root + u'>' + text + u"</" + root + u'>';
        XmlDocument doc = LoadXmlDocument(log, wrapped);
        if (!doc) {
            logQuietly(log, u"XMLDOM-0005: Cannot parse XML fragment; " + TruncateText(text, 40));
        }
        return doc;
    } catch (...) {
        try {
            logQuietly(log,
                       u"XMLDOM-0006: Cannot load XML; " + currentError().numberAndDescription());
        } catch (...) {
        }
        return {};
    }
}

QString GetNodeText(const XmlNode &node, const QString &path)
{
    // Text is read with white-space preservation off: surrounding blanks and line breaks of a
    // value are layout, not content.
    return node.selectSingleNode(path).text().trimmed();
}

QString GetNodeText(const XmlDocument &doc, const QString &path)
{
    return GetNodeText(doc.node(), path);
}

std::optional<bool> GetNodeBool(const XmlNode &node, const QString &path)
{
    try {
        const QString text = GetNodeText(node, path);
        if (text.isEmpty()) {
            return std::nullopt;
        }
        return Value(text).toBoolean();
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<bool> GetNodeBool(const XmlDocument &doc, const QString &path)
{
    return GetNodeBool(doc.node(), path);
}

QDateTime GetNodeDate(const XmlNode &node, const QString &path)
{
    try {
        const QString text = GetNodeText(node, path);
        if (text.isEmpty()) {
            return zeroDate();
        }
        return ParseXmlDate(text);
    } catch (...) {
        return zeroDate();
    }
}

QDateTime GetNodeDate(const XmlDocument &doc, const QString &path)
{
    return GetNodeDate(doc.node(), path);
}

QDateTime ParseXmlDate(const QString &text)
{
    try {
        QString local = text;
        local.replace(u'T', u' ');
        const qsizetype dot = local.lastIndexOf(u'.');
        if (dot >= 0) {
            local.truncate(dot);
        }
        local = local.trimmed();
        if (local.isEmpty()) {
            return zeroDate();
        }
        // The form the service writes comes first; it needs no locale.
        if (std::optional<QDateTime> iso = readIsoDateTime(local)) {
            return *iso;
        }
        // Every date and time has a digit; anything else is not worth the locale's formats.
        if (std::none_of(local.cbegin(), local.cend(), [](QChar c) { return c.isDigit(); })) {
            return zeroDate();
        }
        if (std::optional<QDateTime> parsed = parseDateText(local); parsed && parsed->isValid()) {
            return *parsed;
        }
        return zeroDate();
    } catch (...) {
        return zeroDate();
    }
}

QString TruncateText(const QString &text, int maxLength)
{
    if (maxLength < 0) {
        maxLength = 0;
    }
    if (text.size() <= maxLength) {
        return text;
    }
    return text.left(maxLength) + u"...";
}

} // namespace olvex
