#include "common/command.h"
#include "common/xml.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;

namespace olvex {
namespace {

TEST(Command, XmlEscapeReplacesEachSpecialCharacterOnce)
{
    struct Case
    {
        QString text;
        QString expected;
    };
    const QList<Case> cases = {
        {QString(), QString()},
        {QStringLiteral("plain 'text'"), QStringLiteral("plain 'text'")},
        {QStringLiteral("A&B"), QStringLiteral("A&amp;B")},
        {QStringLiteral("a<b>c"), QStringLiteral("a&lt;b&gt;c")},
        {QStringLiteral("say \"hi\""), QStringLiteral("say &quot;hi&quot;")},
        {QStringLiteral("25\u00b0C"), QStringLiteral("25&#176;C")},
        // Already escaped text is escaped again: the ampersand goes first.
        {QStringLiteral("&lt;&#176;"), QStringLiteral("&amp;lt;&amp;#176;")},
        {QStringLiteral("&<>\"\u00b0&"), QStringLiteral("&amp;&lt;&gt;&quot;&#176;&amp;")},
        // Other non-ASCII characters are carried as they are.
        {QStringLiteral("\u00e9\u00ba"), QStringLiteral("\u00e9\u00ba")},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(XmlEscape(c.text), c.expected) << c.text.toStdString();
    }
}

TEST(Command, SingleLineKeepsOrderAndEscapesOnlyText)
{
    CommandBuilder command(QStringLiteral("WriteToChannel"));
    command.addRaw(QStringLiteral("id"), QStringLiteral("C12"))
        .addNumber(QStringLiteral("value"), 1)
        .addText(QStringLiteral("priority"), QStringLiteral("high"));
    EXPECT_EQ(
        command.singleLine(),
        QStringLiteral(
            "<Command action=\"WriteToChannel\" id=\"C12\" value=\"1\" priority=\"high\" />"));

    CommandBuilder log(QStringLiteral("WriteMsgToAutoCalLog"),
                       QStringLiteral("WriteMsgToAutoCalLog"));
    log.addPid(QStringLiteral("pid"), 101234567)
        .addText(QStringLiteral("msg"), QStringLiteral("** user requested a cal abort (CSET-0017)"))
        .addText(QStringLiteral("user"), QStringLiteral("A&B"))
        .extraBlank()
        .addText(QStringLiteral("clientIP"), QStringLiteral("10.0.0.5"));
    EXPECT_EQ(log.singleLine(),
              QStringLiteral("<WriteMsgToAutoCalLog action=\"WriteMsgToAutoCalLog\" "
                             "pid=\"101234567\" msg=\"** user requested a cal abort (CSET-0017)\" "
                             "user=\"A&amp;B\"  clientIP=\"10.0.0.5\" />"));
}

TEST(Command, ValueForms)
{
    struct Case
    {
        const char *name;
        std::function<void(CommandBuilder &)> add;
        QString expected;
    };
    const QDateTime when(QDate(2024, 5, 1), QTime(7, 5, 59));
    const QList<Case> cases = {
        {"pid with leading zeros", [](CommandBuilder &b) { b.addPid(u"v"_s, 1234567); },
         u"001234567"_s},
        {"ten-digit pid", [](CommandBuilder &b) { b.addPid(u"v"_s, 1234507890); }, u"1234507890"_s},
        {"pid below range", [](CommandBuilder &b) { b.addPid(u"v"_s, 99999); }, QString()},
        {"pid with group C 6", [](CommandBuilder &b) { b.addPid(u"v"_s, 1264567); }, QString()},
        {"pid with group C 9", [](CommandBuilder &b) { b.addPid(u"v"_s, 1294567); }, QString()},
        {"pid at the top", [](CommandBuilder &b) { b.addPid(u"v"_s, 2000000000); }, QString()},
        {"date", [&](CommandBuilder &b) { b.addDate(u"v"_s, when); }, u"2024/05/01 07:05"_s},
        {"invalid date", [](CommandBuilder &b) { b.addDate(u"v"_s, QDateTime()); }, QString()},
        {"message type", [](CommandBuilder &b) { b.addHex(u"v"_s, 24577); }, u"0x6001"_s},
        {"hex digits upper case", [](CommandBuilder &b) { b.addHex(u"v"_s, 0xabcU); }, u"0xABC"_s},
        {"negative number", [](CommandBuilder &b) { b.addNumber(u"v"_s, -42); }, u"-42"_s},
        {"raw stays raw", [](CommandBuilder &b) { b.addRaw(u"v"_s, u"a&b"_s); }, u"a&b"_s},
        {"text is escaped", [](CommandBuilder &b) { b.addText(u"v"_s, u"a&b"_s); }, u"a&amp;b"_s},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        CommandBuilder builder(QStringLiteral("Test"));
        c.add(builder);
        EXPECT_EQ(builder.attributeValue(u"v"_s), c.expected);
        EXPECT_EQ(builder.singleLine(), u"<Command action=\"Test\" v=\"" + c.expected + u"\" />");
    }
}

TEST(Command, ItemLinesJoinedByCrLf)
{
    CommandBuilder command(QStringLiteral("CalPendingPromptAction"));
    command.addPid(QStringLiteral("pid"), 101234567)
        .addText(QStringLiteral("user"), QStringLiteral("op"))
        .addText(QStringLiteral("clientIP"), QStringLiteral("10.0.0.5"));
    const QString text = command.withItems({CommandItem::flag(QStringLiteral("CalConfirm"), true),
                                            CommandItem::flag(QStringLiteral("CalCancel"), false)});
    EXPECT_EQ(text.split(u"\r\n"_s),
              QStringList({u"<Command "_s, u"action=\"CalPendingPromptAction\" "_s,
                           u"pid=\"101234567\" "_s, u"user=\"op\" "_s, u"clientIP=\"10.0.0.5\">"_s,
                           u"<Item id=\"CalConfirm\" newValue=\"1\" />"_s,
                           u"<Item id=\"CalCancel\" newValue=\"0\" />"_s, u"</Command>"_s}));
    EXPECT_FALSE(text.contains(u"\n\n"));
    EXPECT_EQ(text.count(u'\n'), text.count(u'\r'));
}

TEST(Command, PiecesJoinedByOneBlank)
{
    CommandBuilder command(QStringLiteral("RaiseMsg"));
    command.addText(QStringLiteral("user"), QStringLiteral("op"))
        .addText(QStringLiteral("clientIP"), QStringLiteral("ip"))
        .addHex(QStringLiteral("msgTypeID"), 24577)
        .addText(QStringLiteral("msg"), QStringLiteral("CSET-0098: x"));
    EXPECT_EQ(command.blankJoined(),
              QStringLiteral("<Command  action=\"RaiseMsg\"  user=\"op\"  clientIP=\"ip\"  "
                             "msgTypeID=\"0x6001\"  msg=\"CSET-0098: x\"  />"));
}

// Whatever the user's name holds, every joining must stay well-formed XML that gives the name
// back unchanged.
TEST(Command, HostileNamesStayWellFormed)
{
    const QList<QString> names = {
        QStringLiteral("A&B"),
        QStringLiteral("<admin>"),
        QStringLiteral("say \"x\" />"),
        QStringLiteral("\" injected=\"1"),
        QStringLiteral("25\u00b0C & <more>"),
        QStringLiteral("&amp;"),
        QStringLiteral("</Command><Command action=\"Evil\">"),
    };
    FakeDataInterface dataInterface;
    dataInterface.setClientAddress(QStringLiteral("10.0.0.5<>"));
    for (const QString &name : names) {
        SCOPED_TRACE(name.toStdString());
        dataInterface.setUser(name);
        CommandBuilder command(QStringLiteral("ChangeCalStartSettings"));
        command.addPid(QStringLiteral("pid"), 101234567).addEnvelope(dataInterface);
        const QList<QString> texts = {
            command.singleLine(),
            command.withItems({{QStringLiteral("Note"), name}}),
            command.blankJoined(),
        };
        for (const QString &text : texts) {
            SCOPED_TRACE(text.toStdString());
            RecordingLog log;
            const XmlDocument doc = LoadXmlDocument(&log, text);
            ASSERT_FALSE(doc.isNull()) << log.texts().join(u'\n').toStdString();
            EXPECT_EQ(doc.selectNodes(QStringLiteral("/Command")).size(), 1);
            EXPECT_EQ(doc.selectNodes(QStringLiteral("/Command/@*")).size(), 4);
            EXPECT_EQ(GetNodeText(doc, QStringLiteral("/Command/@action")),
                      QStringLiteral("ChangeCalStartSettings"));
            EXPECT_EQ(doc.documentElement().attribute(QStringLiteral("user")), name);
            EXPECT_EQ(doc.documentElement().attribute(QStringLiteral("clientIP")),
                      QStringLiteral("10.0.0.5<>"));
        }
        EXPECT_EQ(
            GetNodeText(LoadXmlDocument(nullptr, texts.at(1)), QStringLiteral("//Item/@newValue")),
            name.trimmed());
    }
}

class NoUserDataInterface : public FakeDataInterface
{
public:
    std::shared_ptr<User> GetUser() override { return nullptr; }
};

TEST(Command, EnvelopeWithoutUserIsEmpty)
{
    NoUserDataInterface dataInterface;
    dataInterface.setClientAddress(QStringLiteral("host-1"));
    EXPECT_EQ(CommandUserName(dataInterface), QString());
    CommandBuilder command(QStringLiteral("RaiseMsg"));
    command.addEnvelope(dataInterface);
    EXPECT_EQ(command.singleLine(),
              QStringLiteral("<Command action=\"RaiseMsg\" user=\"\" clientIP=\"host-1\" />"));
}

TEST(Command, PostCommand)
{
    struct Case
    {
        const char *name;
        bool writerFails;
        bool withLog;
        bool logThrows;
    };
    const QList<Case> cases = {
        {"written", false, true, false},
        {"written without log", false, false, false},
        {"refused", true, true, false},
        {"refused without log", true, false, false},
        {"refused with failing log", true, true, true},
    };
    const QString text = QStringLiteral("<Command action=\"RaiseMsg\" />");
    const QString failure
        = QStringLiteral("CSET-0041: can't write msg record to update cal cylinder info");
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FakeDataInterface dataInterface;
        dataInterface.setSiteId(QStringLiteral("SITE-7"));
        if (c.writerFails) {
            dataInterface.messageRecords()->setFailure(QStringLiteral("queue is full"));
        }
        RecordingLog log;
        if (c.logThrows) {
            log.setFailure(Error(3, QStringLiteral("log gone")));
        }
        QString errorText = QStringLiteral("stale");
        bool ok = true;
        EXPECT_NO_THROW(ok = PostCommand(dataInterface, c.withLog ? &log : nullptr,
                                         RecordType::Calibration, text, QStringLiteral("CSET-0040"),
                                         failure, &errorText));
        EXPECT_EQ(ok, !c.writerFails);
        EXPECT_EQ(errorText, c.writerFails ? QStringLiteral("queue is full") : QString());

        const QList<PostedRecord> posts = dataInterface.messageRecords()->posts();
        ASSERT_EQ(posts.size(), 1);
        const PostedRecord &post = posts.first();
        EXPECT_EQ(post.errorTextOnEntry, QString());
        EXPECT_EQ(post.siteId, QStringLiteral("SITE-7"));
        EXPECT_EQ(post.recordType, QStringLiteral("Q1DRCOMMAND-CAL"));
        EXPECT_EQ(post.text, text);
        EXPECT_EQ(post.empty1, QString());
        EXPECT_EQ(post.empty2, QString());
        EXPECT_EQ(post.sourceCode, QStringLiteral("CSET-0040"));

        if (c.writerFails && c.withLog) {
            EXPECT_EQ(log.lines(), QList<LogLine>({{4, failure}}));
        } else {
            EXPECT_TRUE(log.isEmpty());
        }
    }
}

TEST(Command, PostCommandLetsHostErrorsThrough)
{
    FakeDataInterface dataInterface;
    dataInterface.setFailure(FakeDataInterface::Op::GetSiteId,
                             Error(91, QStringLiteral("offline")));
    RecordingLog log;
    EXPECT_THROW(PostCommand(dataInterface, &log, RecordType::Q2Io, QStringLiteral("<Command />"),
                             QStringLiteral("CSET-0031"), QStringLiteral("CSET-0032: x")),
                 Error);
    EXPECT_TRUE(dataInterface.messageRecords()->posts().isEmpty());
}

} // namespace
} // namespace olvex
