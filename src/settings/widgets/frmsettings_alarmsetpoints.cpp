#include "settings/widgets/frmsettings_alarmsetpoints.h"

#include "common/vocabulary.h"
#include "common/widgets/uiservices.h"
#include "settings/alarmsetpoints.h"
#include "settings/widgets/dialogframe.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace olvex {

namespace {

const char *const kFieldNames[]
    = {"txtSetpointHH", "txtSetpointH", "txtSetpointL", "txtSetpointLL"};

} // namespace

frmSettings_AlarmSetpoints::frmSettings_AlarmSetpoints(UiServices *ui, QWidget *parent)
    : QDialog(parent)
    , m_ui(ui)
    , m_ok(new QPushButton(QStringLiteral("OK"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancel"), this))
    , m_heading(makeSettingHeading(*this))
{
    setObjectName(QStringLiteral("frmSettings_AlarmSetpoints"));
    setWindowTitle(QStringLiteral("Alarm Settings"));
    setModal(true);

    auto *form = new QFormLayout;
    for (size_t rank = 0; rank < m_fields.size(); ++rank) {
        auto *field = new QLineEdit(this);
        field->setObjectName(QString::fromLatin1(kFieldNames[rank]));
        field->setPlaceholderText(QStringLiteral("not used"));
        field->setToolTip(QStringLiteral("Leave blank when this alarm level is not used."));
        auto *row = new QVBoxLayout;
        row->setSpacing(0);
        row->addWidget(field);
        row->addWidget(makeReadingLabel(*field, SettingType::Number));
        form->addRow(QString::fromLatin1(kAlarmSetpoints[rank].label), row);
        m_fields[rank] = field;
    }

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addLayout(form);
    layout->addLayout(dialogButtonRow(*this, m_ok, m_cancel));
    connect(m_ok, &QPushButton::clicked, this, &frmSettings_AlarmSetpoints::accept);
    m_fields[0]->setFocus();
    setMinimumWidth(280);
}

void frmSettings_AlarmSetpoints::setSetting(const QString &name, const QString &unit)
{
    setSettingHeading(*m_heading, name, unit);
}

Value frmSettings_AlarmSetpoints::setpoint(int rank) const
{
    return setpointFromText(m_fields.at(size_t(rank))->text());
}

void frmSettings_AlarmSetpoints::setSetpoint(int rank, const Value &value)
{
    m_fields.at(size_t(rank))->setText(value.toText());
}

void frmSettings_AlarmSetpoints::accept()
{
    UiServices &ui = UiServices::resolve(m_ui);
    AlarmValues values;
    for (size_t rank = 0; rank < values.size(); ++rank) {
        values[rank] = setpoint(int(rank));
        if (!values[rank].isEmpty() && !values[rank].isNumeric()) {
            ui.ShowMessageBox(u"The " + QString::fromLatin1(kAlarmSetpoints[rank].name)
                                  + u" value is not a number. Enter a number, or leave it blank "
                                    u"when this alarm level is not used.",
                              MessageBoxStyle::Exclamation, windowTitle());
            m_fields[rank]->setFocus();
            m_fields[rank]->selectAll();
            return;
        }
    }
    if (const std::optional<QString> violation = alarmOrderViolation(values)) {
        ui.ShowMessageBox(*violation, MessageBoxStyle::Exclamation, windowTitle());
        return;
    }
    QDialog::accept();
}

} // namespace olvex
