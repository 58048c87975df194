#pragma once

#include "common/widgets/keyhash.h"
#include "common/widgets/pendingitems.h"

#include <QHash>
#include <QIcon>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTreeWidget>

#include <memory>
#include <memory_resource>
#include <optional>

namespace olvex {

class PlainTextWidths;

// A list of report rows with the semantics every component's lists share: each row has a key
// (unique among the rows, may be empty), a tag, a small icon chosen by number from the list's
// icon set, and sub-item texts in columns 1 and up. Rows are found by key in constant time.
//
// Signals separate what the user does from what the code does: rowClicked follows the user's
// click or keyboard move; selectRow() never emits it, so a component runs its own click handling
// exactly once. rowActivated is Enter or a double click.
class ReportList : public QTreeWidget
{
    Q_OBJECT
public:
    explicit ReportList(QWidget *parent = nullptr);
    ~ReportList() override;

    void setColumns(const QStringList &headers);
    void setSmallIcons(const QHash<int, QIcon> &icons) { m_icons = icons; }

    // Adds a row at the end. A key that another row already has is not given to the new row
    // (it is shown, but cannot be found by key). While a Batch is open the row is shown when
    // the batch closes.
    QTreeWidgetItem *addRow(const QString &key, const QString &text, const QString &tag,
                            int smallIcon = 0);
    void clearRows();

    int rowCount() const;
    QTreeWidgetItem *row(int index) const;
    QTreeWidgetItem *findByKey(const QString &key) const;
    bool contains(const QTreeWidgetItem *item) const;

    static QString rowKey(const QTreeWidgetItem *item);
    static QString rowTag(const QTreeWidgetItem *item);
    static int smallIcon(const QTreeWidgetItem *item);
    void setSmallIcon(QTreeWidgetItem *item, int icon) const;
    static void setSubItem(QTreeWidgetItem *item, int column, const QString &text);

    QTreeWidgetItem *selectedRow() const;
    // Makes item the current, selected row and scrolls to it (null clears the selection).
    void selectRow(QTreeWidgetItem *item);
    // Column width: the wider of its header and its texts (all of them, when the column holds
    // plain text; else the rows the view measures by itself).
    void autoSizeColumn(int column);

    // Rows added inside a batch reach the view in one insertion when the batch ends. (Updates
    // stay enabled: turning them back on would repaint the scroll bars and header too.)
    class Batch : public PendingTopLevelItems::Scope
    {
    public:
        explicit Batch(ReportList &list)
            : Scope(list.m_pending)
        {}
    };

Q_SIGNALS:
    void rowClicked(QTreeWidgetItem *item);
    void rowActivated(QTreeWidgetItem *item);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    std::optional<int> widestPlainText(int column);

    QHash<int, QIcon> m_icons;
    std::unique_ptr<PlainTextWidths> m_textWidths; // of the current font, made when first needed
    std::pmr::unsynchronized_pool_resource m_keyPool;
    KeyIndex m_byKey{&m_keyPool};
    PendingTopLevelItems m_pending{*this};
    bool m_selectingInCode = false;
};

} // namespace olvex
