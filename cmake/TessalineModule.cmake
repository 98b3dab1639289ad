# tessaline_module(name SOURCES ... LINKS ...)
#
# A static library `tessaline_<name>` with the alias `Tessaline::<name>`. A logic library has no suffix and links no GUI
# module; a library of widgets ends in `_ui`. Every link is checked against the table below when CMake configures, so a
# library cannot reach up or sideways without this file saying so.

set(TESSALINE_ALLOWED_foundation    "")
set(TESSALINE_ALLOWED_documents     foundation)
set(TESSALINE_ALLOWED_editing       foundation)
set(TESSALINE_ALLOWED_Services      foundation documents)
set(TESSALINE_ALLOWED_panels        foundation documents Services)
set(TESSALINE_ALLOWED_MarkdownUI    foundation)
set(TESSALINE_ALLOWED_NetworkImage  foundation)
# `shell` is the part of the executable's folder that needs no window: the order of start and end, the updates, signals;
# `shell_ui` is the window around the columns. `main` alone stands above them.
set(TESSALINE_ALLOWED_shell         foundation documents)
# `foundation_ui` holds the palette, the symbols and the plain controls that every view is made of.
set(TESSALINE_ALLOWED_foundation_ui  foundation)
set(TESSALINE_ALLOWED_editing_ui     foundation foundation_ui editing)
set(TESSALINE_ALLOWED_documents_ui   foundation foundation_ui documents editing editing_ui)
set(TESSALINE_ALLOWED_MarkdownUI_ui  foundation foundation_ui MarkdownUI NetworkImage)
set(TESSALINE_ALLOWED_shell_ui       foundation foundation_ui documents documents_ui editing editing_ui Services panels panels_ui
                                     shell)
set(TESSALINE_ALLOWED_panels_ui      foundation foundation_ui documents Services panels editing MarkdownUI MarkdownUI_ui)

# What a library without widgets may never reach, directly or through another; NetworkImage alone decodes with QtGui.
set(TESSALINE_GUI_LIBRARIES Qt6::Gui Qt6::Widgets Qt6::Svg Qt6::SvgWidgets Qt6::OpenGL Qt6::PrintSupport)

function(tessaline_module name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    set(target tessaline_${name})
    add_library(${target} STATIC ${ARG_SOURCES})
    add_library(Tessaline::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_link_libraries(${target} PUBLIC tessaline_options ${ARG_LINKS})
    tessaline_precompile(${target})
    set_property(GLOBAL APPEND PROPERTY TESSALINE_MODULES ${name})
endfunction()

# The precompiled headers are made once: by an empty library for all libraries and programs, and by another, with what tests
# use, for all tests. Their compile options are those of `tessaline_options`, as everybody's are.
set(TESSALINE_PRECOMPILED
    <QtCore/QByteArray> <QtCore/QHash> <QtCore/QList> <QtCore/QObject> <QtCore/QString> <QtCore/QStringView>
    <QtCore/QVariant> <algorithm> <chrono> <functional> <memory> <optional> <utility> <variant> <vector>)

# tessaline_precompile(target SHARED_AS owner LINKS ... HEADERS ...)
#
# Gives the target the precompiled header of the library `owner`, which is made when it is first asked for.
function(tessaline_precompile target)
    cmake_parse_arguments(ARG "" "SHARED_AS" "LINKS;HEADERS" ${ARGN})
    if(NOT TESSALINE_PRECOMPILED_HEADER)
        return()
    endif()
    if(NOT ARG_SHARED_AS)
        set(ARG_SHARED_AS tessaline_precompiled)
    endif()
    if(NOT TARGET ${ARG_SHARED_AS})
        set(source "${CMAKE_BINARY_DIR}/${ARG_SHARED_AS}.cpp")
        file(CONFIGURE OUTPUT "${source}" CONTENT "")
        add_library(${ARG_SHARED_AS} OBJECT "${source}")
        target_link_libraries(${ARG_SHARED_AS} PRIVATE tessaline_options Qt6::Core ${ARG_LINKS})
        target_precompile_headers(${ARG_SHARED_AS} PRIVATE ${TESSALINE_PRECOMPILED} ${ARG_HEADERS})
    endif()
    target_precompile_headers(${target} REUSE_FROM ${ARG_SHARED_AS})
endfunction()

# Collects every library that `target` reaches through its link lists.
function(tessaline_reachable target out)
    set(pending ${target})
    set(seen "")
    while(pending)
        list(POP_FRONT pending next)
        string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" next "${next}")
        if(next IN_LIST seen)
            continue()
        endif()
        list(APPEND seen "${next}")
        if(next MATCHES "^(tessaline_|Tessaline::)" AND TARGET ${next})
            get_target_property(alias ${next} ALIASED_TARGET)
            if(alias)
                set(next ${alias})
            endif()
            get_target_property(links ${next} INTERFACE_LINK_LIBRARIES)
            if(links)
                list(APPEND pending ${links})
            endif()
        endif()
    endwhile()
    set(${out} "${seen}" PARENT_SCOPE)
endfunction()

# Fails the configuration if a library links what the table does not allow it.
function(tessaline_check_levels)
    get_property(modules GLOBAL PROPERTY TESSALINE_MODULES)
    foreach(module IN LISTS modules)
        if(NOT DEFINED TESSALINE_ALLOWED_${module})
            message(FATAL_ERROR "${module} is not in the table of cmake/TessalineModule.cmake.")
        endif()
        get_target_property(direct tessaline_${module} LINK_LIBRARIES)
        foreach(link IN LISTS direct)
            if(link MATCHES "^Tessaline::(.*)$" AND NOT CMAKE_MATCH_1 IN_LIST TESSALINE_ALLOWED_${module})
                message(FATAL_ERROR "${module} must not link ${CMAKE_MATCH_1}: see cmake/TessalineModule.cmake.")
            endif()
        endforeach()
        if(NOT module MATCHES "_ui$")
            tessaline_reachable(tessaline_${module} reached)
            foreach(gui IN LISTS TESSALINE_GUI_LIBRARIES)
                if(gui IN_LIST reached AND NOT (module STREQUAL "NetworkImage" AND gui STREQUAL "Qt6::Gui"))
                    message(FATAL_ERROR "${module} holds rules without widgets and must not reach ${gui}.")
                endif()
            endforeach()
        endif()
    endforeach()
endfunction()
