#pragma once

#include "benchmain.h"

#include <QApplication>

namespace olvex::bench {

// The main of a benchmark program that builds widgets: offscreen, one application object, then
// the usual run.
inline int runWidgetBenchmarks(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    return runBenchmarks(argc, argv);
}

} // namespace olvex::bench
