#include "settings/widgets/dialogframe.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>

namespace olvex {

void setUpValueDialog(QDialog &dialog, const QString &objectName)
{
    dialog.setObjectName(objectName);
    dialog.setWindowTitle(QStringLiteral("Enter New Value"));
    dialog.setModal(true);
}

QHBoxLayout *dialogButtonRow(QDialog &dialog, QPushButton *ok, QPushButton *cancel)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    ok->setAutoDefault(true);
    row->addWidget(ok);
    if (cancel) {
        cancel->setObjectName(QStringLiteral("cmdCancel"));
        cancel->setAutoDefault(false);
        QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
        row->addWidget(cancel);
    }
    return row;
}

} // namespace olvex
