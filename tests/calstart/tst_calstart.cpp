// The calibration start logic without widgets: reading the record, the change command's exact
// text, the manual start and abort refusals, the field rules and the status lines.
#include "calstart/calstart_test_util.h"
#include "calstart/calstartcommands.h"
#include "calstart/calstartrecord.h"
#include "calstart/calstartrules.h"
#include "calstart/calstatus.h"
#include "common/pid.h"
#include "support/fake_data_interface.h"
#include "support/fake_log.h"

#include <gmock/gmock.h>

#include <QLocale>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

const qint32 kPid = BuildPid(1, 101, 3, 0, 1);

class CalStartLogic : public testing::Test
{
protected:
    void SetUp() override
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        m_di.addParameter(kPid, ParameterTypes::Calibration, u"SO2/NOx Cal"_s);
        m_di.setUser(u"A&B"_s, {Privileges::ChangeSettings});
        m_di.setChannelKind(12, 1);
        m_di.setChannelKind(22, 2);
        m_di.setChannelKind(23, 3);
        m_di.setChannelKind(34, 4);
        m_di.setChannelKind(35, 5);
    }
    void TearDown() override { QLocale::setDefault(QLocale::c()); }
    void setRecord(const QStringList &pairs) const
    {
        m_di.parameter(kPid)->setCurrentValue(Value(calRecord(pairs)));
    }

    FakeDataInterface m_di;
    RecordingLog m_log;
};

TEST(CalStartRecordRead, ChannelIdsMissingElementsAndDelay)
{
    const std::pair<QString, std::optional<int>> ids[]
        = {{u"C17"_s, 17}, {u"17"_s, 17}, {u"C0"_s, {}}, {u"0"_s, {}},
           {u""_s, {}},    {u"Cx"_s, {}}, {u"C-3"_s, {}}};
    for (const auto &[ioid, channel] : ids) {
        EXPECT_EQ(usableChannel(ioid), channel) << ioid.toStdString();
    }

    const CalStartRecord record = *CalStartRecord::fromXml(
        nullptr, calRecord({u"CalEnabled@C12"_s, u"True"_s, u"CalDelayMinutes"_s, u"soon"_s,
                            u"CalStartTimeUser"_s, u"13:30"_s}));
    EXPECT_TRUE(record.calEnabled);
    EXPECT_TRUE(record.enableChannelUsable());
    EXPECT_EQ(record.calStartTimeUser, QTime(13, 30));
    EXPECT_EQ(record.calDelayMinutes, u"0"_s);
    EXPECT_FALSE(record.calConfirmDefaultConfirm); // missing: false
    EXPECT_EQ(record.userFriendlyStatus, QString());
    EXPECT_EQ(CalStartRecord::fromXml(nullptr, u"not xml"_s), std::nullopt);
}

TEST(CalStartCommand, ExactTextOfASave)
{
    CalStartEntry entry;
    entry.startTime = u"12:05 AM"_s;
    entry.calAfterStartup = true;
    entry.calAfterEnterNormalOps = true;
    entry.startupDelay = u"45"_s;
    entry.confirmTimeout = u"60"_s;
    entry.disableAutoCal = true;
    EXPECT_EQ(BuildCalStartCommand(1234, u"A&B"_s, u"10.0.0.5"_s, entry),
              u"<Command \r\naction=\"ChangeCalStartSettings\" \r\npid=\"000001234\" \r\n"
              u"user=\"A&amp;B\" \r\nclientIP=\"10.0.0.5\">\r\n"
              u"<Item id=\"CalEnabled\" newValue=\"0\" />\r\n"
              u"<Item id=\"CalStartTime\" newValue=\"00:05\" />\r\n"
              u"<Item id=\"SkipIfOffline\" newValue=\"0\" />\r\n"
              u"<Item id=\"SkipDailyCalIfOnlineCalExists\" newValue=\"0\" />\r\n"
              u"<Item id=\"CalDelayMinutes\" newValue=\"45\" />\r\n"
              u"<Item id=\"CalAfterStartup\" newValue=\"1\" />\r\n"
              u"<Item id=\"CalAfterEnterNormalOps\" newValue=\"0\" />\r\n"
              u"<Item id=\"SkipStartupCalIfOnlineCalExists\" newValue=\"0\" />\r\n"
              u"<Item id=\"CalConfirmEnabled\" newValue=\"0\" />\r\n"
              u"<Item id=\"CalConfirmTimeout\" newValue=\"60\" />\r\n"
              u"<Item id=\"CalConfirmDefaultConfirm\" newValue=\"1\" />\r\n"
              u"<Item id=\"CalEvery26OpHours\" newValue=\"0\" />\r\n"
              u"</Command>"_s);

    entry.startTime = u"1:30 PM"_s;
    EXPECT_THAT(BuildCalStartCommand(1234, {}, {}, entry)->toStdString(),
                testing::HasSubstr("\"CalStartTime\" newValue=\"13:30\""));
    // Nothing is built from a field that does not convert.
    for (QString CalStartEntry::*field :
         {&CalStartEntry::startTime, &CalStartEntry::startupDelay, &CalStartEntry::normalOpsDelay,
          &CalStartEntry::confirmTimeout}) {
        CalStartEntry bad = entry;
        bad.*field = u"x"_s;
        EXPECT_EQ(BuildCalStartCommand(1234, {}, {}, bad), std::nullopt);
    }
}

TEST_F(CalStartLogic, ManualStartAndAbortRefusalsAreLoggedNotPosted)
{
    // %1: the PID; each refusal is one error line and posts nothing.
    // start, elements (element|text; empty: no value at all), line.
    const std::tuple<bool, const char *, const char *> cases[] = {
        {true, "", "CSET-0025: Can't start manual cal; no XValue available (%1)"},
        {false, "", "CSET-0013: Can't abort cal; no XValue available (%1)"},
        {true, "ManualCalStartSupported@C21|0",
         "CSET-0026: Can't start manual cal; not supported (%1)"},
        {false, "ManualCalAbortSupported@C|1", "CSET-0015: Can't abort cal; no channel ID (%1)"},
        {true, "ManualCalStartSupported@C1x|1",
         "CSET-0028: Can't start manual cal; channel ID '1x' is not numeric (%1)"},
        {false, "ManualCalAbortSupported@C1x|1",
         "CSET-0016: Can't abort cal; channel ID '1x' is not numeric (%1)"},
        {true, "ManualCalStartSupported@22|1",
         "CSET-0079: Can't write to channel; writing to Q1 implicit channel is not allowed "
         "(ChannelID=22, PID=%1)"},
        {true, "ManualCalStartSupported@C34|1",
         "CSET-0080: Can't write to channel; writing to Q2 multivalue CSV channel is not allowed "
         "(ChannelID=34, PID=%1)"},
        {false, "ManualCalAbortSupported@35|1",
         "CSET-0081: Can't write to channel; writing to Q2 multivalue UDT channel is not allowed "
         "(ChannelID=35, PID=%1)"},
        {false, "ManualCalAbortSupported@C0|1",
         "CSET-0082: Can't write to channel; channel is not defined (ChannelID=0, PID=%1)"},
    };
    for (const auto &[start, elements, line] : cases) {
        m_log.clear();
        const QString record = QString::fromUtf8(elements);
        m_di.parameter(kPid)->setCurrentValue(
            record.isEmpty() ? Value::null() : Value(calRecord(record.split(u'|'))));
        EXPECT_FALSE(start ? StartCalCheck(m_di, &m_log, kPid) : AbortCal(m_di, &m_log, kPid));
        EXPECT_EQ(m_log.lines(),
                  (QList<LogLine>{{4, QString::fromUtf8(line).arg(FormatPid(kPid))}}))
            << line;
    }
    EXPECT_TRUE(m_di.messageRecords()->posts().isEmpty());
}

TEST_F(CalStartLogic, ManualStartPostsTheChannelWriteThenTheLogLine)
{
    for (const QString &ioid : {u"C12"_s, u"12"_s}) {
        setRecord({u"ManualCalStartSupported@"_s + ioid, u"1"_s});
        EXPECT_TRUE(StartCalCheck(m_di, &m_log, kPid));
    }
    setRecord({u"ManualCalAbortSupported@C23"_s, u"1"_s});
    EXPECT_TRUE(AbortCal(m_di, &m_log, kPid));
    EXPECT_TRUE(m_log.isEmpty());
    const QList<PostedRecord> &posts = m_di.messageRecords()->posts();
    ASSERT_EQ(posts.size(), 6);
    for (int i : {0, 2}) {
        EXPECT_EQ(posts[i].recordType, u"Q1IOCOMMAND"_s);
        EXPECT_EQ(posts[i].sourceCode, u"CSET-0031"_s);
        EXPECT_EQ(
            posts[i].text,
            u"<Command action=\"WriteToChannel\" id=\"C12\" value=\"1\" priority=\"high\" />"_s);
    }
    EXPECT_EQ(posts[1].recordType, u"Q1DRCOMMAND-CAL"_s);
    EXPECT_EQ(posts[1].sourceCode, u"CSET-0033"_s);
    EXPECT_EQ(posts[1].text, u"<WriteMsgToAutoCalLog action=\"WriteMsgToAutoCalLog\" pid=\""_s
                                 + FormatPidPlain(kPid)
                                 + u"\" msg=\"** user requested a manual cal start (CSET-0029)\" "
                                   u"user=\"A&amp;B\"  clientIP=\"10.0.0.5\" />"_s);
    EXPECT_EQ(posts[4].recordType, u"Q2IOCOMMAND"_s);
    EXPECT_THAT(posts[5].text.toStdString(), testing::HasSubstr("a cal abort (CSET-0017)"));

    // A refused channel write posts nothing more; a refused log line keeps the write.
    m_di.messageRecords()->setFailure(u"disk full"_s);
    m_log.clear();
    EXPECT_FALSE(AbortCal(m_di, &m_log, kPid));
    EXPECT_EQ(m_log.texts(), QStringList{u"CSET-0032: Can't start manual cal; can't create msg to "
                                         u"set Cal Start bit ("_s
                                         + FormatPid(kPid) + u')'});
}

TEST(CalStartRules, TimeAndTimeoutFields)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const std::pair<QString, std::optional<QTime>> times[]
        = {{u"00:00"_s, QTime(0, 5)},     {u"12:03 AM"_s, QTime(0, 5)}, {u"00:05"_s, QTime(0, 5)},
           {u"1:30 PM"_s, QTime(13, 30)}, {u"noon"_s, std::nullopt},    {u""_s, std::nullopt}};
    for (const auto &[typed, accepted] : times) {
        EXPECT_EQ(acceptCalStartTime(typed), accepted) << typed.toStdString();
    }
    EXPECT_EQ(calStartTimeText(QTime(0, 5)), u"12:05 AM"_s);

    const std::pair<QString, std::optional<QString>> timeouts[] = {{u"0"_s, u"1"_s},
                                                                   {u"481"_s, u"480"_s},
                                                                   {u"0.5"_s, u"1"_s},
                                                                   {u"480"_s, u"480"_s},
                                                                   {u"ten"_s, std::nullopt}};
    for (const auto &[typed, kept] : timeouts) {
        EXPECT_EQ(clampConfirmTimeout(typed), kept) << typed.toStdString();
    }
    QLocale::setDefault(QLocale::c());
}

TEST(CalStartRules, Enabling)
{
    CalStartRecord record;
    record.calEnabledIoid = u"C12"_s;
    record.normalOpSupported = false;
    record.canDetermineOpHours = true;
    record.calConfirmSupported = true;
    record.manualCalAbortSupported = true;

    CalStartEnabling e = calStartEnabling(record, {false, false, true, true});
    EXPECT_TRUE(e.disableBox && e.dailyItems && e.startupFrame && e.every26Box);
    EXPECT_FALSE(e.startupDelay);     // startup not ticked
    EXPECT_FALSE(e.normalOpsTrigger); // not supported, even though ticked
    EXPECT_FALSE(e.normalOpsDelay);
    EXPECT_TRUE(e.confirmWaitBox && e.confirmDetails);
    EXPECT_FALSE(e.startButton);
    EXPECT_TRUE(e.abortButton);

    record.calEnabledIoid = u"Cx"_s;
    record.calConfirmSupported = false;
    e = calStartEnabling(record, {false, false, false, true});
    EXPECT_FALSE(e.disableBox || e.confirmFrame || e.confirmWaitBox || e.confirmDetails);
}

TEST_F(CalStartLogic, StatusLines)
{
    const auto online = [&](const QString &hours, const QString &every26) {
        setRecord({u"CalEnabled"_s, u"1"_s, u"CanDetermineOpHours"_s, u"1"_s,
                   u"CalEvery26OpHours"_s, every26, u"OpHoursSinceOnlineCal"_s, hours,
                   u"OpHoursStatusString"_s, hours + u" hours"_s, u"UserFriendlyStatus"_s,
                   u"Idle"_s});
        return UpdateOnlineCalStatus(m_di, &m_log, kPid);
    };
    StatusLine line = online(u"25"_s, u"1"_s);
    EXPECT_EQ(line.text, u"25 hours"_s);
    EXPECT_EQ(line.colour, StatusLine::Colour::Highlight);
    EXPECT_EQ(online(u"30"_s, u"0"_s).text, QString());
    EXPECT_EQ(UpdateAutoCalStatus(m_di, &m_log, kPid).text, u"Idle"_s);
    EXPECT_TRUE(m_log.isEmpty());

    m_di.parameter(kPid)->setCurrentValue(Value(u"not xml"_s));
    EXPECT_EQ(UpdateOnlineCalStatus(m_di, &m_log, kPid).text, QString());
    EXPECT_EQ(UpdateAutoCalStatus(m_di, &m_log, kPid).text, QString());
    const QString tail = u" (PID="_s + FormatPid(kPid) + u')';
    EXPECT_EQ(m_log.linesStartingWith(u"CSET-"_s),
              (QList<LogLine>{{4, u"CSET-0089: Cannot update online cal status"_s + tail},
                              {4, u"CSET-0087: Cannot update auto cal status"_s + tail}}));

    m_di.setFailure(kPid, FakeParameter::Op::GetCurrentValue, Error(5, u"gone"_s));
    m_log.clear();
    UpdateAutoCalStatus(m_di, &m_log, kPid);
    EXPECT_EQ(m_log.texts(), QStringList{u"CSET-0086: Cannot update auto cal status"_s + tail});
}

} // namespace
