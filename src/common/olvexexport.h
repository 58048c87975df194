#pragma once

// Which declarations the installed shared libraries make visible. Everything else is compiled
// with hidden visibility, so a host program can reach only what carries one of these marks, and
// the libraries stay free to change the rest.
//
// OLVEX_CORE_EXPORT marks the public API of libolvexsettings-core and, like a private export,
// the few core helpers the widgets library calls across the library boundary (their headers are
// not installed). OLVEX_WIDGETS_EXPORT marks the components and the UI services seam.
//
// The same objects also go into the project's internal static archives; there the marks change
// nothing.

#if defined(_WIN32)
#define OLVEX_DECL_EXPORT __declspec(dllexport)
#define OLVEX_DECL_IMPORT __declspec(dllimport)
#else
#define OLVEX_DECL_EXPORT __attribute__((visibility("default")))
#define OLVEX_DECL_IMPORT __attribute__((visibility("default")))
#endif

#if defined(OLVEX_BUILDING_CORE)
#define OLVEX_CORE_EXPORT OLVEX_DECL_EXPORT
#else
#define OLVEX_CORE_EXPORT OLVEX_DECL_IMPORT
#endif

#if defined(OLVEX_BUILDING_WIDGETS)
#define OLVEX_WIDGETS_EXPORT OLVEX_DECL_EXPORT
#else
#define OLVEX_WIDGETS_EXPORT OLVEX_DECL_IMPORT
#endif
