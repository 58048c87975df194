#pragma once

#include <QString>

class QDialog;
class QHBoxLayout;
class QPushButton;

namespace olvex {

// What the settings dialogs share: their names, the title "Enter New Value" and modality.
void setUpValueDialog(QDialog &dialog, const QString &objectName);

// The row of buttons at the foot of a dialog, right-aligned. The first is the default button
// (Enter); a Cancel button answers Escape through reject(). The caller connects OK itself: some
// dialogs check the entry before they accept.
QHBoxLayout *dialogButtonRow(QDialog &dialog, QPushButton *ok, QPushButton *cancel = nullptr);

} // namespace olvex
