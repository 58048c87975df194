#include "monitortabs.h"

#include "common/error.h"
#include "common/host.h"
#include "common/pid.h"
#include "common/vocabulary.h"
#include "common/widgets/keyedtree.h"
#include "importexport/widgets/disettingsimportexport.h"
#include "monitorwindow.h"
#include "settings/widgets/disettings.h"
#include "settings/widgets/settinggroups.h"

#include <QTreeWidgetItemIterator>

namespace olvex {

namespace {

// A line a component raised: the host shows it and keeps it in the site's message log.
void reportProblem(MonitorWindow &window, const MonitorContext &context, const QString &line)
{
    window.showProblem(line);
    if (const std::shared_ptr<MessageLog> log = context.dataInterface->MessageLog()) {
        log->LogMessage(Severity::Error, line);
    }
}

bool holdsSettings(DataInterface &dataInterface, const QTreeWidgetItem *node)
{
    const qint32 group = groupNumberFromKey(KeyedTree::nodeKey(node));
    const std::shared_ptr<PidDirectory> directory = dataInterface.GetPidDirectory();
    return directory->PidExists(group)
           && !directory->GetPid(group, true)->GetAttribute(GroupAttr::Members).toArray().isEmpty();
}

// Shows the group the window was started on, or the first one that holds settings.
void showStartGroup(MonitorWindow &window, DISettings &settings, const MonitorContext &context)
{
    KeyedTree *tree = settings.tvwGroups();
    QTreeWidgetItem *node = nullptr;
    if (context.startGroup != 0) {
        node = tree->findByKey(groupNodeKey(context.startGroup));
        if (!node) {
            window.showProblem(u"There is no setting group " + FormatPid(context.startGroup)
                               + u" on this site.");
            return;
        }
    } else if (context.preferFilledGroup) {
        for (QTreeWidgetItemIterator it(tree); *it && !node; ++it) {
            if (holdsSettings(*context.dataInterface, *it)) {
                node = *it;
            }
        }
    }
    if (node && node != tree->selectedNode()) {
        tree->selectNode(node);
        settings.tvwGroups_NodeClick(node);
    }
}

} // namespace

QWidget *createSettingsTab(MonitorWindow &window, const MonitorContext &context)
{
    auto *settings = new DISettings(context.ui, &window);
    QObject::connect(
        settings, &DISettings::Problem, &window,
        [&window, context](const QString &line) { reportProblem(window, context, line); });
    settings->Setup(context.dataInterface, true);
    addSettingsShots(window, *settings, context);
    try {
        showStartGroup(window, *settings, context);
    } catch (...) {
        reportProblem(window, context, currentError().errorText());
    }
    return settings;
}

QWidget *createImportExportTab(MonitorWindow &window, const MonitorContext &context)
{
    auto *importExport = new DISettingsImportExport(context.ui, &window);
    importExport->Setup(context.messageLog, context.dataInterface);
    return importExport;
}

void addComponentTabs(MonitorWindow &window, const MonitorContext &context)
{
    auto *settings = static_cast<DISettings *>(createSettingsTab(window, context));
    window.addTab(settings, QStringLiteral("Settings"), QStringLiteral("settings"));
    auto *importExport
        = static_cast<DISettingsImportExport *>(createImportExportTab(window, context));
    window.addTab(importExport, QStringLiteral("Import/Export"), QStringLiteral("import-export"));
    // The settings tab shows what the import changed without waiting for its minute.
    QObject::connect(importExport, &DISettingsImportExport::Imported, settings,
                     &DISettings::Refresh);
    window.addTab(createCalStartTab(window, context), QStringLiteral("Calibration Start"),
                  QStringLiteral("calstart"));
    window.addTab(createCylindersTab(window, context), QStringLiteral("Gas Cylinders"),
                  QStringLiteral("cylinders"));
}

} // namespace olvex
