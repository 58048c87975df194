#include "common/command.h"
#include "common/xml.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace olvex {
namespace {

TEST(Command, XmlEscapeReplacesEachSpecialCharacterOnce)
{
    const QList<std::pair<QString, QString>> cases = {
        {QString(), QString()},
        {u"plain 'text'"_s, u"plain 'text'"_s},
        // Already escaped text is escaped again: the ampersand goes first.
        {u"&lt;&#176;"_s, u"&amp;lt;&amp;#176;"_s},
        {u"&<>\"\u00b0&"_s, u"&amp;&lt;&gt;&quot;&#176;&amp;"_s},
        // Other non-ASCII characters are carried as they are.
        {u"\u00e9\u00ba"_s, u"\u00e9\u00ba"_s},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(XmlEscape(text), expected) << text.toStdString();
}

// The three joinings each keep their exact spacing: the service reads them as text.
TEST(Command, JoiningsKeepOrderSpacingAndValueForms)
{
    CommandBuilder command(u"WriteToChannel"_s);
    command
        .addRaw(u"id"_s, u"C&12"_s) // raw stays raw
        .addNumber(u"value"_s, -42)
        .addText(u"priority"_s, u"h&i"_s)
        .addDate(u"at"_s, QDateTime(QDate(2024, 5, 1), QTime(7, 5, 59)))
        .addDate(u"never"_s, QDateTime())
        .addPid(u"short"_s, 1234567)
        .addPid(u"long"_s, 1234507890)
        .addPid(u"invalid"_s, 1264567)
        .addHex(u"hex"_s, 0xabcU);
    EXPECT_EQ(command.singleLine(),
              u"<Command action=\"WriteToChannel\" id=\"C&12\" value=\"-42\" priority=\"h&amp;i\" "
              u"at=\"2024/05/01 07:05\" never=\"\" short=\"001234567\" long=\"1234507890\" "
              u"invalid=\"\" hex=\"0xABC\" />"_s);

    // The auto-cal log line's extra blank and the blank-joined RaiseMsg are pinned with the
    // calibration start and confirmation commands.
    CommandBuilder prompt(u"CalPendingPromptAction"_s);
    prompt.addPid(u"pid"_s, 101234567).addText(u"user"_s, u"op"_s);
    EXPECT_EQ(prompt.withItems({CommandItem::flag(u"CalConfirm"_s, true),
                                CommandItem::flag(u"CalCancel"_s, false)}),
              u"<Command \r\naction=\"CalPendingPromptAction\" \r\npid=\"101234567\" \r\n"
              u"user=\"op\">\r\n<Item id=\"CalConfirm\" newValue=\"1\" />\r\n"
              u"<Item id=\"CalCancel\" newValue=\"0\" />\r\n</Command>"_s);
}

// Whatever the user's name holds, every joining must stay well-formed XML that gives the name
// back unchanged.
TEST(Command, EnvelopeStaysWellFormedWhateverTheUsersName)
{
    class Interface : public FakeDataInterface
    {
    public:
        bool noUser = false;
        std::shared_ptr<User> GetUser() override
        {
            return noUser ? nullptr : FakeDataInterface::GetUser();
        }
    } dataInterface;
    dataInterface.setClientAddress(u"10.0.0.5<>"_s);
    for (const QString &name : {u"<admin>"_s, u"\" injected=\"1"_s, u"25\u00b0C & <more>"_s,
                                u"&amp;"_s, u"</Command><Command action=\"Evil\">"_s}) {
        SCOPED_TRACE(name.toStdString());
        dataInterface.setUser(name);
        CommandBuilder command(u"ChangeCalStartSettings"_s);
        command.addPid(u"pid"_s, 101234567).addEnvelope(dataInterface);
        const QStringList texts
            = {command.singleLine(), command.withItems({{u"Note"_s, name}}), command.blankJoined()};
        for (const QString &text : texts) {
            RecordingLog log;
            const XmlDocument doc = LoadXmlDocument(&log, text);
            ASSERT_FALSE(doc.isNull()) << log.texts().join(u'\n').toStdString();
            EXPECT_EQ(doc.selectNodes(u"/Command/@*"_s).size(), 4) << text.toStdString();
            EXPECT_EQ(doc.documentElement().attribute(u"user"_s), name);
            EXPECT_EQ(doc.documentElement().attribute(u"clientIP"_s), u"10.0.0.5<>"_s);
        }
        EXPECT_EQ(GetNodeText(LoadXmlDocument(nullptr, texts.at(1)), u"//Item/@newValue"_s),
                  name.trimmed());
    }
    // No user at all: an empty name.
    dataInterface.noUser = true;
    EXPECT_EQ(CommandBuilder(u"RaiseMsg"_s).addEnvelope(dataInterface).singleLine(),
              u"<Command action=\"RaiseMsg\" user=\"\" clientIP=\"10.0.0.5&lt;&gt;\" />"_s);
}

TEST(Command, PostCommand)
{
    const QString text = u"<Command action=\"RaiseMsg\" />"_s;
    const QString failure = u"CSET-0041: can't write msg record to update cal cylinder info"_s;
    for (const auto &[writerFails, withLog, logThrows] :
         {std::tuple(false, true, false), std::tuple(true, true, false),
          std::tuple(true, false, false), std::tuple(true, true, true)}) {
        SCOPED_TRACE(::testing::Message() << writerFails << withLog << logThrows);
        FakeDataInterface dataInterface;
        dataInterface.setSiteId(u"SITE-7"_s);
        if (writerFails)
            dataInterface.messageRecords()->setFailure(u"queue is full"_s);
        RecordingLog log;
        if (logThrows)
            log.setFailure(Error(3, u"log gone"_s));
        QString errorText = u"stale"_s;
        bool ok = true;
        EXPECT_NO_THROW(ok = PostCommand(dataInterface, withLog ? &log : nullptr,
                                         RecordType::Calibration, text, u"CSET-0040"_s, failure,
                                         &errorText));
        EXPECT_EQ(ok, !writerFails);
        EXPECT_EQ(errorText, writerFails ? u"queue is full"_s : QString());

        ASSERT_EQ(dataInterface.messageRecords()->posts().size(), 1);
        const PostedRecord post = dataInterface.messageRecords()->posts().first();
        EXPECT_EQ(QStringList({post.errorTextOnEntry, post.siteId, post.recordType, post.text,
                               post.empty1, post.empty2, post.sourceCode}),
                  QStringList({QString(), u"SITE-7"_s, u"Q1DRCOMMAND-CAL"_s, text, QString(),
                               QString(), u"CSET-0040"_s}));
        EXPECT_EQ(log.lines(),
                  writerFails && withLog ? QList<LogLine>({{4, failure}}) : QList<LogLine>());
    }

    // Host errors are the caller's to handle: nothing is posted.
    FakeDataInterface dataInterface;
    dataInterface.setFailure(FakeDataInterface::Op::GetSiteId, Error(91, u"offline"_s));
    EXPECT_THROW(PostCommand(dataInterface, nullptr, RecordType::Q2Io, u"<Command />"_s,
                             u"CSET-0031"_s, u"CSET-0032: x"_s),
                 Error);
    EXPECT_TRUE(dataInterface.messageRecords()->posts().isEmpty());
}

} // namespace
} // namespace olvex
