#include "calconfirm/calconfirm_fixture.h"
#include "calconfirm/calconfirmfunctions.h"

#include <gtest/gtest.h>

namespace olvex::testing {
namespace {

TEST(CalConfirmCommands, PromptAnswersAreCrLfLinesWithBothItems)
{
    CalConfirmSite site;
    struct Case
    {
        bool confirm;
        const char *items;
    };
    for (const Case &c : {Case{true, "<Item id=\"CalConfirm\" newValue=\"1\" />\r\n"
                                     "<Item id=\"CalCancel\" newValue=\"0\" />"},
                          Case{false, "<Item id=\"CalConfirm\" newValue=\"0\" />\r\n"
                                      "<Item id=\"CalCancel\" newValue=\"1\" />"}}) {
        EXPECT_TRUE(
            SendCalPendingPromptAction(*site.di, site.log.get(), kSO2Cal, c.confirm, !c.confirm));
        const PostedRecord &post = site.di->messageRecords()->posts().last();
        EXPECT_EQ(post.recordType, u"Q1DRCOMMAND-CAL");
        EXPECT_EQ(post.sourceCode, u"CSET-0046");
        EXPECT_EQ(post.text,
                  u"<Command \r\naction=\"CalPendingPromptAction\" \r\n"
                  u"pid=\"101030001\" \r\nuser=\"op&amp;1\" \r\nclientIP=\"10.0.0.5\">\r\n"
                      + QString::fromLatin1(c.items) + u"\r\n</Command>");
    }
}

TEST(CalConfirmCommands, RaiseMsgJoinsPiecesWithOneBlankAndDropsPidZero)
{
    CalConfirmSite site;
    EXPECT_EQ(RaiseMsgCommandText(*site.di, kSO2Cal, kCalConfirmMsgType, QStringLiteral("a<b")),
              u"<Command  action=\"RaiseMsg\"  pid=\"101030001\"  user=\"op&amp;1\"  "
              u"clientIP=\"10.0.0.5\"  msgTypeID=\"0x6001\"  msg=\"a&lt;b\"  />");
    EXPECT_EQ(RaiseMsgCommandText(*site.di, 0, kCalConfirmMsgType, NoPendingCalsMessage()),
              u"<Command  action=\"RaiseMsg\"  user=\"op&amp;1\"  clientIP=\"10.0.0.5\"  "
              u"msgTypeID=\"0x6001\"  msg=\"CSET-0098: There are no calibrations pending "
              u"confirmation\"  />");

    site.di->messageRecords()->setFailure(QStringLiteral("queue full"));
    EXPECT_FALSE(
        SendRaiseMsgCommand(*site.di, site.log.get(), 0, kCalConfirmMsgType, QStringLiteral("x")));
    EXPECT_EQ(site.di->messageRecords()->posts().last().sourceCode, u"CSET-0096");
    EXPECT_EQ(site.log->linesStartingWith(QStringLiteral("CSET-0096")).size(), 1);
}

TEST(CalConfirmDocument, ReadsOnlyUsableRecords)
{
    struct Case
    {
        const char *name;
        std::optional<QString> text; // nullopt: no item
        int status;
        bool document;
        QString logged;
    };
    const QList<Case> cases{
        {"record", calRecord(true), 0, true, {}},
        {"no item", std::nullopt, 0, false, {}},
        {"expired", QStringLiteral("  "), 71, false,
         QStringLiteral("CSET-0084: Realtime data expired; Cannot confirm/cancel cal "
                        "(1-010-3-00-01)")},
        {"empty, not expired", QString(), 0, false, {}},
        {"no CalStart", QStringLiteral("<XValue><Other/></XValue>"), 0, false,
         QStringLiteral("CSET-0085: Cannot find CalStart node;  Cannot confirm/cancel cal "
                        "(1-010-3-00-01)")},
        {"not XML", QStringLiteral("<XValue>"), 0, false,
         QStringLiteral("XMLDOM-0001: Cannot parse XML document; <XValue>")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        CalConfirmSite site;
        if (c.text) {
            site.reader->set(kSO2Cal, *c.text, c.status);
        } else {
            site.reader->remove(kSO2Cal);
        }
        EXPECT_EQ(bool(GetCalConfirmDocument(site.log.get(), *site.reader, kSO2Cal)), c.document);
        EXPECT_EQ(site.log->texts(), c.logged.isEmpty() ? QStringList() : QStringList{c.logged});
    }
}

TEST(CalConfirmTexts, RowAndMessageTexts)
{
    const XmlDocument document
        = LoadXmlDocument(nullptr, calRecord(true, QStringLiteral("Startup"), false));
    ASSERT_TRUE(IsCalConfirmPending(document));
    const PendingCalTexts texts = ReadPendingCalTexts(document);
    EXPECT_EQ(texts.reason, u"Startup");
    EXPECT_EQ(texts.startTime, u"2026/03/01 02:15 PM");
    EXPECT_EQ(texts.defaultAction,
              u"This calibration will be automatically canceled at:\r\n2026/03/01 02:45 PM");
    EXPECT_EQ(
        AddPendingCalMessage(QStringLiteral("1-010-3-00-01"), QStringLiteral("SO2 Cal"), texts),
        u"CSET-0092: AddPendingCal: 1-010-3-00-01 SO2 Cal: Reason='Startup' "
        u"StartTime='2026/03/01 02:15 PM' DefaultAction='This calibration will be "
        u"automatically canceled at:2026/03/01 02:45 PM'");
    EXPECT_TRUE(PendingCalChangedMessage(QStringLiteral("P"), QStringLiteral("N"), texts)
                    .startsWith(u"CSET-0093: PendingCal changed: P N: Reason='Startup'"));
    EXPECT_EQ(ClearPendingCalMessage(QStringLiteral("P"), QStringLiteral("N"),
                                     QStringLiteral("Starting Now")),
              u"CSET-0094: ClearPendingCal: P N: Text='Starting Now'");
    EXPECT_FALSE(IsCalConfirmPending(LoadXmlDocument(nullptr, calRecord(false))));
}

} // namespace
} // namespace olvex::testing
