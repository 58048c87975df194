#include "settings/widgets/dialogframe.h"

#include "settings/settingentry.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
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

namespace {

const char *const kReadingType = "olvexReadingType";

void updateReading(QLabel &reading, const QString &entry)
{
    const EntryReading read = readEntry(reading.property(kReadingType).toInt(), entry);
    reading.setText(read.text);
    // Red text that still reads on a dark palette; a fitting entry in the ordinary colour.
    reading.setStyleSheet(read.fits ? QString() : QStringLiteral("color: #c02020;"));
    reading.setVisible(!read.text.isEmpty());
}

} // namespace

void setSettingHeading(QLabel &heading, const QString &name, const QString &unit)
{
    const QString trimmedUnit = unit.trimmed();
    heading.setText(trimmedUnit.isEmpty() ? name : name + u" (" + trimmedUnit + u')');
    heading.setVisible(!name.isEmpty());
}

QLabel *makeSettingHeading(QDialog &dialog)
{
    auto *heading = new QLabel(&dialog);
    heading->setObjectName(QStringLiteral("lblSetting"));
    heading->setWordWrap(true);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    heading->setVisible(false);
    return heading;
}

QLabel *makeReadingLabel(QLineEdit &field, int dataType)
{
    auto *reading = new QLabel(field.parentWidget());
    reading->setObjectName(field.objectName().isEmpty() ? QStringLiteral("lblReading")
                                                        : u"lblReading_" + field.objectName());
    reading->setVisible(false);
    reading->setProperty(kReadingType, dataType);
    reading->setBuddy(&field);
    // The reading is what a screen reader should hear after each change.
    reading->setAccessibleName(QStringLiteral("How the entry reads"));
    QObject::connect(&field, &QLineEdit::textChanged, reading,
                     [reading](const QString &text) { updateReading(*reading, text); });
    updateReading(*reading, field.text());
    return reading;
}

void setReadingType(QLabel &reading, int dataType)
{
    reading.setProperty(kReadingType, dataType);
    if (auto *field = qobject_cast<QLineEdit *>(reading.buddy()))
        updateReading(reading, field->text());
}

void showAsReadOnly(QLineEdit &field)
{
    field.setReadOnly(true);
    field.setFrame(false);
    field.setFocusPolicy(Qt::ClickFocus);
    QPalette palette = field.palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    field.setPalette(palette);
}

} // namespace olvex
