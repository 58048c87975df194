// The one test main of the suite: offscreen Qt, test-mode standard paths, a pinned locale, and
// any Qt warning turned into a test failure so that a component cannot complain unnoticed.
#include <gtest/gtest.h>

#include <QLocale>
#include <QStandardPaths>
#include <QString>

#ifdef OLVEX_TEST_GUI
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

#include <cstdlib>

namespace {

void failOnQtWarning(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg) {
        return;
    }
    // The offscreen platform says this of every top-level window; it is not the code's fault.
    if (message.contains(u"propagateSizeHints")) {
        return;
    }
    const QString where
        = context.file ? QString::fromUtf8(context.file) + u':' + QString::number(context.line)
                       : QStringLiteral("Qt");
    ADD_FAILURE() << "Qt message at " << where.toStdString() << ": " << message.toStdString();
    if (type == QtFatalMsg) {
        std::abort();
    }
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    // Texts of this system depend on the locale's date and time formats: tests see en_US unless
    // they pin another locale themselves.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    TestApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    qInstallMessageHandler(failOnQtWarning);
    return RUN_ALL_TESTS();
}

#include "common/value.h"
#include "support/printers.h"

void olvex::PrintTo(const olvex::Value &value, std::ostream *os)
{
    *os << value.debugText().toStdString();
}
