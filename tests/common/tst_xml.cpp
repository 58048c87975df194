#include "common/datetime.h"
#include "common/xml.h"
#include "support/fake_log.h"

#include <gtest/gtest.h>

#include <libxml/xmlerror.h>

#include <QDir>
#include <QTemporaryFile>
#include <QUrl>

#include <optional>

namespace olvex {
namespace {

const QString kRecord
    = QStringLiteral("<Root>\n"
                     "  <CalStart>\n"
                     "    <CalEnabled ioid=\"C17\">True</CalEnabled>\n"
                     "    <CalStartTimeUser>\n      06:50  \n    </CalStartTimeUser>\n"
                     "    <ManualCalStartSupported ioid=\"C12\">1</ManualCalStartSupported>\n"
                     "    <SkipIfOffline/>\n"
                     "    <Unit>Unit &amp; 1 at 25&#176;C</Unit>\n"
                     "    <Nested><Inner>a</Inner><Inner>b</Inner></Nested>\n"
                     "  </CalStart>\n"
                     "</Root>");

TEST(XmlLoad, AcceptsWellFormedAndRefusesTheRest)
{
    struct Case
    {
        const char *name;
        QString text;
        bool loads;
    };
    const QList<Case> cases = {
        {"record", kRecord, true},
        {"single empty element", QStringLiteral("<a/>"), true},
        {"declaration naming another encoding",
         QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>x</a>"), true},
        {"non-latin text", QStringLiteral("<a>\u00e9\u4e2d\U0001F600</a>"), true},
        {"empty text", QString(), false},
        {"blanks only", QStringLiteral("   \n"), false},
        {"plain text", QStringLiteral("hello"), false},
        {"unclosed element", QStringLiteral("<a><b></a>"), false},
        {"two roots", QStringLiteral("<a/><b/>"), false},
        {"undeclared entity", QStringLiteral("<a>&nbsp;</a>"), false},
        {"bare ampersand", QStringLiteral("<a>x & y</a>"), false},
        {"simple doctype", QStringLiteral("<!DOCTYPE a><a/>"), false},
        {"doctype with internal subset", QStringLiteral("<!DOCTYPE a [<!ELEMENT a ANY>]><a/>"),
         false},
        {"embedded NUL", QStringLiteral("<a>x") + QChar(0) + QStringLiteral("</a>"), false},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        RecordingLog log;
        const XmlDocument doc = LoadXmlDocument(&log, c.text);
        EXPECT_EQ(!doc.isNull(), c.loads);
        if (c.loads) {
            EXPECT_TRUE(log.isEmpty());
            EXPECT_FALSE(doc.documentElement().isNull());
        } else {
            ASSERT_EQ(log.lines().size(), 1);
            EXPECT_EQ(log.lines().first().severity, 4);
            EXPECT_TRUE(
                log.lines().first().text.startsWith(u"XMLDOM-0001: Cannot parse XML document; "));
        }
    }
}

TEST(XmlLoad, LogsTheFirstFortyCharactersOfLongText)
{
    const QString text = QStringLiteral("<broken") + QString(93, u'x'); // 100 characters
    ASSERT_EQ(text.size(), 100);
    RecordingLog log;
    EXPECT_TRUE(LoadXmlDocument(&log, text).isNull());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines().first(),
              (LogLine{4, u"XMLDOM-0001: Cannot parse XML document; " + text.left(40) + u"..."}));
}

TEST(XmlLoad, WithoutLogOrWithFailingLogNothingEscapes)
{
    EXPECT_TRUE(LoadXmlDocument(nullptr, QStringLiteral("<a>")).isNull());
    EXPECT_TRUE(LoadXmlFragment(nullptr, QStringLiteral("<a>")).isNull());

    RecordingLog log;
    log.setFailure(Error(5, QStringLiteral("log is full")));
    EXPECT_NO_THROW({
        EXPECT_TRUE(LoadXmlDocument(&log, QStringLiteral("<a>")).isNull());
        EXPECT_TRUE(LoadXmlFragment(&log, QStringLiteral("<a>")).isNull());
    });
}

struct CapturedErrors
{
    int count = 0;
};

void captureGenericError(void *context, const char *, ...)
{
    ++static_cast<CapturedErrors *>(context)->count;
}

TEST(XmlLoad, LeavesTheThreadsErrorHandlersAsItFoundThem)
{
    CapturedErrors captured;
    const xmlGenericErrorFunc handler = &captureGenericError;
    xmlSetGenericErrorFunc(&captured, handler);
    LoadXmlDocument(nullptr, QStringLiteral("<a><b></a>"));
    LoadXmlDocument(nullptr, QStringLiteral("<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>"));
    GetNodeText(LoadXmlDocument(nullptr, QStringLiteral("<a/>")), QStringLiteral("//[bad"));
    EXPECT_EQ(captured.count, 0) << "libxml2 printed through the caller's handler";
    EXPECT_EQ(xmlGenericError, handler);
    EXPECT_EQ(xmlGenericErrorContext, &captured);
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

TEST(XmlLoad, HostileDocumentsDoNothing)
{
    // A local file that an external entity would pull in if entities were resolved.
    QTemporaryFile secret(QDir::tempPath() + QStringLiteral("/olvex-secret-XXXXXX"));
    ASSERT_TRUE(secret.open());
    secret.write("SECRET-MARKER-7731");
    secret.flush();
    const QString secretUrl = QUrl::fromLocalFile(secret.fileName()).toString();

    QString laughs = QStringLiteral("<!DOCTYPE lolz [<!ENTITY lol \"lol\">");
    laughs
        += QStringLiteral("<!ENTITY lol1 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">");
    for (int i = 2; i <= 9; ++i) {
        laughs += QStringLiteral("<!ENTITY lol%1 \"").arg(i);
        for (int j = 0; j < 10; ++j) {
            laughs += QStringLiteral("&lol%1;").arg(i - 1);
        }
        laughs += QStringLiteral("\">");
    }
    laughs += QStringLiteral("]><lolz>&lol9;</lolz>");

    const QList<QString> cases = {
        u"<!DOCTYPE r [<!ENTITY x SYSTEM \"" + secretUrl + u"\">]><r>&x;</r>",
        QStringLiteral("<!DOCTYPE r [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><r>&x;</r>"),
        u"<!DOCTYPE r SYSTEM \"" + secretUrl + u"\"><r/>",
        u"<!DOCTYPE r [<!ENTITY % p SYSTEM \"" + secretUrl + u"\"> %p;]><r/>",
        QStringLiteral("<!DOCTYPE r [<!ENTITY x SYSTEM \"http://127.0.0.1:9/x\">]><r>&x;</r>"),
        u"<r xmlns:xi=\"http://www.w3.org/2001/XInclude\"><xi:include href=\"" + secretUrl
            + u"\" parse=\"text\"/></r>",
        laughs,
    };
    for (const QString &text : cases) {
        SCOPED_TRACE(text.left(80).toStdString());
        RecordingLog log;
        const XmlDocument doc = LoadXmlDocument(&log, text);
        // XInclude is well-formed XML and loads, but is never processed.
        if (!doc.isNull()) {
            EXPECT_TRUE(text.contains(u"XInclude"));
        }
        EXPECT_FALSE(doc.toXml().contains(u"SECRET-MARKER"));
        EXPECT_FALSE(doc.toXml().contains(u"root:"));
        EXPECT_FALSE(GetNodeText(doc, QStringLiteral("/*")).contains(u"lollol"));
        for (const QString &line : log.texts()) {
            EXPECT_FALSE(line.contains(u"SECRET-MARKER"));
        }
    }
}

TEST(XmlFragment, WrapsTextInTheFixedRoot)
{
    struct Case
    {
        const char *name;
        QString fragment;
        QString rootText;  // text of the wrapping root
        QString childPath; // a path that must select something, if given
        int children;      // element children of the root
    };
    const QList<Case> cases = {
        {"text and element", QStringLiteral("a<b/>"), QStringLiteral("a"), QStringLiteral("b"), 1},
        {"siblings", QStringLiteral("<i>1</i><i>2</i>"), QStringLiteral("12"),
         QStringLiteral("i[2]"), 2},
        {"plain text", QStringLiteral("just text"), QStringLiteral("just text"), QString(), 0},
        {"dollar kept", QStringLiteral("x$y<z>$</z>"), QStringLiteral("x$y$"), QStringLiteral("z"),
         1},
        {"empty", QString(), QString(), QString(), 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        RecordingLog log;
        const XmlDocument doc = LoadXmlFragment(&log, c.fragment);
        ASSERT_FALSE(doc.isNull());
        EXPECT_TRUE(log.isEmpty());
        const XmlNode root = doc.documentElement();
        EXPECT_EQ(root.name(), QString::fromUtf16(FragmentRootName));
        EXPECT_EQ(root.text(), c.rootText);
        EXPECT_EQ(root.selectNodes(QStringLiteral("*")).size(), c.children);
        if (!c.childPath.isEmpty()) {
            EXPECT_FALSE(root.selectSingleNode(c.childPath).isNull());
        }
    }
}

TEST(XmlFragment, FailureLogsTheWrappedTextThenTheFragment)
{
    const QString fragment = QStringLiteral("<open>") + QString(60, u'f');
    RecordingLog log;
    EXPECT_TRUE(LoadXmlFragment(&log, fragment).isNull());
    const QString wrapped = u'<' + QString::fromUtf16(FragmentRootName) + u'>' + fragment;
    ASSERT_EQ(log.lines().size(), 2);
    EXPECT_EQ(log.lines().at(0), (LogLine{4, u"XMLDOM-0001: Cannot parse XML document; "
                                                 + wrapped.left(40) + u"..."}));
    EXPECT_EQ(log.lines().at(1), (LogLine{4, u"XMLDOM-0005: Cannot parse XML fragment; "
                                                 + fragment.left(40) + u"..."}));
}

TEST(XmlRead, GetNodeTextSelectsByPath)
{
    const XmlDocument doc = LoadXmlDocument(nullptr, kRecord);
    ASSERT_FALSE(doc.isNull());
    const XmlNode calStart = doc.selectSingleNode(QStringLiteral("//CalStart"));
    ASSERT_FALSE(calStart.isNull());

    struct Case
    {
        XmlNode node;
        const char *path;
        QString expected;
    };
    const QList<Case> cases = {
        {doc.node(), "//CalStart/CalEnabled", QStringLiteral("True")},
        {doc.node(), "//CalStart/CalStartTimeUser", QStringLiteral("06:50")},
        {doc.node(), "//CalStart/ManualCalStartSupported/@ioid", QStringLiteral("C12")},
        {doc.node(), "//CalStart/CalEnabled/@ioid", QStringLiteral("C17")},
        {doc.node(), "//CalStart/Unit", QStringLiteral("Unit & 1 at 25\u00b0C")},
        {doc.node(), "//CalStart/Nested/Inner", QStringLiteral("a")},
        {doc.node(), "//CalStart/Nested", QStringLiteral("ab")},
        {doc.node(), "//CalStart/SkipIfOffline", QString()},
        {doc.node(), "//CalStart/Missing", QString()},
        {doc.node(), "//CalStart/CalEnabled/@missing", QString()},
        {doc.node(), "count(//Inner)", QString()},
        {doc.node(), "//[broken", QString()},
        {doc.node(), "", QString()},
        {doc.node(), "//namespace::*", QString()},
        {calStart, "CalEnabled", QStringLiteral("True")},
        {calStart, "Nested/Inner[2]", QStringLiteral("b")},
        {calStart, "CalStart", QString()},
        {XmlNode(), "//CalStart/CalEnabled", QString()},
        {XmlDocument().node(), "//CalStart/CalEnabled", QString()},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(GetNodeText(c.node, QString::fromUtf8(c.path)), c.expected);
    }
}

TEST(XmlRead, AttributeValuesAreNormalised)
{
    const XmlDocument doc
        = LoadXmlDocument(nullptr, QStringLiteral("<a v=\"x\ny\tz\" w=\"p&#10;q\"/>"));
    ASSERT_FALSE(doc.isNull());
    EXPECT_EQ(doc.documentElement().attribute(QStringLiteral("v")), QStringLiteral("x y z"));
    // A character reference is content, not layout: it survives.
    EXPECT_EQ(doc.documentElement().attribute(QStringLiteral("w")), QStringLiteral("p\nq"));
}

TEST(XmlRead, NodesOutliveTheirDocumentHandle)
{
    XmlNode node;
    {
        XmlDocument doc = LoadXmlDocument(nullptr, kRecord);
        node = doc.selectSingleNode(QStringLiteral("//CalEnabled"));
        ASSERT_TRUE(doc.loadXml(QStringLiteral("<other/>")));
        EXPECT_EQ(doc.documentElement().name(), QStringLiteral("other"));
        EXPECT_FALSE(doc.loadXml(QStringLiteral("<broken")));
        EXPECT_FALSE(doc.isNull());
        EXPECT_TRUE(doc.documentElement().isNull());
    }
    EXPECT_EQ(node.text(), QStringLiteral("True"));
    EXPECT_EQ(node.attribute(QStringLiteral("ioid")), QStringLiteral("C17"));
}

TEST(XmlRead, GetNodeBoolKeepsEmptyApartFromNo)
{
    struct Case
    {
        QString content;
        std::optional<bool> expected;
    };
    const QList<Case> cases = {
        {QStringLiteral("True"), true},
        {QStringLiteral("true"), true},
        {QStringLiteral("  TRUE \n"), true},
        {QStringLiteral("False"), false},
        {QStringLiteral("1"), true},
        {QStringLiteral("0"), false},
        {QStringLiteral("-1"), true},
        {QStringLiteral("2.5"), true},
        {QString(), std::nullopt},
        {QStringLiteral("   "), std::nullopt},
        {QStringLiteral("yes"), std::nullopt},
        {QStringLiteral("maybe"), std::nullopt},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.content.toStdString());
        const XmlDocument doc = LoadXmlFragment(nullptr, u"<v>" + c.content + u"</v>");
        ASSERT_FALSE(doc.isNull());
        EXPECT_EQ(GetNodeBool(doc, QStringLiteral("//v")), c.expected);
    }
    const XmlDocument doc = LoadXmlFragment(nullptr, QStringLiteral("<v>True</v>"));
    EXPECT_EQ(GetNodeBool(doc, QStringLiteral("//missing")), std::nullopt);
    EXPECT_EQ(GetNodeBool(XmlNode(), QStringLiteral("//v")), std::nullopt);
}

TEST(XmlRead, ParseXmlDateDropsFractionsAndReadsLocalTime)
{
    struct Case
    {
        QString text;
        QDateTime expected; // invalid: the zero date
    };
    const QDateTime tenPast(QDate(2024, 5, 1), QTime(13, 45, 10));
    const QList<Case> cases = {
        {QStringLiteral("2024-05-01T13:45:10.123"), tenPast},
        {QStringLiteral("2024-05-01T13:45:10"), tenPast},
        {QStringLiteral("2024-05-01T07:05:00.000Z"), QDateTime(QDate(2024, 5, 1), QTime(7, 5))},
        {QStringLiteral("2024-05-01 07:05"), QDateTime(QDate(2024, 5, 1), QTime(7, 5))},
        {QStringLiteral("2024-05-01"), QDateTime(QDate(2024, 5, 1), QTime(0, 0))},
        {QStringLiteral("garbage"), {}},
        {QString(), {}},
        {QStringLiteral("T"), {}},
        {QStringLiteral("2024-13-45T10:00:00"), {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        const QDateTime parsed = ParseXmlDate(c.text);
        if (c.expected.isValid()) {
            EXPECT_EQ(parsed, c.expected);
            EXPECT_EQ(parsed.timeSpec(), Qt::LocalTime);
        } else {
            EXPECT_TRUE(isZeroDate(parsed)) << parsed.toString(Qt::ISODate).toStdString();
        }
    }
}

TEST(XmlRead, GetNodeDateGivesTheZeroDateWhenThereIsNoDate)
{
    const XmlDocument doc
        = LoadXmlFragment(nullptr, QStringLiteral("<t>2024-05-01T13:45:10.123</t><e/><g>soon</g>"));
    ASSERT_FALSE(doc.isNull());
    EXPECT_EQ(GetNodeDate(doc, QStringLiteral("//t")),
              QDateTime(QDate(2024, 5, 1), QTime(13, 45, 10)));
    for (const char *path : {"//e", "//g", "//missing"}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(isZeroDate(GetNodeDate(doc, QString::fromUtf8(path))));
    }
    EXPECT_TRUE(isZeroDate(GetNodeDate(XmlNode(), QStringLiteral("//t"))));
}

TEST(XmlText, TruncateText)
{
    struct Case
    {
        QString text;
        int maxLength;
        QString expected;
    };
    const QList<Case> cases = {
        {QString(), 40, QString()},
        {QStringLiteral("abc"), 3, QStringLiteral("abc")},
        {QStringLiteral("abcd"), 3, QStringLiteral("abc...")},
        {QStringLiteral("abc"), 0, QStringLiteral("...")},
        {QStringLiteral("abc"), -1, QStringLiteral("...")},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(TruncateText(c.text, c.maxLength), c.expected) << c.text.toStdString();
    }
}

} // namespace
} // namespace olvex
