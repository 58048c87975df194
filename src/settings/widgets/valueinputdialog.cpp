#include "settings/widgets/valueinputdialog.h"

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
    , m_ok(new QPushButton(QStringLiteral("OK"), this))
    , m_cancel(new QPushButton(QStringLiteral("Cancel"), this))
{
    setObjectName(QStringLiteral("ValueInputDialog"));
    setWindowTitle(QStringLiteral("Enter New Value"));
    setModal(true);
    m_prompt->setObjectName(QStringLiteral("lblPrompt"));
    m_value->setObjectName(QStringLiteral("txtValue"));
    m_ok->setObjectName(QStringLiteral("cmdOK"));
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    m_prompt->setWordWrap(true);
    m_prompt->setBuddy(m_value);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_prompt);
    layout->addWidget(m_value);
    layout->addLayout(buttons);

    m_ok->setDefault(true);
    m_cancel->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
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

void ValueInputDialog::setValue(const QString &text)
{
    m_value->setText(text);
    m_value->selectAll();
}

} // namespace olvex
