#pragma once

#include <QString>

namespace olvex {

class DISettings;
class MonitorWindow;

// What the operator arranged in the window, kept between runs in the user's settings: its
// geometry and docks, the settings tab's splitter, the groups expanded and the group shown
// (per site, since group PIDs belong to one). settings may be null.
void restoreWindowMemory(MonitorWindow &window, DISettings *settings, const QString &siteId,
                         bool restoreGroup);
void saveWindowMemory(const MonitorWindow &window, const DISettings *settings,
                      const QString &siteId);

} // namespace olvex
