# Runs one robot script against SETUP.EXE under Wine, with the quick-launch folder of the
# prefix's user removed first (absent) or left as it is (any):
#   cmake -DRUN=wine-run.sh -DROBOT=kxrobot.exe -DSCRIPT=x.kxr -DSETUP=SETUP.exe
#         -DQUICK_LAUNCH=absent|any [-DMEDIUM=dir -DFRESH_TARGET=name -DPLANT=path]
#         -P setup_run.cmake
# The script gets SETUP (the program), SETUP_DIR (the program's directory as the installer
# shows it: "Z:" + the path in upper case, with "\" at the end), and with MEDIUM also
# MEDIUM_DIR, that directory in the installer's form ("Z:" + the path, without "\" at the end).
# FRESH_TARGET names a directory of drive C: that is removed before the run, so that the install
# finds no earlier one there; PLANT a file of drive C: made (empty) after that.
if(NOT DEFINED ENV{WINEPREFIX} OR "$ENV{WINEPREFIX}" STREQUAL "")
  execute_process(COMMAND id -u OUTPUT_VARIABLE uid OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(tmp "$ENV{TMPDIR}")
  if(tmp STREQUAL "")
    set(tmp /tmp)
  endif()
  set(ENV{WINEPREFIX} "${tmp}/korvex-wine-${uid}")
endif()

if(NOT QUICK_LAUNCH STREQUAL "any")
  file(GLOB roaming LIST_DIRECTORIES true "$ENV{WINEPREFIX}/drive_c/users/*/AppData/Roaming")
  list(LENGTH roaming n)
  if(NOT n EQUAL 1)
    message(FATAL_ERROR "setup_run: no single AppData\\Roaming in $ENV{WINEPREFIX}: '${roaming}'")
  endif()
  set(folder "${roaming}/Microsoft/Internet Explorer/Quick Launch")
  file(REMOVE_RECURSE "${folder}")
  message(STATUS "setup_run: quick-launch folder ${QUICK_LAUNCH}: ${folder}")
endif()

get_filename_component(dir "${SETUP}" DIRECTORY)
string(REPLACE "/" "\\" dir "${dir}")
string(TOUPPER "Z:${dir}\\" setup_dir)

set(extra "")
if(MEDIUM)
  string(REPLACE "/" "\\" medium_dir "Z:${MEDIUM}")
  list(APPEND extra "MEDIUM_DIR=${medium_dir}")
endif()
if(FRESH_TARGET)
  file(REMOVE_RECURSE "$ENV{WINEPREFIX}/drive_c/${FRESH_TARGET}")
endif()
if(PLANT)
  file(WRITE "$ENV{WINEPREFIX}/drive_c/${PLANT}" "")  # with the directories above it
endif()
execute_process(COMMAND "${RUN}" "${ROBOT}" "${SCRIPT}" "SETUP=${SETUP}" "SETUP_DIR=${setup_dir}"
                        ${extra}
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "setup_run: the robot ended with ${rc}")
endif()
