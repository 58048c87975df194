#include "monitorwindow.h"

#include "common/error.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QLabel>
#include <QStatusBar>
#include <QTabWidget>

namespace olvex {

namespace {

QLabel *statusField(QWidget *parent, const QString &name)
{
    auto *label = new QLabel(parent);
    label->setObjectName(name);
    label->setContentsMargins(6, 0, 6, 0);
    return label;
}

} // namespace

MonitorWindow::MonitorWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_tabs(new QTabWidget(this))
    , m_site(statusField(this, QStringLiteral("lblSite")))
    , m_user(statusField(this, QStringLiteral("lblUser")))
    , m_backend(statusField(this, QStringLiteral("lblBackend")))
{
    setObjectName(QStringLiteral("MonitorWindow"));
    setWindowTitle(QApplication::applicationDisplayName());
    m_tabs->setObjectName(QStringLiteral("tabsComponents"));
    m_tabs->setDocumentMode(true);
    setCentralWidget(m_tabs);
    statusBar()->addPermanentWidget(m_site);
    statusBar()->addPermanentWidget(m_user);
    statusBar()->addPermanentWidget(m_backend);
    resize(1180, 720);
}

void MonitorWindow::addTab(QWidget *component, const QString &title, const QString &shotName)
{
    m_tabs->addTab(component, title);
    m_shotNames << (shotName.isEmpty() ? title.toLower().replace(u' ', u'-') : shotName);
}

void MonitorWindow::addDock(QDockWidget *dock, Qt::DockWidgetArea area, const QString &shotName)
{
    addDockWidget(area, dock);
    m_dockShots.append({dock, shotName});
}

void MonitorWindow::setSite(const QString &siteId, const QString &siteName)
{
    m_site->setText(u"Site: " + siteId);
    m_site->setToolTip(siteName);
    setWindowTitle(siteName.isEmpty() ? QApplication::applicationDisplayName()
                                      : siteName + u" - " + QApplication::applicationDisplayName());
}

void MonitorWindow::setUser(const QString &userName)
{
    m_user->setText(u"User: " + userName);
}

void MonitorWindow::setBackend(const QString &backend)
{
    m_backend->setText(u"Backend: " + backend);
}

void MonitorWindow::showProblem(const QString &line)
{
    statusBar()->showMessage(line);
}

void MonitorWindow::addShot(const QString &shotName, std::function<std::unique_ptr<QWidget>()> make)
{
    m_extraShots.append({shotName, std::move(make)});
}

QStringList MonitorWindow::saveScreenshots(const QString &dir)
{
    const QDir target(dir);
    if (!target.mkpath(QStringLiteral("."))) {
        throw Error(75, u"Cannot create the folder " + QDir::toNativeSeparators(dir));
    }
    QStringList written;
    for (int i = 0; i < m_tabs->count(); ++i) {
        m_tabs->setCurrentIndex(i);
        // Let the tab lay itself out and paint before it is grabbed.
        QApplication::processEvents();
        QApplication::processEvents();
        const QString path = target.absoluteFilePath(m_shotNames.value(i) + u".png");
        if (!grab().save(path)) {
            throw Error(75, u"Cannot write " + QDir::toNativeSeparators(path));
        }
        written << path;
    }
    for (const auto &[name, make] : std::as_const(m_extraShots)) {
        const std::unique_ptr<QWidget> widget = make();
        if (!widget) {
            continue;
        }
        widget->show();
        QApplication::processEvents();
        QApplication::processEvents();
        const QString path = target.absoluteFilePath(name + u".png");
        if (!widget->grab().save(path)) {
            throw Error(75, u"Cannot write " + QDir::toNativeSeparators(path));
        }
        written << path;
    }
    for (const auto &[dock, shotName] : std::as_const(m_dockShots)) {
        const QString path = target.absoluteFilePath(shotName + u".png");
        if (!dock->grab().save(path)) {
            throw Error(75, u"Cannot write " + QDir::toNativeSeparators(path));
        }
        written << path;
    }
    return written;
}

} // namespace olvex
