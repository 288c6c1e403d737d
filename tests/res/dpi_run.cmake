# The installer dialog at one display DPI under Wine:
#   cmake -DRUN=wine-run.sh -DDPI=120 -DTESTS=kx_setup_tests.exe -DROBOT=kxrobot.exe
#         -DSETUP=SETUP.exe -DSCRIPT=setup-dpi.kxr -P dpi_run.cmake
# Sets the DPI of the prefix (LogPixels, read by each program as it starts), runs the dialog's
# layout test (every text measured against its item with the item's font) and a snapshot of
# SETUP.EXE into setup-dpiDPI.bmp, and sets 96 again whatever happened.
function(set_dpi value)
  foreach(key "HKCU\\Control Panel\\Desktop"
              "HKLM\\System\\CurrentControlSet\\Hardware Profiles\\Current\\Software\\Fonts")
    execute_process(COMMAND ${RUN} reg add ${key} /v LogPixels /t REG_DWORD /d ${value} /f
                    OUTPUT_QUIET ERROR_QUIET)
  endforeach()
endfunction()

set_dpi(${DPI})
execute_process(COMMAND ${RUN} ${TESTS} --gtest_filter=SwInstDialog.* RESULT_VARIABLE tests_rc)
execute_process(COMMAND ${RUN} ${ROBOT} ${SCRIPT} SETUP=${SETUP} SNAP=setup-dpi${DPI}.bmp
                RESULT_VARIABLE robot_rc)
set_dpi(96)
if(NOT tests_rc EQUAL 0 OR NOT robot_rc EQUAL 0)
  message(FATAL_ERROR "at ${DPI} DPI: layout test ${tests_rc}, snapshot ${robot_rc}")
endif()
