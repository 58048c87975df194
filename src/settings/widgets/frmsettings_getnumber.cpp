#include "settings/widgets/frmsettings_getnumber.h"

#include "settings/widgets/dialogframe.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace olvex {

frmSettings_GetNumber::frmSettings_GetNumber(UiServices * /*ui*/, QWidget *parent)
    : QDialog(parent)
    , m_currentValue(new QLineEdit(this))
    , m_defaultValue(new QLineEdit(this))
    , m_newValue(new QLineEdit(this))
    , m_heading(makeSettingHeading(*this))
    , m_reading(nullptr)
    , m_hint(new QLabel(this))
    , m_ok(new QPushButton(QStringLiteral("OK"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancel"), this))
{
    setUpValueDialog(*this, QStringLiteral("frmSettings_GetNumber"));
    m_currentValue->setObjectName(QStringLiteral("txtCurrentValue"));
    m_defaultValue->setObjectName(QStringLiteral("txtDefaultValue"));
    m_newValue->setObjectName(QStringLiteral("txtNewValue"));
    m_hint->setObjectName(QStringLiteral("lblHint"));

    // Shown for reference only; still selectable so the operator can copy a value.
    for (QLineEdit *shown : {m_currentValue, m_defaultValue})
        showAsReadOnly(*shown);
    m_reading = makeReadingLabel(*m_newValue, kNoReading);
    m_hint->setVisible(false);
    m_hint->setWordWrap(true);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Current Value:"), m_currentValue);
    form->addRow(QStringLiteral("Default Value:"), m_defaultValue);
    form->addRow(QStringLiteral("New Value:"), m_newValue);
    form->addRow(QString(), m_reading);
    form->addRow(QString(), m_hint);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addLayout(form);
    layout->addLayout(dialogButtonRow(*this, m_ok, m_cancel));
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    m_newValue->setFocus();
    setMinimumWidth(340);
}

QString frmSettings_GetNumber::CurrentValue() const
{
    return m_currentValue->text();
}

void frmSettings_GetNumber::setCurrentValue(const QString &text)
{
    m_currentValue->setText(text);
    m_currentValue->setCursorPosition(0);
}

QString frmSettings_GetNumber::DefaultValue() const
{
    return m_defaultValue->text();
}

void frmSettings_GetNumber::setDefaultValue(const QString &text)
{
    m_defaultValue->setText(text);
    m_defaultValue->setCursorPosition(0);
}

QString frmSettings_GetNumber::NewValue() const
{
    return m_newValue->text();
}

void frmSettings_GetNumber::setNewValue(const QString &text)
{
    m_newValue->setText(text);
}

void frmSettings_GetNumber::setSetting(const QString &name, const QString &unit, int dataType)
{
    setSettingHeading(*m_heading, name, unit);
    setReadingType(*m_reading, dataType);
}

void frmSettings_GetNumber::setHint(const QString &text)
{
    m_hint->setText(text);
    m_hint->setVisible(!text.isEmpty());
}

} // namespace olvex
