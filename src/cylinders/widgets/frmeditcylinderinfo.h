#pragma once

#include "common/olvexexport.h"

#include "common/host.h"
#include "cylinders/cylinderedit.h"

#include <QDialog>

#include <array>
#include <memory>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace olvex {

class UiServices;

// "Gas Cylinder Information": the cylinder's current data beside editable new values (ID,
// expiration date, EPA vendor ID, EPA gas type codes, up to five component gas values). OK saves
// the changed fields at once and, with "effective on an earlier date", asks the service to
// rewrite the calibration checks made since the installation date.
//
// While the operator types gas codes, every complaint of the gas code rules shows under the
// field: a hint only, since the list is stored as typed.
class OLVEX_WIDGETS_EXPORT frmEditCylinderInfo : public QDialog
{
    Q_OBJECT
public:
    explicit frmEditCylinderInfo(UiServices *ui = nullptr, QWidget *parent = nullptr);
    ~frmEditCylinderInfo() override;

    // Shows the cylinder. False (the failure logged as CSET-0005) when it cannot be read; a
    // cylinder with more than five gases is logged as CSET-0006 and shows the first five.
    bool Setup(ParameterPtr cylinder, std::shared_ptr<DataInterface> dataInterface,
               std::shared_ptr<MessageLog> messageLog);

    void cmdOK_Click();
    void cmdSelectExpirationDate_Click();

    QLineEdit *txtOldCylID() const { return m_oldId; }
    QLineEdit *txtNewCylID() const { return m_newId; }
    QLineEdit *txtOldExpDate() const { return m_oldExp; }
    QLineEdit *txtNewExpDate() const { return m_newExp; }
    QPushButton *cmdSelectExpirationDate() const { return m_selectDate; }
    QLineEdit *txtOldVendorID() const { return m_oldVendor; }
    QLineEdit *txtNewVendorID() const { return m_newVendor; }
    QLineEdit *txtOldGasTypeCode() const { return m_oldCodes; }
    QLineEdit *txtNewGasTypeCode() const { return m_newCodes; }
    QLabel *lblGasCodeProblems() const { return m_codeProblems; }
    QLabel *lblGasName(int row) const { return m_gasRows.at(row).name; }
    QLineEdit *txtOldGasValue(int row) const { return m_gasRows.at(row).oldValue; }
    QLineEdit *txtNewGasValue(int row) const { return m_gasRows.at(row).newValue; }
    QLabel *lblGasUOM(int row) const { return m_gasRows.at(row).units; }
    QLabel *lblCylDesc() const { return m_description; }
    QPlainTextEdit *txtGasCodeExampleList() const { return m_helpText; }
    QGroupBox *fraUpdateCalRecords() const { return m_fixFrame; }
    QRadioButton *optEffectiveNow() const { return m_effectiveNow; }
    QRadioButton *optEffectiveEarlier() const { return m_effectiveEarlier; }
    QLineEdit *txtCylinderInstallationDate() const { return m_installationDate; }
    QPushButton *cmdOK() const { return m_ok; }
    QPushButton *cmdCancel() const { return m_cancel; }
    // The last failure of OK, shown in the dialog (empty when none).
    QLabel *lblProblem() const { return m_problem; }
    // What the last OK did.
    const CylinderEditResult &lastResult() const { return m_result; }

private:
    struct GasRow
    {
        QLabel *name = nullptr;
        QLineEdit *oldValue = nullptr;
        QLineEdit *newValue = nullptr;
        QLabel *units = nullptr;
    };
    void buildControls();
    void showGasCodeProblems();
    void showExpirationHint();
    void updateInstallationDate();
    void log(const QString &line) const;

    UiServices *m_ui;
    ParameterPtr mobjCylinder;
    std::shared_ptr<DataInterface> mobjDI;
    std::shared_ptr<MessageLog> mobjMessageLog;
    CylinderEditData m_current;
    CylinderEditResult m_result;

    QLabel *m_description = nullptr;
    QLineEdit *m_oldId = nullptr;
    QLineEdit *m_newId = nullptr;
    QLineEdit *m_oldExp = nullptr;
    QLineEdit *m_newExp = nullptr;
    QLabel *m_expHint = nullptr;
    QPushButton *m_selectDate = nullptr;
    QLineEdit *m_oldVendor = nullptr;
    QLineEdit *m_newVendor = nullptr;
    QLineEdit *m_oldCodes = nullptr;
    QLineEdit *m_newCodes = nullptr;
    QLabel *m_codeProblems = nullptr;
    std::array<GasRow, kCylinderGasRows> m_gasRows;
    QPlainTextEdit *m_helpText = nullptr;
    QGroupBox *m_fixFrame = nullptr;
    QRadioButton *m_effectiveNow = nullptr;
    QRadioButton *m_effectiveEarlier = nullptr;
    QLabel *m_effectiveDate = nullptr;
    QLabel *m_installationLabel = nullptr;
    QLineEdit *m_installationDate = nullptr;
    QLabel *m_problem = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace olvex
