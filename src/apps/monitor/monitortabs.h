#pragma once

#include "monitorcontext.h"

class QWidget;

namespace olvex {

class DISettings;
class MonitorWindow;

// Adds the component tabs to the window, in order. A new component is one line in
// monitortabs.cpp and a factory function of its own.
void addComponentTabs(MonitorWindow &window, const MonitorContext &context);

// The settings editor, set up on the site with its minute refresh.
QWidget *createSettingsTab(MonitorWindow &window, const MonitorContext &context);

// The pictures --screenshot adds for the settings tab (settingsshots.cpp): Find "span" and the
// History dialog of the first listed setting with recorded changes.
void addSettingsShots(MonitorWindow &window, const DISettings &settings,
                      const MonitorContext &context);

// The settings import/export panel on the site, logging to the site's message log.
QWidget *createImportExportTab(MonitorWindow &window, const MonitorContext &context);

// The calibration start control on the site (calstarttab.cpp); the window grows to its
// DesiredWidth.
QWidget *createCalStartTab(MonitorWindow &window, const MonitorContext &context);
// The gas cylinder list of the site; --screenshot also shows its edit dialog.
QWidget *createCylindersTab(MonitorWindow &window, const MonitorContext &context);

} // namespace olvex
