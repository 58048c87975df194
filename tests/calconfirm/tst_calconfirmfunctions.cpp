#include "calconfirm/calconfirm_fixture.h"
#include "calconfirm/calconfirmfunctions.h"

#include <gtest/gtest.h>

namespace olvex::testing {
namespace {

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
    // name, text (nullopt: no item), status, whether it loads, logged.
    const QList<std::tuple<const char *, std::optional<QString>, int, bool, QString>> cases{
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
    for (const auto &[name, text, status, loads, logged] : cases) {
        SCOPED_TRACE(name);
        CalConfirmSite site;
        if (text) {
            site.reader->set(kSO2Cal, *text, status);
        } else {
            site.reader->remove(kSO2Cal);
        }
        EXPECT_EQ(bool(GetCalConfirmDocument(site.log.get(), *site.reader, kSO2Cal)), loads);
        EXPECT_EQ(site.log->texts(), logged.isEmpty() ? QStringList() : QStringList{logged});
    }
}

TEST(CalConfirmTexts, RowAndMessageTexts)
{
    const XmlDocument document
        = LoadXmlDocument(nullptr, calRecord(true, QStringLiteral("Startup"), false));
    ASSERT_TRUE(IsCalConfirmPending(document));
    const PendingCalTexts texts = ReadPendingCalTexts(document);
    EXPECT_EQ(texts.defaultAction,
              u"This calibration will be automatically canceled at:\r\n2026/03/01 02:45 PM");
    EXPECT_EQ(
        AddPendingCalMessage(QStringLiteral("1-010-3-00-01"), QStringLiteral("SO2 Cal"), texts),
        u"CSET-0092: AddPendingCal: 1-010-3-00-01 SO2 Cal: Reason='Startup' "
        u"StartTime='2026/03/01 02:15 PM' DefaultAction='This calibration will be "
        u"automatically canceled at:2026/03/01 02:45 PM'");
    EXPECT_FALSE(IsCalConfirmPending(LoadXmlDocument(nullptr, calRecord(false))));
}

} // namespace
} // namespace olvex::testing
