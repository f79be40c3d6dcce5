# Tests that run whole programs: a Python script that plays the other side, on a session bus of its own.
find_program(SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
find_program(DBUS_RUN_SESSION dbus-run-session REQUIRED)
foreach(script toolhost/host client/client setpaths/setpaths toolhost/window)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${script}_test.py)
    string(REGEX REPLACE "/.*" "" folder ${script})
    string(REGEX REPLACE ".*/" "" name ${script})
    add_test(NAME ${folder}.${name}_program
             COMMAND ${DBUS_RUN_SESSION} -- ${SYSTEM_PYTHON} -B ${CMAKE_CURRENT_SOURCE_DIR}/${script}_test.py)
    set_tests_properties(${folder}.${name}_program PROPERTIES TIMEOUT 300 ENVIRONMENT
      "QUILLON_BUILD_FOLDER=${CMAKE_BINARY_DIR};QUILLON_SOURCE_FOLDER=${CMAKE_SOURCE_DIR}")
  endif()
endforeach()
