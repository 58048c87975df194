#pragma once

#include <QObject>

class QLineEdit;

namespace olvex {

// Lets a list of files be dropped on a text box: while dragging, the box offers the copy effect
// only for a list of files and no effect for anything else (plain text included); on the drop
// the first file's name replaces the box's text.
class FileDropFilter : public QObject
{
    Q_OBJECT
public:
    // Installs itself on box and is owned by it.
    explicit FileDropFilter(QLineEdit *box);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLineEdit *m_box;
};

} // namespace olvex
