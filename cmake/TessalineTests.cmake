# tessaline_test(name SOURCES ... LINKS ...)
#
# One GoogleTest executable. Its tests run without a screen, in throw-away folders that tests/support makes and removes.

include(GoogleTest)
find_package(GTest REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

function(tessaline_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE tessaline_options tessaline_test_support GTest::gtest GTest::gmock Qt6::Test ${ARG_LINKS})
    tessaline_precompile(${name} SHARED_AS tessaline_tests_precompiled
        LINKS GTest::gtest GTest::gmock HEADERS <gtest/gtest.h> <gmock/gmock.h>)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8" TIMEOUT 120)
endfunction()
