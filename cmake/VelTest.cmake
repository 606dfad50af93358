# vel_add_test(NAME SOURCES... [LIBRARIES...] [LABELS...] [TIMEOUT n] [QT]
#              [PLAIN_HEADERS])
#
# Builds one GoogleTest program (with QT one Qt Test program, run on the
# offscreen platform) and registers it with CTest.
enable_testing()

# Headers of other projects that most tests include are compiled once. A test with
# other compiler flags needs PLAIN_HEADERS.
if(VEL_TESTS)
    find_package(GTest REQUIRED)
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/tests/empty.cpp CONTENT "")
    add_library(gtest_headers OBJECT ${CMAKE_BINARY_DIR}/tests/empty.cpp)
    target_compile_options(gtest_headers PRIVATE -fPIE -O0)
    set_target_properties(gtest_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_link_libraries(gtest_headers PRIVATE GTest::gtest)
    target_precompile_headers(gtest_headers PRIVATE
        <gtest/gtest.h> <nlohmann/json.hpp>
        <algorithm> <chrono> <filesystem> <fstream> <functional> <map> <optional> <random> <set>
        <sstream> <string> <thread> <vector>)

    find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
    add_library(qtest_headers OBJECT ${CMAKE_BINARY_DIR}/tests/empty.cpp)
    target_compile_options(qtest_headers PRIVATE -O0)
    target_link_libraries(qtest_headers PRIVATE Qt6::Widgets)
    target_precompile_headers(qtest_headers PRIVATE <QtWidgets>)
endif()

function(vel_add_test name)
    if(NOT VEL_TESTS)
        return()
    endif()
    cmake_parse_arguments(ARG "QT;PLAIN_HEADERS" "TIMEOUT" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    # The tested code is optimised. The tests themselves are not: this halves the
    # time to compile them, and they run fast enough.
    target_compile_options(${name} PRIVATE -O0)
    if(ARG_QT)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} Qt6::Test)
        set(headers qtest_headers)
    else()
        target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest_main)
        set(headers gtest_headers)
    endif()
    if(NOT ARG_PLAIN_HEADERS)
        target_precompile_headers(${name} REUSE_FROM ${headers})
    endif()
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
    vel_test_environment(${name})
endfunction()

# The folder for files of a login session. Only its user may have access to it.
set(VEL_TEST_RUNTIME ${CMAKE_BINARY_DIR}/tests/runtime)
file(MAKE_DIRECTORY ${VEL_TEST_RUNTIME})
file(CHMOD ${VEL_TEST_RUNTIME} DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)

# Where programs keep the state of a user. Configuring empties it:
# it grows with every file that a test changes.
set(VEL_TEST_STATE ${CMAKE_BINARY_DIR}/tests/state)
file(REMOVE_RECURSE ${VEL_TEST_STATE})

# Where programs look for the user's settings; there are none.
set(VEL_TEST_CONFIG ${CMAKE_BINARY_DIR}/tests/config)
file(REMOVE_RECURSE ${VEL_TEST_CONFIG})

# How an ordinary perl loads the module. That perl is not linked to the sanitizer's
# library, which must be loaded first. It frees nothing at its end, so leaks are not
# checked.
set(VEL_PERL_ENVIRONMENT)
if(VEL_SANITIZE)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libasan.so
                    OUTPUT_VARIABLE asan_library
                    OUTPUT_STRIP_TRAILING_WHITESPACE)
    set(VEL_PERL_ENVIRONMENT LD_PRELOAD=${asan_library} ASAN_OPTIONS=detect_leaks=0)
endif()
list(JOIN VEL_PERL_ENVIRONMENT " " perl_assignments)
string(STRIP "env ${perl_assignments}" with_perl_environment)

# Gives a test the environment of the build tree. Call it for tests that
# vel_add_test() does not add.
function(vel_test_environment name)
    set(environment
        "LC_ALL=C.UTF-8"
        "QT_QPA_PLATFORM=offscreen"
        "XDG_RUNTIME_DIR=${VEL_TEST_RUNTIME}"
        "XDG_STATE_HOME=${VEL_TEST_STATE}"
        "XDG_CONFIG_HOME=${VEL_TEST_CONFIG}"
        "ZOT5_VEL_PARSER=${CMAKE_BINARY_DIR}/perl"
        "ZOT5_VEL_LIBSDIR=${CMAKE_BINARY_DIR}/libraries"
        "ZOT5_VEL_LIBS=rules.vel\\;upgrades.vel"
        "ZOT5ROOT=${CMAKE_BINARY_DIR}"
        "ZOTBUILDID=test"
        "ZOT_HELP_DIR=${CMAKE_BINARY_DIR}/help"
        "VEL_PERL=${with_perl_environment} perl"
        "VEL_BUILD_DIR=${CMAKE_BINARY_DIR}"
        "VEL_SOURCE_DIR=${CMAKE_SOURCE_DIR}")
    if(VEL_SANITIZE)
        list(APPEND environment "ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1"
             "UBSAN_OPTIONS=print_stacktrace=1"
             "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/leaks.supp:print_suppressions=0")
    endif()
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT "${environment}")
endfunction()
