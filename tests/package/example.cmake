# cmake -DBUILD=<build tree> -DSOURCE=<source tree> -DCOMPONENTS=<class;header;...>
#       [-DLAUNCHER=ccache] -P example.cmake
# The steps a host program's developer takes: install, find_package, build, run.
set(work ${BUILD}/package-example)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGN}\nfailed (${result}):\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/prefix)
set(launcher)
if(LAUNCHER)
    set(launcher -DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE}/examples/minimal-host -B ${work}/build -G Ninja
    -DCMAKE_PREFIX_PATH=${work}/prefix -DCMAKE_BUILD_TYPE=RelWithDebInfo ${launcher}
    -DCMAKE_COMPILE_WARNING_AS_ERROR=ON)
run(${CMAKE_COMMAND} --build ${work}/build)

# Every installed header compiles in a host program's plain Qt, without the project's defines
# (no QStringBuilder, Qt keywords on).
file(GLOB_RECURSE headers RELATIVE ${work}/prefix/include/olvexsettings
    ${work}/prefix/include/olvexsettings/*.h)
list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"\n")
file(WRITE ${work}/headers/all.cpp ${headers})
file(WRITE ${work}/headers/CMakeLists.txt [=[
cmake_minimum_required(VERSION 3.25)
project(AllHeaders LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(OlvexSettings 0.2 REQUIRED COMPONENTS Widgets)
add_library(all_headers OBJECT all.cpp)
target_link_libraries(all_headers PRIVATE OlvexSettings::Widgets)
]=])
run(${CMAKE_COMMAND} -S ${work}/headers -B ${work}/headers/build -G Ninja
    -DCMAKE_PREFIX_PATH=${work}/prefix ${launcher} -DCMAKE_COMPILE_WARNING_AS_ERROR=ON)
run(${CMAKE_COMMAND} --build ${work}/headers/build)

# The example must use the installed library, not one of the build tree.
run(ldd ${work}/build/minimal-host)
if(NOT output MATCHES "libolvexsettings-widgets\\.so\\.0 => ${work}/prefix/")
    message(FATAL_ERROR "minimal-host does not use the installed library:\n${output}")
endif()

run(${work}/build/minimal-host --screenshot ${work}/minimal-host.png)
message(STATUS "${output}")
# Every component of the package is on the window.
set(expectations "saved ")
foreach(entry IN LISTS COMPONENTS)
    if(NOT entry MATCHES "\\.h$")
        list(APPEND expectations "shows olvex::${entry}\n")
    endif()
endforeach()
foreach(expected IN LISTS expectations)
    string(FIND "${output}" "${expected}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "minimal-host did not print '${expected}':\n${output}")
    endif()
endforeach()
