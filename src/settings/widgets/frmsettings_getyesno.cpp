#include "settings/widgets/frmsettings_getyesno.h"

#include "settings/widgets/dialogframe.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace olvex {

frmSettings_GetYesNo::frmSettings_GetYesNo(UiServices * /*ui*/, QWidget *parent)
    : QDialog(parent)
    , m_false(new QRadioButton(QStringLiteral("No"), this))
    , m_true(new QRadioButton(QStringLiteral("Yes"), this))
    , m_ok(new QPushButton(QStringLiteral("OK"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancel"), this))
    , m_heading(makeSettingHeading(*this))
{
    setUpValueDialog(*this, QStringLiteral("frmSettings_GetYesNo"));
    m_false->setObjectName(QStringLiteral("optFalse"));
    m_true->setObjectName(QStringLiteral("optTrue"));

    auto *choices = new QButtonGroup(this);
    choices->addButton(m_false);
    choices->addButton(m_true);
    choices->setExclusive(true);

    auto *options = new QHBoxLayout;
    options->addWidget(m_false);
    options->addWidget(m_true);
    options->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addLayout(options);
    layout->addLayout(dialogButtonRow(*this, m_ok, m_cancel));
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_false, &QRadioButton::toggled, this, &frmSettings_GetYesNo::updateOk);
    connect(m_true, &QRadioButton::toggled, this, &frmSettings_GetYesNo::updateOk);
    updateOk();
    setMinimumWidth(260);
}

void frmSettings_GetYesNo::SetCaptions(const QString &falseCaption, const QString &trueCaption)
{
    m_false->setText(falseCaption);
    m_true->setText(trueCaption);
    updateOk();
}

void frmSettings_GetYesNo::setSetting(const QString &name)
{
    setSettingHeading(*m_heading, name);
}

void frmSettings_GetYesNo::setCurrentValue(std::optional<bool> value)
{
    if (value) {
        (*value ? m_true : m_false)->setChecked(true);
        (*value ? m_false : m_true)->setFocus();
    }
}

std::optional<bool> frmSettings_GetYesNo::NewValue() const
{
    return m_newValue;
}

void frmSettings_GetYesNo::done(int result)
{
    const bool chosen = m_true->isChecked() || m_false->isChecked();
    if (result == QDialog::Accepted && !chosen) {
        return; // OK means nothing until a state is chosen
    }
    m_newValue
        = result == QDialog::Accepted ? std::optional<bool>(m_true->isChecked()) : std::nullopt;
    QDialog::done(result);
}

void frmSettings_GetYesNo::updateOk()
{
    const bool chosen = m_true->isChecked() || m_false->isChecked();
    m_ok->setEnabled(chosen);
    m_ok->setToolTip(
        chosen ? QString()
               : QStringLiteral("Choose %1 or %2 first.").arg(m_false->text(), m_true->text()));
}

} // namespace olvex
