#include "common/datetime.h"
#include "common/xml.h"
#include "support/fake_log.h"

#include <gtest/gtest.h>

#include <libxml/xmlerror.h>

#include <QDir>
#include <QTemporaryFile>
#include <QUrl>

#include <optional>

using namespace Qt::StringLiterals;

namespace olvex {
namespace {

const QString kRecord = u"<Root>\n"
                        "  <CalStart>\n"
                        "    <CalEnabled ioid=\"C17\">True</CalEnabled>\n"
                        "    <CalStartTimeUser>\n      06:50  \n    </CalStartTimeUser>\n"
                        "    <ManualCalStartSupported ioid=\"C12\">1</ManualCalStartSupported>\n"
                        "    <SkipIfOffline/>\n"
                        "    <Unit>Unit &amp; 1 at 25&#176;C</Unit>\n"
                        "    <Nested><Inner>a</Inner><Inner>b</Inner></Nested>\n"
                        "  </CalStart>\n"
                        "</Root>"_s;

const QString kDocumentFailure = u"XMLDOM-0001: Cannot parse XML document; "_s;

TEST(XmlLoad, AcceptsWellFormedAndRefusesTheRest)
{
    const QList<std::pair<QString, bool>> cases = {
        {kRecord, true},
        {u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>x</a>"_s, true}, // declared encoding
        {u"<a>\u00e9\u4e2d\U0001F600</a>"_s, true},
        {QString(), false},
        {u"<a><b></a>"_s, false},
        {u"<a/><b/>"_s, false},
        {u"<a>&nbsp;</a>"_s, false}, // undeclared entity
        {u"<!DOCTYPE a><a/>"_s, false},
        {u"<a>x"_s + QChar(0) + u"</a>"_s, false},
    };
    for (const auto &[text, loads] : cases) {
        SCOPED_TRACE(text.toStdString());
        RecordingLog log;
        const XmlDocument doc = LoadXmlDocument(&log, text);
        EXPECT_EQ(doc.documentElement().isNull(), !loads);
        EXPECT_EQ(log.lines().size(), loads ? 0 : 1);
        EXPECT_EQ(log.linesStartingWith(kDocumentFailure).size(), loads ? 0 : 1);
    }
}

TEST(XmlLoad, FailuresLogTheFirstFortyCharacters)
{
    const QString text = u"<broken"_s + QString(93, u'x');
    RecordingLog log;
    EXPECT_TRUE(LoadXmlDocument(&log, text).isNull());
    EXPECT_EQ(log.lines(), QList<LogLine>({{4, kDocumentFailure + text.left(40) + u"..."}}));

    // A fragment logs the wrapped text, then the fragment itself.
    log.clear();
    EXPECT_TRUE(LoadXmlFragment(&log, text).isNull());
    const QString wrapped = u'<' + QString::fromUtf16(FragmentRootName) + u'>' + text;
    EXPECT_EQ(log.lines(), QList<LogLine>({{4, kDocumentFailure + wrapped.left(40) + u"..."},
                                           {4, u"XMLDOM-0005: Cannot parse XML fragment; "_s
                                                   + text.left(40) + u"..."}}));

    // Without a log, or with one that fails, nothing escapes.
    log.setFailure(Error(5, u"log is full"_s));
    EXPECT_NO_THROW(EXPECT_TRUE(LoadXmlFragment(&log, u"<a>"_s).isNull()));
    EXPECT_NO_THROW(EXPECT_TRUE(LoadXmlFragment(nullptr, u"<a>"_s).isNull()));
}

void countGenericError(void *context, const char *, ...)
{
    ++*static_cast<int *>(context);
}

TEST(XmlLoad, LeavesTheThreadsErrorHandlersAsItFoundThem)
{
    int captured = 0;
    xmlSetGenericErrorFunc(&captured, &countGenericError);
    LoadXmlDocument(nullptr, u"<a><b></a>"_s);
    LoadXmlDocument(nullptr, u"<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>"_s);
    GetNodeText(LoadXmlDocument(nullptr, u"<a/>"_s), u"//[bad"_s);
    EXPECT_EQ(captured, 0) << "libxml2 printed through the caller's handler";
    EXPECT_EQ(xmlGenericError, &countGenericError);
    EXPECT_EQ(xmlGenericErrorContext, &captured);
    xmlSetGenericErrorFunc(nullptr, nullptr);
}

TEST(XmlLoad, HostileDocumentsDoNothing)
{
    // A local file that an external entity would pull in if entities were resolved.
    QTemporaryFile secret(QDir::tempPath() + u"/olvex-secret-XXXXXX"_s);
    ASSERT_TRUE(secret.open());
    secret.write("SECRET-MARKER-7731");
    secret.flush();
    const QString secretUrl = QUrl::fromLocalFile(secret.fileName()).toString();

    QString laughs = u"<!DOCTYPE lolz [<!ENTITY lol0 \"lol\">"_s;
    for (int i = 1; i <= 9; ++i)
        laughs += u"<!ENTITY lol%1 \"%2\">"_s.arg(i).arg(u"&lol%1;"_s.arg(i - 1).repeated(10));
    laughs += u"]><lolz>&lol9;</lolz>"_s;

    const QStringList cases = {
        u"<!DOCTYPE r [<!ENTITY x SYSTEM \"" + secretUrl + u"\">]><r>&x;</r>",
        u"<!DOCTYPE r SYSTEM \"" + secretUrl + u"\"><r/>",
        u"<!DOCTYPE r [<!ENTITY % p SYSTEM \"" + secretUrl + u"\"> %p;]><r/>",
        u"<!DOCTYPE r [<!ENTITY x SYSTEM \"http://127.0.0.1:9/x\">]><r>&x;</r>"_s,
        u"<r xmlns:xi=\"http://www.w3.org/2001/XInclude\"><xi:include href=\"" + secretUrl
            + u"\" parse=\"text\"/></r>",
        laughs,
    };
    for (const QString &text : cases) {
        SCOPED_TRACE(text.left(80).toStdString());
        RecordingLog log;
        const XmlDocument doc = LoadXmlDocument(&log, text);
        // XInclude is well-formed XML and loads, but is never processed.
        EXPECT_EQ(doc.isNull(), !text.contains(u"XInclude"));
        EXPECT_FALSE(doc.toXml().contains(u"SECRET-MARKER"));
        EXPECT_FALSE(GetNodeText(doc, u"/*"_s).contains(u"lollol"));
        EXPECT_FALSE(log.texts().join(u'\n').contains(u"SECRET-MARKER"));
    }
}

TEST(XmlFragment, WrapsTextInTheFixedRoot)
{
    // Fragment, text of the wrapping root, element children of the root.
    const std::tuple<QString, QString, int> cases[] = {
        {u"a<b/>"_s, u"a"_s, 1},
        {u"<i>1</i><i>2</i>"_s, u"12"_s, 2},
        {u"x$y<z>$</z>"_s, u"x$y$"_s, 1},
        {QString(), QString(), 0},
    };
    for (const auto &[fragment, rootText, children] : cases) {
        RecordingLog log;
        const XmlNode root = LoadXmlFragment(&log, fragment).documentElement();
        EXPECT_TRUE(log.isEmpty());
        EXPECT_EQ(root.name(), QString::fromUtf16(FragmentRootName)) << fragment.toStdString();
        EXPECT_EQ(root.text(), rootText);
        EXPECT_EQ(root.selectNodes(u"*"_s).size(), children);
    }
}

TEST(XmlRead, GetNodeTextSelectsByPath)
{
    const XmlDocument doc = LoadXmlDocument(nullptr, kRecord);
    ASSERT_FALSE(doc.isNull());
    const std::pair<const char *, QString> cases[] = {
        {"//CalStart/CalEnabled", u"True"_s},
        {"//CalStart/CalStartTimeUser", u"06:50"_s}, // trimmed
        {"//CalStart/ManualCalStartSupported/@ioid", u"C12"_s},
        {"//CalStart/Unit", u"Unit & 1 at 25\u00b0C"_s},
        {"//CalStart/Nested/Inner", u"a"_s}, // the first of several
        {"//CalStart/Nested", u"ab"_s},
        {"//CalStart/SkipIfOffline", QString()},
        {"//CalStart/Missing", QString()},
        {"count(//Inner)", QString()},
        {"//[broken", QString()},
        {"//namespace::*", QString()},
    };
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(GetNodeText(doc, QString::fromUtf8(path)), expected) << path;
    // Relative to a node.
    const XmlNode calStart = doc.selectSingleNode(u"//CalStart"_s);
    EXPECT_EQ(GetNodeText(calStart, u"Nested/Inner[2]"_s), u"b"_s);
    EXPECT_EQ(GetNodeText(calStart, u"CalStart"_s), QString());
    EXPECT_EQ(GetNodeText(XmlNode(), u"//CalStart/CalEnabled"_s), QString());

    // Yes/no keeps an empty or missing node apart from no.
    EXPECT_EQ(GetNodeBool(doc, u"//CalEnabled"_s), true);
    EXPECT_EQ(GetNodeBool(doc, u"//SkipIfOffline"_s), std::nullopt);
    EXPECT_EQ(GetNodeBool(doc, u"//Missing"_s), std::nullopt);
    EXPECT_EQ(GetNodeBool(XmlNode(), u"//CalEnabled"_s), std::nullopt);
}

TEST(XmlRead, NodesOutliveTheirDocumentHandle)
{
    XmlNode node;
    {
        XmlDocument doc = LoadXmlDocument(nullptr, kRecord);
        node = doc.selectSingleNode(u"//CalEnabled"_s);
        ASSERT_TRUE(doc.loadXml(u"<other/>"_s));
        EXPECT_EQ(doc.documentElement().name(), u"other"_s);
        EXPECT_FALSE(doc.loadXml(u"<broken"_s));
        EXPECT_FALSE(doc.isNull());
        EXPECT_TRUE(doc.documentElement().isNull());
    }
    EXPECT_EQ(node.text(), u"True"_s);
    EXPECT_EQ(node.attribute(u"ioid"_s), u"C17"_s);
}

TEST(XmlRead, DatesDropFractionsAndReadLocalTime)
{
    const QDateTime tenPast(QDate(2024, 5, 1), QTime(13, 45, 10));
    const QList<std::pair<QString, QDateTime>> cases = {
        {u"2024-05-01T13:45:10.123"_s, tenPast},
        {u"2024-05-01T13:45:10"_s, tenPast},
        {u"2024-05-01T07:05:00.000Z"_s, QDateTime(QDate(2024, 5, 1), QTime(7, 5))},
        {u"garbage"_s, zeroDate()},
        {u"T"_s, zeroDate()},
        {u"2024-13-45T10:00:00"_s, zeroDate()},
    };
    for (const auto &[text, expected] : cases) {
        SCOPED_TRACE(text.toStdString());
        const QDateTime parsed = ParseXmlDate(text);
        EXPECT_EQ(parsed, expected);
        EXPECT_EQ(parsed.timeSpec(), Qt::LocalTime);
        EXPECT_EQ(GetNodeDate(LoadXmlFragment(nullptr, u"<t>" + text + u"</t>"), u"//t"_s),
                  expected);
    }
    EXPECT_TRUE(isZeroDate(GetNodeDate(LoadXmlFragment(nullptr, u"<t/>"_s), u"//missing"_s)));
}

} // namespace
} // namespace olvex
