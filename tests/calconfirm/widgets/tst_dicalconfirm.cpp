#include "calconfirm/calconfirm_fixture.h"
#include "calconfirm/widgets/dicalconfirm.h"
#include "calconfirm/widgets/dicalconfirmsingle.h"

#include <gtest/gtest.h>

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>

#include <QPushButton>

namespace olvex::testing {
namespace {

using namespace Qt::StringLiterals;

class CalConfirmPanelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QObject::connect(&panel, &DICalConfirm::NewCalConfirmPending,
                         [this](const NewCalConfirmEvent &event) { events << event.pids; });
        ASSERT_TRUE(panel.Setup(site.log, site.di, site.reader));
    }
    // One refresh period of the panel, and what it posted and logged meanwhile.
    void minute()
    {
        posted = site.postedTexts().size();
        site.log->clear();
        site.di->clock()->advance(60);
    }
    QStringList newPosts() const { return site.postedTexts().mid(posted); }
    DICalConfirmSingle *row() const { return panel.rowOf(kSO2Cal); }

    CalConfirmSite site;
    DICalConfirm panel;
    QList<QList<qint32>> events;
    qsizetype posted = 0;
};

TEST_F(CalConfirmPanelTest, RowLivesFromPendingThroughHoldAndGoes)
{
    const IntervalSpec spec = site.di->clock()->createdSpecs().value(0);
    EXPECT_EQ(spec.name, u"Update Calibration Confirmation Window");
    EXPECT_EQ(std::tuple(spec.periodSeconds, spec.id, spec.firstDue.has_value(), spec.repeat),
              std::tuple(60, 29, false, true));
    minute();
    EXPECT_FALSE(panel.lblNoPendingCals()->isHidden());
    EXPECT_TRUE(newPosts().isEmpty());

    // Becomes pending (default: cancel at the deadline).
    site.reader->set(kSO2Cal, calRecord(true, QStringLiteral("Daily calibration"), false));
    minute();
    ASSERT_NE(row(), nullptr);
    EXPECT_EQ(site.log->texts(),
              QStringList{u"CSET-0090: Add pending cal confirmation (1-010-3-00-01)"_s});
    EXPECT_EQ(events, QList<QList<qint32>>{{kSO2Cal}});
    ASSERT_EQ(newPosts().size(), 1);
    EXPECT_TRUE(
        newPosts().first().contains(u"msg=\"CSET-0092: AddPendingCal: 1-010-3-00-01 SO2 Cal:"_s));
    EXPECT_EQ(row()->fraCalConfirm()->title(), u"SO2 Cal");
    EXPECT_EQ(row()->txtReason()->text(), u"Daily calibration");
    EXPECT_TRUE(panel.lblNoPendingCals()->isHidden());

    // Unchanged: nothing raised. Changed: CSET-0093 and the new text.
    minute();
    EXPECT_TRUE(newPosts().isEmpty());
    site.reader->set(kSO2Cal, calRecord(true, QStringLiteral("Unit startup"), false));
    minute();
    ASSERT_EQ(newPosts().size(), 1);
    EXPECT_TRUE(newPosts().first().contains(u"msg=\"CSET-0093: PendingCal changed: "_s));
    EXPECT_EQ(row()->txtReason()->text(), u"Unit startup");
    EXPECT_EQ(events.size(), 1);

    // Cleared without a press: "Starting Now" although the default was to cancel.
    site.reader->set(kSO2Cal, calRecord(false));
    minute();
    ASSERT_NE(row(), nullptr);
    EXPECT_EQ(row()->txtStartTime()->text(), u"Starting Now");
    EXPECT_FALSE(row()->Enabled());
    EXPECT_TRUE(row()->lblStartTime()->isHidden());
    const QString cleared
        = u"CSET-0094: ClearPendingCal: 1-010-3-00-01 SO2 Cal: Text='Starting Now'"_s;
    EXPECT_EQ(site.log->lines(),
              (QList<LogLine>{{1, u"CSET-0091: Clear pending cal confirmation (1-010-3-00-01)"_s},
                              {24577, cleared}}));
    ASSERT_EQ(newPosts().size(), 1);
    EXPECT_TRUE(newPosts().first().contains(cleared));

    // The hold ends with the next minute: the row goes, the list says it is empty.
    minute();
    EXPECT_EQ(row(), nullptr);
    EXPECT_TRUE(panel.visibleRows().isEmpty());
    EXPECT_FALSE(panel.lblNoPendingCals()->isHidden());
    EXPECT_EQ(newPosts().size(), 1);
    EXPECT_TRUE(newPosts().value(0).contains(
        u"msg=\"CSET-0098: There are no calibrations pending confirmation\""_s));
    EXPECT_FALSE(newPosts().value(0).contains(u"pid="_s));
    minute();
    EXPECT_TRUE(newPosts().isEmpty());
}

TEST_F(CalConfirmPanelTest, PendingOnlyBetweenRefreshesNeverGetsARow)
{
    minute();
    site.reader->set(kSO2Cal, calRecord(true));
    site.di->clock()->advance(30);
    site.reader->set(kSO2Cal, calRecord(false));
    minute();
    EXPECT_EQ(row(), nullptr);
    EXPECT_TRUE(events.isEmpty());
    EXPECT_TRUE(newPosts().isEmpty());
}

TEST_F(CalConfirmPanelTest, AnswersShowTheChoiceAndSendIt)
{
    // Which button, its caption once pressed, the items sent, the start time text once cleared.
    const std::tuple<bool, QString, QString, QString> cases[]
        = {{true, u"Confirmed"_s,
            u"CalConfirm\" newValue=\"1\" />\r\n<Item id=\"CalCancel\" newValue=\"0\""_s,
            u"Starting Now"_s},
           {false, u"Canceled"_s,
            u"CalConfirm\" newValue=\"0\" />\r\n<Item id=\"CalCancel\" newValue=\"1\""_s,
            u"Canceling Now"_s}};
    for (const auto &[confirm, caption, items, clearedText] : cases) {
        SCOPED_TRACE(caption.toStdString());
        site.reader->set(kSO2Cal, calRecord(true));
        minute();
        ASSERT_NE(row(), nullptr);
        QPushButton *pressed = confirm ? row()->btnConfirmCal() : row()->btnCancelCal();
        QPushButton *other = confirm ? row()->btnCancelCal() : row()->btnConfirmCal();
        posted = site.postedTexts().size();
        pressed->click();
        EXPECT_EQ(pressed->text(), caption);
        EXPECT_FALSE(pressed->isEnabled());
        EXPECT_FALSE(pressed->isHidden());
        EXPECT_TRUE(other->isHidden());
        EXPECT_TRUE(row()->txtDefaultAction()->isHidden());
        ASSERT_EQ(newPosts().size(), 1);
        EXPECT_TRUE(newPosts().first().contains(items));
        EXPECT_EQ(site.di->messageRecords()->posts().last().sourceCode, u"CSET-0046");

        site.reader->set(kSO2Cal, calRecord(false));
        minute();
        EXPECT_EQ(row()->txtStartTime()->text(), clearedText);
        minute();
        EXPECT_EQ(row(), nullptr);
    }
}

TEST_F(CalConfirmPanelTest, AFailedPostLeavesTheButtonsToTryAgain)
{
    site.reader->set(kSO2Cal, calRecord(true));
    minute();
    site.di->messageRecords()->setFailure(QStringLiteral("queue full"));
    row()->btnConfirmCal()->click();
    EXPECT_EQ(row()->btnConfirmCal()->text(), u"Confirm");
    EXPECT_TRUE(row()->btnConfirmCal()->isEnabled());
    EXPECT_FALSE(row()->btnCancelCal()->isHidden());
    EXPECT_EQ(site.log->linesStartingWith(u"CSET-0046"_s).size(), 1);
}

TEST(CalConfirmPanel, NoCalibrationThatSupportsConfirmationMeansNoTimer)
{
    CalConfirmSite site;
    site.di->parameter(kSO2Cal)->setAttributeValue(CalibrationAttr::SupportsConfirmation,
                                                   Value(false));
    site.di->parameter(kNOxCal)->setAttributeValue(CalibrationAttr::SupportsConfirmation, Value());
    DICalConfirm panel;
    EXPECT_FALSE(panel.Setup(site.log, site.di, site.reader));
    EXPECT_FALSE(panel.hasRefreshTimer());
    EXPECT_EQ(site.di->clock()->liveIntervalCount(), 0);
    EXPECT_FALSE(panel.lblNoPendingCals()->isHidden());
}

} // namespace
} // namespace olvex::testing
