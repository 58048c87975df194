#include "windowmemory.h"

#include "common/widgets/keyedtree.h"
#include "monitorwindow.h"
#include "settings/widgets/disettings.h"

#include <QSettings>
#include <QSplitter>
#include <QTreeWidgetItemIterator>

namespace olvex {

namespace {

QString siteKey(const QString &siteId, const char *name)
{
    // A site id may hold characters QSettings reads as separators.
    return u"sites/" + QString::fromLatin1(siteId.toUtf8().toHex()) + u'/'
           + QString::fromLatin1(name);
}

} // namespace

void restoreWindowMemory(MonitorWindow &window, DISettings *settings, const QString &siteId,
                         bool restoreGroup)
{
    const QSettings memory;
    window.restoreGeometry(memory.value(QStringLiteral("window/geometry")).toByteArray());
    window.restoreState(memory.value(QStringLiteral("window/state")).toByteArray());
    if (!settings) {
        return;
    }
    settings->splitter()->restoreState(
        memory.value(QStringLiteral("settings/splitter")).toByteArray());
    KeyedTree *tree = settings->tvwGroups();
    const QVariant expanded = memory.value(siteKey(siteId, "expanded"));
    if (expanded.isValid()) {
        const QStringList keys = expanded.toStringList();
        for (QTreeWidgetItemIterator it(tree); *it; ++it) {
            (*it)->setExpanded(keys.contains(KeyedTree::nodeKey(*it)));
        }
    }
    const QString group = memory.value(siteKey(siteId, "group")).toString();
    QTreeWidgetItem *node = group.isEmpty() ? nullptr : tree->findByKey(group);
    if (restoreGroup && node && node != tree->selectedNode()) {
        tree->selectNode(node);
        settings->tvwGroups_NodeClick(node);
    }
}

void saveWindowMemory(const MonitorWindow &window, const DISettings *settings,
                      const QString &siteId)
{
    QSettings memory;
    memory.setValue(QStringLiteral("window/geometry"), window.saveGeometry());
    memory.setValue(QStringLiteral("window/state"), window.saveState());
    if (!settings) {
        return;
    }
    memory.setValue(QStringLiteral("settings/splitter"), settings->splitter()->saveState());
    QStringList expanded;
    for (QTreeWidgetItemIterator it(settings->tvwGroups()); *it; ++it) {
        if ((*it)->isExpanded()) {
            expanded << KeyedTree::nodeKey(*it);
        }
    }
    memory.setValue(siteKey(siteId, "expanded"), expanded);
    if (const QTreeWidgetItem *node = settings->tvwGroups()->selectedNode()) {
        memory.setValue(siteKey(siteId, "group"), KeyedTree::nodeKey(node));
    }
}

} // namespace olvex
