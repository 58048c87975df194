#pragma once

#include <QList>
#include <QTreeWidget>
#include <QTreeWidgetItem>

#include <utility>

namespace olvex {

// Top-level items of a tree widget held back while a fill is under way, and inserted in one go
// when the outermost scope ends: a large fill costs the view one update instead of one per item.
// (Updates stay enabled: turning them back on would repaint the scroll bars and header too.)
class PendingTopLevelItems
{
public:
    explicit PendingTopLevelItems(QTreeWidget &view)
        : m_view(view)
    {}
    PendingTopLevelItems(const PendingTopLevelItems &) = delete;
    PendingTopLevelItems &operator=(const PendingTopLevelItems &) = delete;

    void add(QTreeWidgetItem *item)
    {
        if (m_depth > 0) {
            m_items.append(item);
        } else {
            m_view.addTopLevelItem(item);
        }
    }
    // Inserts what is held back now, inside a scope too: a row about to be selected must be in
    // the view.
    void flush()
    {
        if (!m_items.isEmpty()) {
            m_view.addTopLevelItems(std::exchange(m_items, {}));
        }
    }
    // Deletes the items not inserted yet (the view is being cleared).
    void discard()
    {
        qDeleteAll(m_items);
        m_items.clear();
    }
    const QList<QTreeWidgetItem *> &items() const { return m_items; }

    class Scope
    {
    public:
        explicit Scope(PendingTopLevelItems &pending)
            : m_pending(pending)
        {
            ++m_pending.m_depth;
        }
        ~Scope()
        {
            if (--m_pending.m_depth == 0) {
                m_pending.flush();
            }
        }
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;

    private:
        PendingTopLevelItems &m_pending;
    };

private:
    QTreeWidget &m_view;
    QList<QTreeWidgetItem *> m_items;
    int m_depth = 0;
};

} // namespace olvex
