// Placed first on olvex_core's include path: the headless library must never reach QtGui.
#error "olvex_core is headless: move this code to a widgets/ folder (olvex_ui)"
