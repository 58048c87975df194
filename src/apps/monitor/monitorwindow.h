#pragma once

#include <QMainWindow>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <utility>

class QDockWidget;
class QLabel;
class QTabWidget;

namespace olvex {

// The operator window: one tab per component, and a status bar naming the site, the user and
// the store's backend. Components are added with addTab in the order they appear.
class MonitorWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MonitorWindow(QWidget *parent = nullptr);

    // shotName names the tab's screenshot file (<shotName>.png); empty: the title in lower
    // case with blanks as dashes.
    void addTab(QWidget *component, const QString &title, const QString &shotName = {});
    QTabWidget *tabs() const { return m_tabs; }
    // One more picture for --screenshot, after the tabs': make builds the widget (a dialog open
    // on the site's data), which is rendered to <shotName>.png and destroyed; null: no picture.
    void addShot(const QString &shotName, std::function<std::unique_ptr<QWidget>()> make);
    // A panel docked beside the tabs; saveScreenshots renders it alone to <shotName>.png.
    void addDock(QDockWidget *dock, Qt::DockWidgetArea area, const QString &shotName);

    void setSite(const QString &siteId, const QString &siteName);
    void setUser(const QString &userName);
    void setBackend(const QString &backend);
    // A line a component raised: shown in the status bar until the next one.
    void showProblem(const QString &line);

    // Renders every tab, in order, to dir/<shotName>.png; returns the files written. Throws
    // olvex::Error when a file cannot be written.
    QStringList saveScreenshots(const QString &dir);

private:
    QTabWidget *m_tabs;
    QStringList m_shotNames;
    QList<std::pair<QString, std::function<std::unique_ptr<QWidget>()>>> m_extraShots;
    QList<std::pair<QDockWidget *, QString>> m_dockShots;
    QLabel *m_site;
    QLabel *m_user;
    QLabel *m_backend;
};

} // namespace olvex
