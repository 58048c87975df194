# The project's small build API: one function per kind of target, so that each folder's
# CMakeLists.txt is a few lines. Warnings and sanitizers are interface libraries that every
# target links; nothing is set through global flags.

add_library(olvex_warnings INTERFACE)
target_compile_options(olvex_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Wsuggest-override
    -Wzero-as-null-pointer-constant)
target_compile_definitions(olvex_warnings INTERFACE
    QT_NO_KEYWORDS QT_NO_FOREACH QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400 QT_NO_CAST_FROM_BYTEARRAY)

add_library(olvex_sanitizers INTERFACE)
if(OLVEX_SANITIZE OR OLVEX_FUZZ)
    target_compile_options(olvex_sanitizers INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(olvex_sanitizers INTERFACE -fsanitize=address,undefined)
endif()
if(OLVEX_FUZZ)
    # Coverage for libFuzzer on every library the targets link, not only on the targets.
    target_compile_options(olvex_sanitizers INTERFACE -fsanitize=fuzzer-no-link)
endif()

add_library(olvex_build INTERFACE)
target_link_libraries(olvex_build INTERFACE olvex_warnings olvex_sanitizers)

set(OLVEX_SOURCE_ROOT ${PROJECT_SOURCE_DIR}/src)

# olvex_core_sources(<files...>) / olvex_ui_sources(<files...>): a src folder adds its files to
# one of the two libraries. Core files are headless; widget code lives in widgets/ subfolders.
# The files compile once, into the libraries' object sets (see src/CMakeLists.txt).
function(olvex_core_sources)
    target_sources(olvex_core_objects PRIVATE ${ARGN})
endfunction()
function(olvex_ui_sources)
    target_sources(olvex_ui_objects PRIVATE ${ARGN})
endfunction()

# olvex_folder_sources(): the usual case: *.cpp/*.h of the folder go to olvex_core, those of its
# widgets/ subfolder (and *.qrc there) to olvex_ui.
function(olvex_folder_sources)
    file(GLOB core_files CONFIGURE_DEPENDS
        ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    file(GLOB ui_files CONFIGURE_DEPENDS
        ${CMAKE_CURRENT_SOURCE_DIR}/widgets/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/widgets/*.h
        ${CMAKE_CURRENT_SOURCE_DIR}/widgets/*.qrc)
    if(core_files)
        olvex_core_sources(${core_files})
    endif()
    if(ui_files)
        olvex_ui_sources(${ui_files})
    endif()
endfunction()

# olvex_add_library(NAME <name> [SOURCES ...] [LIBS ...]): a static library of the project.
function(olvex_add_library)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
    add_library(${ARG_NAME} STATIC ${ARG_SOURCES})
    target_include_directories(${ARG_NAME} PUBLIC ${OLVEX_SOURCE_ROOT})
    target_link_libraries(${ARG_NAME} PUBLIC ${ARG_LIBS} PRIVATE olvex_build)
endfunction()

# olvex_add_executable(NAME <name> SOURCES ... [LIBS ...])
function(olvex_add_executable)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} olvex_build)
    # For --version; on the programs only, so that a release does not rebuild the libraries.
    target_compile_definitions(${ARG_NAME} PRIVATE OLVEX_VERSION="${PROJECT_VERSION}")
endfunction()

# olvex_add_test(NAME <name> SOURCES ... [LIBS ...] [GUI] [POSTGRES] [LABELS ...])
# One GoogleTest program; each test case becomes its own ctest test at test time. GUI tests get
# a QApplication, the others a QCoreApplication. POSTGRES adds the label "postgres".
function(olvex_add_test)
    cmake_parse_arguments(ARG "GUI;POSTGRES" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    if(ARG_GUI)
        target_link_libraries(${ARG_NAME} PRIVATE olvex_test_main_gui)
    else()
        target_link_libraries(${ARG_NAME} PRIVATE olvex_test_main)
    endif()
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} olvex_build)
    # Readable failure output for QString, QDateTime and olvex::Value in every test program.
    target_compile_options(${ARG_NAME} PRIVATE -include ${PROJECT_SOURCE_DIR}/tests/support/printers.h)
    set(labels ${ARG_LABELS})
    if(ARG_POSTGRES)
        list(APPEND labels postgres)
    endif()
    if(NOT labels)
        # An empty LABELS value would swallow the properties that follow it.
        set(labels unit)
    endif()
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    gtest_discover_tests(${ARG_NAME}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES
            LABELS "${labels}"
            TIMEOUT ${ARG_TIMEOUT}
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()

# olvex_add_fuzzer(NAME <name> SOURCES ... [LIBS ...]): a libFuzzer target (OLVEX_FUZZ builds).
function(olvex_add_fuzzer)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_compile_options(${ARG_NAME} PRIVATE -fsanitize=fuzzer)
    target_link_options(${ARG_NAME} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} olvex_build)
endfunction()

# olvex_add_benchmark(NAME <name> SOURCES ... [LIBS ...]): a Google Benchmark program.
function(olvex_add_benchmark)
    cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} benchmark::benchmark olvex_build)
    target_include_directories(${ARG_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/bench)
    set_property(GLOBAL APPEND PROPERTY OLVEX_BENCHMARKS ${ARG_NAME})
endfunction()
