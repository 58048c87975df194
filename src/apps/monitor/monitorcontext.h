#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

namespace olvex {

class DataInterface;
class MessageLog;
class SiteStore;
class UiServices;

// What every component tab of the operator window is built from.
struct MonitorContext
{
    std::shared_ptr<SiteStore> store;
    std::shared_ptr<DataInterface> dataInterface;
    // The log the components write to: the site's, with error lines shown in the status bar.
    std::shared_ptr<MessageLog> messageLog;
    UiServices *ui = nullptr; // null: the Qt services
    QString userName;
    // Whether the window's own service carries out queued writes; when not, an olvex-das
    // process beside the site does.
    bool serviceInProcess = true;
    // The setting group to show first (0: the first of the tree, as the editor does).
    qint32 startGroup = 0;
    // Show the first group that holds settings rather than an empty parent group (for a
    // screenshot: a picture of an empty list tells nothing).
    bool preferFilledGroup = false;
};

} // namespace olvex
