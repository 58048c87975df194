// The cylinder list and the edit dialog driven as an operator would, on an in-memory site.
#include "common/widgets/reportlist.h"
#include "cylinders/cylinder_fixture.h"
#include "cylinders/gastypecodefunctions.h"
#include "cylinders/widgets/disysdefcylinders.h"
#include "cylinders/widgets/frmeditcylinderinfo.h"
#include "support/fake_log.h"
#include "support/widgets/scripted_ui.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace olvex;
using namespace olvex::test;
using namespace Qt::StringLiterals;

namespace {

class CylinderListTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const QDate today = di->clock()->Now().date();
        addCylinder(*di, 1, u"CC412233"_s, Value(QDateTime(today.addDays(410), QTime(0, 0))),
                    {{u"SO2"_s, 450.5, u"ppm"_s}, {u"NO"_s, 250, u"ppm"_s}});
        addCylinder(*di, 2, u"EB0091774"_s, Value(QDateTime(today.addDays(-12), QTime(0, 0))));
        addCylinder(*di, 3, u"XL55012"_s, Value(QDateTime(today.addDays(21), QTime(0, 0))));
        di->addSetting(100100, u"Not a cylinder"_s, 1, Value(1));
    }

    // The first column of each row.
    QStringList ids() const
    {
        QStringList ids;
        for (int i = 0; i < list.lsvCylinders()->rowCount(); ++i) {
            ids << list.lsvCylinders()->row(i)->text(0);
        }
        return ids;
    }

    std::shared_ptr<FakeDataInterface> di = std::make_shared<FakeDataInterface>();
    std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
    ScriptedUi ui;
    DISysDefCylinders list{&ui};
};

TEST_F(CylinderListTest, ListTextChoosesTheRows)
{
    const QList<std::tuple<QString, QStringList, QStringList>> cases{
        {QString(), {u"CC412233"_s, u"EB0091774"_s, u"XL55012"_s}, {}},
        {u"0,"_s + QString::number(cylinderPid(3)), {u"XL55012"_s}, {}},
        {QString::number(cylinderPid(2)) + u",20170099,"_s + QString::number(cylinderPid(1)),
         {u"EB0091774"_s, u"CC412233"_s},
         {u"CSET-0003: can't load cylinder 0-201-7-00-99; PID does not exist"_s}},
        {u"20170099"_s,
         {u"No cylinders"_s},
         {u"CSET-0003: can't load cylinder 0-201-7-00-99; PID does not exist"_s}},
    };
    for (const auto &[cylinderList, expected, logged] : cases) {
        SCOPED_TRACE(cylinderList.toStdString());
        log->clear();
        list.Setup(log, di, cylinderList);
        EXPECT_EQ(ids(), expected);
        EXPECT_EQ(log->texts(), logged);
    }
    EXPECT_EQ(list.lsvCylinders()->headerItem()->text(5), u"Pressure"_s);
}

TEST_F(CylinderListTest, MarksExpiredAndExpiringCylinders)
{
    list.Setup(log, di, QString());
    ReportList *rows = list.lsvCylinders();
    QTreeWidgetItem *valid = rows->findByKey(u"K0020170001"_s);
    QTreeWidgetItem *expired = rows->findByKey(u"K0020170002"_s);
    QTreeWidgetItem *soon = rows->findByKey(u"K0020170003"_s);
    ASSERT_TRUE(valid && expired && soon);
    EXPECT_EQ(valid->text(2), u"SO2 450.5 ppm,  NO 250 ppm"_s);
    EXPECT_EQ(valid->text(5), u"1850 psig"_s);
    EXPECT_TRUE(valid->toolTip(1).isEmpty());
    EXPECT_EQ(expired->toolTip(0), u"Expired 12 days ago"_s);
    EXPECT_EQ(soon->toolTip(1), u"Expires in 21 days"_s);
    EXPECT_NE(expired->foreground(1).color(), soon->foreground(1).color());
    EXPECT_NE(soon->foreground(1).color(), valid->foreground(1).color());
    EXPECT_NE(ReportList::smallIcon(expired), ReportList::smallIcon(valid));
    EXPECT_NE(ReportList::smallIcon(soon), ReportList::smallIcon(valid));
}

TEST_F(CylinderListTest, RefreshesOnTheDataInterfaceEvent)
{
    list.Setup(log, di, QString());
    di->parameter(cylinderPid(1))->setAttributeValue(CylinderAttr::CylinderId, Value(u"NEW1"_s));
    di->raiseUseSecondaryDasConnectionStringsChanged();
    EXPECT_EQ(ids().first(), u"NEW1"_s);
}

TEST_F(CylinderListTest, EditDoesNothingWithoutACylinder)
{
    list.Setup(log, di, u"20170099"_s);
    list.lsvCylinders()->selectRow(list.lsvCylinders()->row(0));
    EXPECT_FALSE(list.cmdEdit()->isEnabled());
    list.cmdEdit_Click();
    EXPECT_TRUE(ui.modalDialogs().isEmpty());
}

TEST_F(CylinderListTest, EditStoresUpperCaseAndTheListShowsItAtOnce)
{
    list.Setup(log, di, QString());
    list.lsvCylinders()->selectRow(list.lsvCylinders()->findByKey(u"K0020170001"_s));
    ASSERT_TRUE(list.cmdEdit()->isEnabled());
    ui.queueModal([](QDialog &dialog) {
        auto &edit = static_cast<frmEditCylinderInfo &>(dialog);
        EXPECT_EQ(edit.windowTitle(), u"Gas Cylinder Information"_s);
        EXPECT_EQ(edit.txtOldCylID()->text(), u"CC412233"_s);
        EXPECT_EQ(edit.lblGasName(1)->text(), u"NO"_s);
        EXPECT_FALSE(edit.txtNewGasValue(2)->isVisibleTo(&edit));
        EXPECT_EQ(edit.txtGasCodeExampleList()->toPlainText(),
                  u"* "_s + GetGasTypeCodeHelpText().replace(u"\r\n"_s, u"\n"_s));
        EXPECT_FALSE(edit.txtCylinderInstallationDate()->isEnabled());

        edit.txtNewGasTypeCode()->setText(u"air,baln"_s);
        EXPECT_EQ(edit.lblGasCodeProblems()->text(),
                  u"Code 'AIR' is not allowed in combination with other codes."_s);
        edit.txtNewGasTypeCode()->setText(u"so2,no,baln"_s);
        EXPECT_TRUE(edit.lblGasCodeProblems()->text().isEmpty());

        edit.txtNewCylID()->setText(u"cc99"_s);
        edit.optEffectiveEarlier()->setChecked(true);
        EXPECT_TRUE(edit.txtCylinderInstallationDate()->isEnabled());
        edit.txtCylinderInstallationDate()->setText(u"2026-02-27 06:00"_s);
        QTest::mouseClick(edit.cmdOK(), Qt::LeftButton);
        return edit.result();
    });
    list.cmdEdit_Click();
    ASSERT_EQ(ui.modalDialogs().size(), 1);
    EXPECT_EQ(ui.modalDialogs().first().result, int(QDialog::Accepted));
    EXPECT_EQ(ids().first(), u"CC99"_s);
    ASSERT_EQ(di->messageRecords()->posts().size(), 1);
    EXPECT_TRUE(di->messageRecords()->posts().first().text.contains(u"newcylid=\"CC99\""_s));
    EXPECT_TRUE(ui.messageBoxes().isEmpty());
    EXPECT_TRUE(log->isEmpty());
}

TEST_F(CylinderListTest, DialogWarnsOfABadDateAndKeepsOpenOnAFailure)
{
    frmEditCylinderInfo edit(&ui);
    ASSERT_TRUE(edit.Setup(di->parameter(cylinderPid(3)), di, log));
    edit.optEffectiveEarlier()->setChecked(true);
    edit.cmdOK_Click();
    EXPECT_EQ(ui.lastMessageBox().text, u"Enter a valid date/time."_s);
    EXPECT_EQ(ui.lastMessageBox().style, 48);
    EXPECT_EQ(edit.result(), int(QDialog::Accepted));

    frmEditCylinderInfo failing(&ui);
    ASSERT_TRUE(failing.Setup(di->parameter(cylinderPid(1)), di, log));
    di->setFailure(cylinderPid(1), FakeParameter::Op::SetAttribute, Error(3010, u"store gone"_s));
    failing.txtNewCylID()->setText(u"X"_s);
    failing.cmdOK_Click();
    EXPECT_EQ(failing.result(), int(QDialog::Rejected));
    EXPECT_EQ(failing.lblProblem()->text(), u"CSET-0008: store gone"_s);
    EXPECT_EQ(log->texts().last(), u"CSET-0008: store gone"_s);
}

} // namespace
