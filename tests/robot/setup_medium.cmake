# Makes the small flat installation medium of the SETUP.EXE tests:
#   cmake -DRUN=wine-run.sh -DMKMEDIUM=mkmedium.exe -DKORV5=KORV5.exe -DCONFIG=CONFIG.exe
#         -DUNINSTAL=UNINSTAL.exe -DOUT=dir -P setup_medium.cmake
# OUT/payload is the installed tree (the suite's programs: the install runs the main one with
# "$f" and links the configuration program; a few libraries and designs, and 2,000 small designs
# so that an install copies for a while after the abort button is clicked), OUT/medium the
# packed medium made of it by mkmedium.
file(REMOVE_RECURSE "${OUT}")
file(MAKE_DIRECTORY "${OUT}/payload/EXE" "${OUT}/payload/SLIB" "${OUT}/payload/LLIB"
     "${OUT}/payload/PRIKLADY")
file(COPY_FILE "${KORV5}" "${OUT}/payload/EXE/KORV5.EXE")
file(COPY_FILE "${CONFIG}" "${OUT}/payload/EXE/CONFIG.EXE")
file(COPY_FILE "${UNINSTAL}" "${OUT}/payload/EXE/UNINSTAL.EXE")
string(REPEAT "SYMBOL R 0805; PINY 2; TELO 2.0 x 1.25\r\n" 400 library)
foreach(name IN ITEMS ZAKLAD IO KONEKTOR ANALOG DIGITAL)
  file(WRITE "${OUT}/payload/SLIB/${name}.S32" "${name}\r\n${library}")
  file(WRITE "${OUT}/payload/LLIB/${name}.L32" "${name}\r\n${library}${library}")
endforeach()
foreach(i RANGE 1 2000)
  file(WRITE "${OUT}/payload/PRIKLADY/N${i}.D32" "KX900 Design file \r\nNAVRH N${i}\r\n")
endforeach()
foreach(name IN ITEMS ZESIL NAPAJEC)
  file(WRITE "${OUT}/payload/PRIKLADY/${name}.D32" "KX900 Design file \r\nNAVRH ${name}\r\n")
endforeach()
execute_process(COMMAND "${RUN}" "${MKMEDIUM}" --flat --title "KORVEX 5.003-016 (zkouška)"
                        "${OUT}/payload" "${OUT}/medium"
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT EXISTS "${OUT}/medium/DISKLIST.LST")
  message(FATAL_ERROR "setup_medium: mkmedium ended with ${rc}")
endif()
