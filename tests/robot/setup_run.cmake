# Runs one robot script against SETUP.EXE under Wine, with the quick-launch folder of the
# prefix's user made or removed first:
#   cmake -DRUN=wine-run.sh -DROBOT=kxrobot.exe -DSCRIPT=x.kxr -DSETUP=SETUP.exe
#         -DQUICK_LAUNCH=present|absent|any [-DEXPECT_FILE=NAME -DEXPECT_TEXT=a|b]
#         [-DMEDIUM=dir -DFRESH_TARGET=name -DPLANT=path] -P setup_run.cmake
# The script gets SETUP (the program), SETUP_DIR (the program's directory as the installer
# shows it: "Z:" + the path in upper case, with "\" at the end), and paths around the fields'
# limit of 1023 characters: PATH_1022, PATH_1023 and PATH_1030 ("C:\" and "x" up to that
# length). With EXPECT_FILE the file is
# removed from the current directory before the run and must be there afterwards, holding
# every line of EXPECT_TEXT. With MEDIUM the script gets MEDIUM_DIR, that directory in the
# installer's form ("Z:" + the path, without "\" at the end); FRESH_TARGET names a directory of drive
# C: that is removed before the run, so that the install finds no earlier one there; PLANT a
# file of drive C: made (empty) after that, for an install that finds files to overwrite.
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
  if(QUICK_LAUNCH STREQUAL "present")
    file(MAKE_DIRECTORY "${folder}")
  else()
    file(REMOVE_RECURSE "${folder}")
  endif()
  message(STATUS "setup_run: quick-launch folder ${QUICK_LAUNCH}: ${folder}")
endif()

get_filename_component(dir "${SETUP}" DIRECTORY)
string(REPLACE "/" "\\" dir "${dir}")
string(TOUPPER "Z:${dir}\\" setup_dir)

string(REPEAT "x" 1019 x1019)
# (No value may end in "\": in a list that would escape the separator.)
set(extra "PATH_1022=C:\\${x1019}" "PATH_1023=C:\\${x1019}x" "PATH_1030=C:\\${x1019}xxxxxxxx")
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
if(EXPECT_FILE)
  file(REMOVE "${EXPECT_FILE}")
endif()
execute_process(COMMAND "${RUN}" "${ROBOT}" "${SCRIPT}" "SETUP=${SETUP}" "SETUP_DIR=${setup_dir}"
                        ${extra}
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "setup_run: the robot ended with ${rc}")
endif()
if(EXPECT_FILE)
  if(NOT EXISTS "${EXPECT_FILE}")
    message(FATAL_ERROR "setup_run: ${EXPECT_FILE} was not written")
  endif()
  file(STRINGS "${EXPECT_FILE}" lines)
  string(REPLACE "|" ";" wanted "${EXPECT_TEXT}")
  foreach(want IN LISTS wanted)
    list(FIND lines "${want}" at)
    if(at LESS 0)
      message(FATAL_ERROR "setup_run: ${EXPECT_FILE} has no line '${want}'; it holds: ${lines}")
    endif()
  endforeach()
  message(STATUS "setup_run: ${EXPECT_FILE} holds every expected line")
endif()
