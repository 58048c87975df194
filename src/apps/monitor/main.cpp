// The operator window. Until the components land it shows an empty tab area; --screenshot DIR
// renders each tab to DIR/<tab>.png offscreen and exits, which is how `make run` shows it on a
// machine without a display.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <QTabWidget>
#include <QTextStream>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("olvex-monitor"));
    QApplication::setApplicationDisplayName(QStringLiteral("Olvex Monitor"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Olvex operator window"));
    parser.addHelpOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render each tab to DIR/<tab>.png and exit."),
                                        QStringLiteral("DIR"));
    parser.addOption(screenshot);
    parser.process(app);

    QMainWindow window;
    window.setWindowTitle(QApplication::applicationDisplayName());
    auto *tabs = new QTabWidget(&window);
    auto *placeholder = new QLabel(QStringLiteral("No components are installed yet."), tabs);
    placeholder->setAlignment(Qt::AlignCenter);
    tabs->addTab(placeholder, QStringLiteral("Overview"));
    window.setCentralWidget(tabs);
    window.statusBar()->showMessage(QStringLiteral("No site"));
    window.resize(1100, 700);

    if (parser.isSet(screenshot)) {
        const QDir dir(parser.value(screenshot));
        if (!dir.mkpath(QStringLiteral("."))) {
            QTextStream(stderr) << "cannot create " << dir.path() << '\n';
            return 1;
        }
        window.show();
        for (int i = 0; i < tabs->count(); ++i) {
            tabs->setCurrentIndex(i);
            QApplication::processEvents();
            const QString name = tabs->tabText(i).toLower().replace(u' ', u'-');
            const QString path = dir.absoluteFilePath(name + QStringLiteral(".png"));
            if (!window.grab().save(path)) {
                QTextStream(stderr) << "cannot write " << path << '\n';
                return 1;
            }
            QTextStream(stdout) << path << '\n';
        }
        return 0;
    }
    window.show();
    return QApplication::exec();
}
