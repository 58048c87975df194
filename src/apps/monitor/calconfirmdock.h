#pragma once

#include "monitorcontext.h"

namespace olvex {

class DICalConfirm;
class MonitorWindow;

// The "Calibration Confirmation" panel, docked at the right of the window and refreshed at
// once. A new pending calibration brings the window to the front, raises the panel and flashes
// the window's taskbar entry.
DICalConfirm *addCalConfirmDock(MonitorWindow &window, const MonitorContext &context);

} // namespace olvex
