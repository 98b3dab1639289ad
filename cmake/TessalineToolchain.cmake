# How everything is compiled: language, warnings, sanitizers, and the faster tools where the machine has them.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(TESSALINE_CCACHE ccache)
if(TESSALINE_CCACHE)
    # The sloppiness lets objects that use the precompiled header be cached.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_PCH_EXTSUM=true ${TESSALINE_CCACHE})
endif()

# One interface target carries the warnings and Qt's strict definitions; every target of the project links it.
add_library(tessaline_options INTERFACE)
target_compile_options(tessaline_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-align -Wformat=2 -Wnull-dereference -fno-plt -fpch-preprocess)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # WORKAROUND: g++ 12 reports null dereferences and impossible allocations inside Qt's inlined containers.
    target_compile_options(tessaline_options INTERFACE -Wno-null-dereference -Wno-alloc-size-larger-than -fcoroutines)
else()
    target_compile_options(tessaline_options INTERFACE -Wno-unknown-warning-option -Wno-unused-command-line-argument)
endif()
if(TESSALINE_WARNINGS_AS_ERRORS)
    # WORKAROUND: g++ 12 takes the value that an absent std::optional does not have for one that is read uninitialised.
    target_compile_options(tessaline_options INTERFACE -Werror -Wno-error=maybe-uninitialized)
endif()
target_compile_definitions(tessaline_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
target_include_directories(tessaline_options INTERFACE "${CMAKE_SOURCE_DIR}/src")

if(TESSALINE_SANITIZER STREQUAL "address")
    set(sanitizer -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
elseif(TESSALINE_SANITIZER STREQUAL "thread")
    set(sanitizer -fsanitize=thread -fno-omit-frame-pointer)
elseif(TESSALINE_SANITIZER)
    message(FATAL_ERROR "TESSALINE_SANITIZER is '${TESSALINE_SANITIZER}'; it can be empty, 'address' or 'thread'.")
endif()
if(sanitizer)
    target_compile_options(tessaline_options INTERFACE ${sanitizer})
    target_link_options(tessaline_options INTERFACE ${sanitizer})
endif()
# Every program gets what the sanitizer has to be told; that is not looked at itself.
if(TESSALINE_SANITIZER STREQUAL "address")
    add_library(tessaline_sanitizer_options OBJECT "${CMAKE_SOURCE_DIR}/tests/support/AddressSanitizerOptions.cpp")
elseif(TESSALINE_SANITIZER STREQUAL "thread")
    add_library(tessaline_sanitizer_options OBJECT "${CMAKE_SOURCE_DIR}/tests/support/ToolkitHandoffs.cpp")
    target_link_libraries(tessaline_sanitizer_options PRIVATE Qt6::Core)
endif()
if(TARGET tessaline_sanitizer_options)
    target_sources(tessaline_options INTERFACE
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:tessaline_sanitizer_options>>)
endif()

target_link_options(tessaline_options INTERFACE -Wl,--as-needed -Wl,--gc-sections)
target_compile_options(tessaline_options INTERFACE -ffunction-sections -fdata-sections)
find_program(TESSALINE_MOLD mold)
if(TESSALINE_MOLD AND NOT TESSALINE_FUZZERS)
    target_link_options(tessaline_options INTERFACE -fuse-ld=mold)
endif()
