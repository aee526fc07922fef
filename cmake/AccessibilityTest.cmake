# The running program's accessibility tree, walked over AT-SPI the way a screen reader walks it:
# the script starts its own X server and the program, on a session bus of its own where the
# accessibility bus is started on demand.
find_program(DBUS_RUN_SESSION dbus-run-session)
find_program(XVFB_PROGRAM Xvfb)
find_program(SYSTEM_PYTHON3 python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(DBUS_RUN_SESSION AND XVFB_PROGRAM AND SYSTEM_PYTHON3)
  add_test(NAME accessibility_tree
    COMMAND ${DBUS_RUN_SESSION} -- ${SYSTEM_PYTHON3} ${CMAKE_SOURCE_DIR}/tests/app/accessibility_tree.py
            $<TARGET_FILE:quillory>)
  # The script chooses its own display; one inherited from the caller is not wanted.
  set_tests_properties(accessibility_tree PROPERTIES TIMEOUT 300
    ENVIRONMENT "TZ=America/New_York"
    ENVIRONMENT_MODIFICATION "DISPLAY=unset:;QT_QPA_PLATFORM=unset:")
else()
  message(WARNING "dbus-run-session, Xvfb or /usr/bin/python3 missing: the accessibility tree test is left out")
endif()
