# `make package`: Debian packages, one per install component.
#   libolvexsettings0        the shared libraries
#   libolvexsettings-dev     headers, the CMake package, the libraries' development links
#   olvexsettings-designer   the Qt Designer plugin
#   olvexsettings-programs   olvex-monitor (with desktop entry and icon), olvex-das, olvex-settings
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME olvexsettings)
set(CPACK_PACKAGE_VENDOR "Olvex")
set(CPACK_PACKAGE_CONTACT "Olvex Settings maintainers <olvex-settings@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Operator components for emissions monitoring sites")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
# Debug information stays in the build tree; the packages get stripped binaries.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# Library dependencies come from dpkg-shlibdeps; the packages' own libraries are found in the
# build tree.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src/package)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libolvexsettings0)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libolvexsettings-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DESIGNER_PACKAGE_NAME olvexsettings-designer)
set(CPACK_DEBIAN_DESIGNER_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME olvexsettings-programs)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION science)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Olvex Settings shared libraries")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Olvex Settings headers and CMake package")
set(CPACK_COMPONENT_DESIGNER_DESCRIPTION "Olvex Settings components for Qt Designer")
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION "Olvex operator window, service and command line")
# Each package depends on the packages of the components it needs, at the same version.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_DESIGNER_DEPENDS runtime)
# The headers include Qt's and Boost's.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qt6-base-dev (>= 6.4), libboost-dev (>= 1.74)")
set(CPACK_COMPONENTS_ALL runtime dev designer programs)
include(CPack)
