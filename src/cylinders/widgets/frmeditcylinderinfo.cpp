#include "cylinders/widgets/frmeditcylinderinfo.h"

#include "common/datetime.h"
#include "common/error.h"
#include "common/widgets/uiservices.h"
#include "cylinders/gastypecodefunctions.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace olvex {

namespace {

const QString kTitle = QStringLiteral("Gas Cylinder Information");

QLineEdit *box(QWidget *parent, const QString &name, bool readOnly)
{
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(name);
    edit->setReadOnly(readOnly);
    if (readOnly) {
        edit->setFocusPolicy(Qt::ClickFocus);
        edit->setBackgroundRole(QPalette::Window);
    }
    return edit;
}

QLabel *label(QWidget *parent, const QString &name, const QString &text)
{
    auto *l = new QLabel(text, parent);
    l->setObjectName(name);
    return l;
}

QLabel *hint(QWidget *parent, const QString &name)
{
    QLabel *l = label(parent, name, QString());
    l->setWordWrap(true);
    l->setStyleSheet(QStringLiteral("color: #a05a00;"));
    l->hide();
    return l;
}

} // namespace

frmEditCylinderInfo::frmEditCylinderInfo(UiServices *ui, QWidget *parent)
    : QDialog(parent)
    , m_ui(ui)
{
    setObjectName(QStringLiteral("frmEditCylinderInfo"));
    setWindowTitle(kTitle);
    setModal(true);
    buildControls();
}

frmEditCylinderInfo::~frmEditCylinderInfo() = default;

void frmEditCylinderInfo::buildControls()
{
    m_description = label(this, QStringLiteral("lblCylDesc"), QString());
    QFont bold = m_description->font();
    bold.setBold(true);
    m_description->setFont(bold);

    auto *grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    int row = 0;
    grid->addWidget(
        label(this, QStringLiteral("lblCylDescCaption"), QStringLiteral("Cylinder Description")),
        row, 0);
    grid->addWidget(m_description, row++, 1, 1, 3);
    grid->addWidget(label(this, QStringLiteral("lblCurrent"), QStringLiteral("Current")), row, 1);
    grid->addWidget(label(this, QStringLiteral("lblNew"), QStringLiteral("New")), row++, 2);

    const auto addField = [&](const QString &caption, QLineEdit *&current, const QString &oldName,
                              QLineEdit *&fresh, const QString &newName) {
        current = box(this, oldName, true);
        fresh = box(this, newName, false);
        QLabel *l = label(this, u"lbl" + newName.mid(6), caption);
        l->setBuddy(fresh);
        grid->addWidget(l, row, 0);
        grid->addWidget(current, row, 1);
        grid->addWidget(fresh, row, 2);
        ++row;
    };
    addField(QStringLiteral("Cylinder &ID"), m_oldId, QStringLiteral("txtOldCylID"), m_newId,
             QStringLiteral("txtNewCylID"));
    addField(QStringLiteral("E&xpiration Date"), m_oldExp, QStringLiteral("txtOldExpDate"),
             m_newExp, QStringLiteral("txtNewExpDate"));
    m_selectDate = new QPushButton(QStringLiteral("..."), this);
    m_selectDate->setObjectName(QStringLiteral("cmdSelectExpirationDate"));
    m_selectDate->setToolTip(QStringLiteral("Pick the expiration date from a calendar"));
    m_selectDate->setAutoDefault(false);
    grid->addWidget(m_selectDate, row - 1, 3);
    m_newExp->setPlaceholderText(QStringLiteral("yyyy-mm-dd"));
    m_expHint = hint(this, QStringLiteral("lblExpirationHint"));
    grid->addWidget(m_expHint, row++, 2, 1, 2);
    addField(QStringLiteral("EPA &Vendor ID"), m_oldVendor, QStringLiteral("txtOldVendorID"),
             m_newVendor, QStringLiteral("txtNewVendorID"));
    addField(QStringLiteral("EPA &Gas Type Codes"), m_oldCodes, QStringLiteral("txtOldGasTypeCode"),
             m_newCodes, QStringLiteral("txtNewGasTypeCode"));
    m_codeProblems = hint(this, QStringLiteral("lblGasCodeProblems"));
    grid->addWidget(m_codeProblems, row++, 2, 1, 2);

    grid->addWidget(
        label(this, QStringLiteral("lblComponentGases"), QStringLiteral("Component Gases")), row++,
        0);
    for (int i = 0; i < kCylinderGasRows; ++i) {
        GasRow &gas = m_gasRows[size_t(i)];
        gas.name = label(this, QStringLiteral("lblGasName"), QString());
        gas.oldValue = box(this, QStringLiteral("txtOldGasValue"), true);
        gas.newValue = box(this, QStringLiteral("txtNewGasValue"), false);
        gas.units = label(this, QStringLiteral("lblGasUOM"), QString());
        gas.name->setBuddy(gas.newValue);
        gas.name->setIndent(12);
        grid->addWidget(gas.name, row, 0);
        grid->addWidget(gas.oldValue, row, 1);
        grid->addWidget(gas.newValue, row, 2);
        grid->addWidget(gas.units, row, 3);
        ++row;
    }

    m_helpText = new QPlainTextEdit(this);
    m_helpText->setObjectName(QStringLiteral("txtGasCodeExampleList"));
    m_helpText->setReadOnly(true);
    m_helpText->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_helpText->setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    m_helpText->setTabChangesFocus(true);
    m_helpText->setAccessibleName(QStringLiteral("Gas codes"));
    const QString help = u"* " + GetGasTypeCodeHelpText();
    m_helpText->setPlainText(QString(help).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    m_helpText->setMinimumWidth(
        m_helpText->fontMetrics().horizontalAdvance(
            QStringLiteral("PRM -- SRM-equivalent compressed gas primary reference material"))
        + 40);

    m_fixFrame = new QGroupBox(QStringLiteral("Fix Calibration Checks"), this);
    m_fixFrame->setObjectName(QStringLiteral("fraUpdateCalRecords"));
    m_effectiveNow = new QRadioButton(
        QStringLiteral("The new cylinder information will take effect &now"), m_fixFrame);
    m_effectiveNow->setObjectName(QStringLiteral("optEffectiveNow"));
    m_effectiveEarlier = new QRadioButton(
        QStringLiteral("The new cylinder information is effective on an &earlier date "
                       "(calibration checks only)"),
        m_fixFrame);
    m_effectiveEarlier->setObjectName(QStringLiteral("optEffectiveEarlier"));
    m_effectiveNow->setChecked(true);
    m_effectiveDate
        = label(m_fixFrame, QStringLiteral("lblEffectiveDate"), QStringLiteral("Effective Date"));
    m_effectiveDate->setFont(bold);
    m_installationLabel = label(
        m_fixFrame, QStringLiteral("lblCylinderInstallationDate"),
        QStringLiteral("Date (and time if necessary) when the new cylinder was installed:"));
    m_installationDate = box(m_fixFrame, QStringLiteral("txtCylinderInstallationDate"), false);
    m_installationDate->setPlaceholderText(QStringLiteral("yyyy-mm-dd hh:mm"));
    m_installationLabel->setBuddy(m_installationDate);
    QLabel *explanation = label(
        m_fixFrame, QStringLiteral("lblEffectiveExplanation"),
        QStringLiteral("Use this option if the cylinder was installed a few days ago, but the "
                       "cylinder information was not updated. This option will update the "
                       "existing calibration checks to use the new cylinder ID, expiration date, "
                       "vendor ID, and gas type codes."));
    explanation->setWordWrap(true);
    auto *fix = new QVBoxLayout(m_fixFrame);
    fix->addWidget(m_effectiveNow);
    fix->addWidget(m_effectiveEarlier);
    auto *earlier = new QGridLayout;
    earlier->setContentsMargins(24, 0, 0, 0);
    earlier->addWidget(m_effectiveDate, 0, 0, 1, 2);
    earlier->addWidget(m_installationLabel, 1, 0);
    earlier->addWidget(m_installationDate, 1, 1);
    earlier->addWidget(explanation, 2, 0, 1, 2);
    fix->addLayout(earlier);

    m_problem = label(this, QStringLiteral("lblProblem"), QString());
    m_problem->setWordWrap(true);
    m_problem->setStyleSheet(QStringLiteral("color: #c62828;"));
    m_problem->hide();

    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_ok->setDefault(true);
    m_cancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cancel->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_problem, 1);
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);

    // Every box wide enough for the longest usual gas code list; the help text beside the
    // whole form, tall enough to show all of it.
    const int boxWidth
        = fontMetrics().horizontalAdvance(QStringLiteral("SO2,NO,NO2,CO,CO2,O2,BALN")) + 16;
    for (QLineEdit *edit : findChildren<QLineEdit *>()) {
        edit->setMinimumWidth(boxWidth);
    }
    m_selectDate->setFixedWidth(m_selectDate->sizeHint().height() + 4);
    m_helpText->setMinimumHeight(m_helpText->fontMetrics().lineSpacing() * 28 + 12);

    auto *form = new QVBoxLayout;
    form->addLayout(grid);
    form->addStretch();
    form->addWidget(m_fixFrame);
    auto *upper = new QHBoxLayout;
    upper->addLayout(form, 3);
    upper->addWidget(m_helpText, 2);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(upper);
    layout->addLayout(buttons);

    connect(m_ok, &QPushButton::clicked, this, &frmEditCylinderInfo::cmdOK_Click);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_selectDate, &QPushButton::clicked, this,
            &frmEditCylinderInfo::cmdSelectExpirationDate_Click);
    connect(m_newCodes, &QLineEdit::textChanged, this, &frmEditCylinderInfo::showGasCodeProblems);
    connect(m_newExp, &QLineEdit::textChanged, this, &frmEditCylinderInfo::showExpirationHint);
    connect(m_effectiveEarlier, &QRadioButton::toggled, this,
            &frmEditCylinderInfo::updateInstallationDate);
    updateInstallationDate();
}

bool frmEditCylinderInfo::Setup(ParameterPtr cylinder, std::shared_ptr<DataInterface> dataInterface,
                                std::shared_ptr<MessageLog> messageLog)
{
    mobjCylinder = std::move(cylinder);
    mobjDI = std::move(dataInterface);
    mobjMessageLog = std::move(messageLog);
    try {
        if (!mobjCylinder || !mobjDI) {
            throw Error(91, QStringLiteral("No cylinder to show"));
        }
        m_current = loadCylinderEdit(*mobjCylinder, *mobjDI);
    } catch (...) {
        log(u"CSET-0005: " + currentError().description);
        return false;
    }
    if (const QString tooMany = tooManyGasesMessage(m_current); !tooMany.isEmpty()) {
        log(tooMany);
    }
    for (const QString &problem : std::as_const(m_current.gasProblems)) {
        log(problem);
    }
    m_description->setText(m_current.description);
    const auto fill = [](QLineEdit *current, QLineEdit *fresh, const QString &text) {
        current->setText(text);
        current->setCursorPosition(0);
        fresh->setText(text);
    };
    fill(m_oldId, m_newId, m_current.cylinderId);
    fill(m_oldExp, m_newExp, m_current.expirationText);
    fill(m_oldVendor, m_newVendor, m_current.vendorId);
    fill(m_oldCodes, m_newCodes, m_current.gasCodes);
    for (int i = 0; i < kCylinderGasRows; ++i) {
        const GasRow &row = m_gasRows[size_t(i)];
        const bool shown = i < m_current.gases.size();
        if (shown) {
            const CylinderGas &gas = m_current.gases[i];
            row.name->setText(gas.name);
            fill(row.oldValue, row.newValue, gas.value);
            row.units->setText(gas.units);
        }
        for (QWidget *w :
             {static_cast<QWidget *>(row.name), static_cast<QWidget *>(row.oldValue),
              static_cast<QWidget *>(row.newValue), static_cast<QWidget *>(row.units)}) {
            w->setVisible(shown);
        }
    }
    m_newId->setFocus();
    m_newId->selectAll();
    return true;
}

void frmEditCylinderInfo::log(const QString &line) const
{
    if (!mobjMessageLog) {
        return;
    }
    try {
        mobjMessageLog->LogMessage(Severity::Error, line);
    } catch (...) {
        // Nowhere else to report it.
    }
}

void frmEditCylinderInfo::showGasCodeProblems()
{
    const QStringList problems = GasTypeCodeListProblems(m_newCodes->text());
    m_codeProblems->setText(problems.join(u'\n'));
    m_codeProblems->setVisible(!problems.isEmpty());
}

void frmEditCylinderInfo::showExpirationHint()
{
    const QString typed = m_newExp->text().trimmed();
    const bool date = typed.isEmpty() || parseDateText(typed).has_value();
    m_expHint->setText(
        date ? QString() : QStringLiteral("Not a date: the expiration date will stay as it is."));
    m_expHint->setVisible(!date);
}

void frmEditCylinderInfo::updateInstallationDate()
{
    const bool earlier = m_effectiveEarlier->isChecked();
    m_installationDate->setEnabled(earlier);
    m_installationDate->setToolTip(
        earlier ? QString()
                : QStringLiteral("Choose \"effective on an earlier date\" to enter when the "
                                 "cylinder was installed."));
    if (earlier && isVisible()) {
        m_installationDate->setFocus();
    }
}

void frmEditCylinderInfo::cmdSelectExpirationDate_Click()
{
    try {
        QDialog picker(this);
        picker.setObjectName(QStringLiteral("frmSelectDate"));
        picker.setWindowTitle(QStringLiteral("Expiration Date"));
        auto *calendar = new QCalendarWidget(&picker);
        calendar->setObjectName(QStringLiteral("calExpirationDate"));
        if (const auto typed = parseDateText(m_newExp->text().trimmed())) {
            calendar->setSelectedDate(typed->date());
        }
        auto *buttons
            = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &picker);
        connect(buttons, &QDialogButtonBox::accepted, &picker, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, &picker, &QDialog::reject);
        connect(calendar, &QCalendarWidget::activated, &picker, &QDialog::accept);
        auto *layout = new QVBoxLayout(&picker);
        layout->addWidget(calendar);
        layout->addWidget(buttons);
        if (UiServices::resolve(m_ui).runModal(picker) == QDialog::Accepted) {
            m_newExp->setText(cylinderDateText(QDateTime(calendar->selectedDate(), QTime(0, 0))));
        }
    } catch (...) {
        log(u"CSET-0008: " + currentError().description);
    }
}

void frmEditCylinderInfo::cmdOK_Click()
{
    if (!mobjCylinder || !mobjDI) {
        reject();
        return;
    }
    CylinderEditInput input;
    input.cylinderId = m_newId->text();
    input.expiration = m_newExp->text();
    input.vendorId = m_newVendor->text();
    input.gasCodes = m_newCodes->text();
    for (int i = 0; i < m_current.gases.size() && i < kCylinderGasRows; ++i) {
        input.gasValues.append(m_gasRows[size_t(i)].newValue->text());
    }
    input.effectiveEarlier = m_effectiveEarlier->isChecked();
    input.installationDate = m_installationDate->text();
    try {
        m_result = saveCylinderEdit(*mobjCylinder, *mobjDI, mobjMessageLog.get(), m_current, input,
                                    [this](const QString &text) {
                                        UiServices::resolve(m_ui).ShowMessageBox(
                                            text, MessageBoxStyle::Exclamation, kTitle);
                                    });
    } catch (...) {
        const QString line = u"CSET-0008: " + currentError().description;
        log(line);
        m_problem->setText(line);
        m_problem->show();
        return;
    }
    accept();
}

} // namespace olvex
