# Fails if PROGRAM needs a library that draws, directly or through another.
execute_process(COMMAND ldd "${PROGRAM}" OUTPUT_VARIABLE libraries ERROR_VARIABLE error RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT libraries MATCHES "libQt6Core")
    message(FATAL_ERROR "ldd does not list the libraries of ${PROGRAM}: ${libraries}${error}")
endif()
string(REGEX MATCHALL "lib(Qt6(Gui|Widgets|Svg|OpenGL|DBus)|X11|xcb|wayland|EGL|GL)[^ \n]*" drawing "${libraries}")
if(drawing)
    message(FATAL_ERROR "${PROGRAM} must run without a screen, but needs ${drawing}.")
endif()
