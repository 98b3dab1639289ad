# tessaline_test(name SOURCES ... LINKS ...)
#
# One GoogleTest executable. Its tests run without a screen, in throw-away folders that tests/support makes and removes. ctest
# runs each of them in a process of its own; under a sanitizer, where a start is dear, it runs the whole executable once.

include(GoogleTest)
find_package(GTest REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

# GoogleTest's macros cost a sanitizer more time in the compiler than everything that they test. It is the libraries that it
# watches: the tests are compiled without optimisation and, but for addresses and threads, unobserved.
add_library(tessaline_test_options INTERFACE)
if(TESSALINE_SANITIZER)
    target_compile_options(tessaline_test_options INTERFACE -O0 -g0 -fno-sanitize=undefined)
endif()

function(tessaline_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE tessaline_options tessaline_test_options tessaline_test_support
        GTest::gtest GTest::gmock Qt6::Test ${ARG_LINKS})
    tessaline_precompile(${name} SHARED_AS tessaline_tests_precompiled
        LINKS tessaline_test_options GTest::gtest GTest::gmock HEADERS <gtest/gtest.h> <gmock/gmock.h>)
    set(environment "QT_QPA_PLATFORM=offscreen" "LC_ALL=C.UTF-8")
    if(TESSALINE_SANITIZER)
        # Some tests fork, when the ones before them have started threads.
        list(APPEND environment "TSAN_OPTIONS=die_after_fork=0")
        add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
        set_tests_properties(${name} PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 1200)
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
            PROPERTIES ENVIRONMENT "${environment}" TIMEOUT 120)
    endif()
endfunction()
