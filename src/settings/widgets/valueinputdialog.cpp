#include "settings/widgets/valueinputdialog.h"

#include "settings/widgets/dialogframe.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace olvex {

ValueInputDialog::ValueInputDialog(UiServices * /*ui*/, QWidget *parent)
    : QDialog(parent)
    , m_prompt(new QLabel(this))
    , m_value(new QLineEdit(this))
    , m_reading(nullptr)
    , m_ok(new QPushButton(QStringLiteral("OK"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancel"), this))
{
    setUpValueDialog(*this, QStringLiteral("ValueInputDialog"));
    m_prompt->setObjectName(QStringLiteral("lblPrompt"));
    m_value->setObjectName(QStringLiteral("txtValue"));
    m_prompt->setWordWrap(true);
    m_prompt->setBuddy(m_value);
    m_reading = makeReadingLabel(*m_value, 0);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_prompt);
    layout->addWidget(m_value);
    layout->addWidget(m_reading);
    layout->addLayout(dialogButtonRow(*this, m_ok, m_cancel));
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    m_value->setFocus();
    setMinimumWidth(340);
}

void ValueInputDialog::setPrompt(const QString &prompt)
{
    m_prompt->setText(prompt);
}

QString ValueInputDialog::prompt() const
{
    return m_prompt->text();
}

QString ValueInputDialog::value() const
{
    return m_value->text();
}

void ValueInputDialog::setReadingType(int dataType)
{
    olvex::setReadingType(*m_reading, dataType);
}

void ValueInputDialog::setValue(const QString &text)
{
    m_value->setText(text);
    m_value->selectAll();
}

} // namespace olvex
