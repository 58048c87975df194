#pragma once

#include <QString>

class QDialog;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace olvex {

// What the settings dialogs share: their names, the title "Enter New Value" and modality.
void setUpValueDialog(QDialog &dialog, const QString &objectName);

// The row of buttons at the foot of a dialog, right-aligned. The first is the default button
// (Enter); a Cancel button answers Escape through reject(). The caller connects OK itself: some
// dialogs check the entry before they accept.
QHBoxLayout *dialogButtonRow(QDialog &dialog, QPushButton *ok, QPushButton *cancel = nullptr);

// The dialog's first line: the setting's name and, when it has one, its unit in brackets.
// Hidden while the name is empty.
void setSettingHeading(QLabel &heading, const QString &name, const QString &unit = {});
QLabel *makeSettingHeading(QDialog &dialog);

// The data type of a reading label that shows nothing.
inline constexpr int kNoReading = -1;

// A label under field that says, as the operator types, how the entry reads for a setting of
// dataType (readEntry): "reads as 25", or in the warning colour "not a number". A data type
// without a reading leaves it hidden; setReadingType changes the type later.
QLabel *makeReadingLabel(QLineEdit &field, int dataType);
void setReadingType(QLabel &reading, int dataType);

// A field shown for reference only: the window's background and no frame, so it does not look
// like a place to type, yet its text can still be selected and copied.
void showAsReadOnly(QLineEdit &field);

} // namespace olvex
