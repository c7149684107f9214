# The X11 desktop against a real X server: scripts/x11-session.sh gives the test its own Xvfb with openbox (which
# keeps the EWMH stacking list and honours activation requests) and its own session bus. Test and helper run on the
# real xcb platform, since the clipboard and the keyboard are the X server's.
find_program(X11_GRAB_XVFB Xvfb)
find_program(X11_GRAB_OPENBOX openbox)
if(NOT X11_GRAB_XVFB OR NOT X11_GRAB_OPENBOX)
    message(WARNING "Xvfb or openbox not found (scripts/install-deps.sh installs them): tst_x11desktop is not built")
    return()
endif()

find_package(PkgConfig REQUIRED)
pkg_check_modules(X11_GRAB_TEST REQUIRED IMPORTED_TARGET xcb)

function(corvalent_x11_grab_test name)
    cmake_parse_arguments(T "" "" "SOURCES;LIBS;LABELS;ENVIRONMENT;PROGRAMS" ${ARGN})
    add_executable(${name} ${T_SOURCES})
    target_link_libraries(${name} PRIVATE ${T_LIBS} corvalent_testsupport Qt6::Test)
    add_test(NAME ${name} COMMAND bash ${CMAKE_SOURCE_DIR}/scripts/x11-session.sh $<TARGET_FILE:${name}>)
    set(env ${T_ENVIRONMENT})
    if(CORVALENT_SANITIZE)
        list(APPEND env "ASAN_OPTIONS=detect_leaks=0" "UBSAN_OPTIONS=print_stacktrace=1")
    endif()
    set_tests_properties(${name} PROPERTIES LABELS "${T_LABELS}" ENVIRONMENT "${env}" TIMEOUT 300)
    if(T_PROGRAMS)
        add_dependencies(${name} ${T_PROGRAMS})
    endif()
endfunction()

# The browser's stand-in: another program whose selection Ctrl+C copies.
add_executable(x11_copy_window x11_copy_window.cpp)
target_link_libraries(x11_copy_window PRIVATE Qt6::Widgets PkgConfig::X11_GRAB_TEST)

corvalent_x11_grab_test(tst_x11desktop SOURCES tst_x11desktop.cpp
                        LIBS corvalent_grab PkgConfig::X11_GRAB_TEST Qt6::Widgets
                        LABELS x11
                        ENVIRONMENT "CORVALENT_COPY_WINDOW=$<TARGET_FILE:x11_copy_window>"
                        PROGRAMS x11_copy_window)
