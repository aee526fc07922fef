# Installs the build into an empty prefix and checks that exactly the expected files land in their
# freedesktop places, that the icons have their sizes, and that the desktop entry and the AppStream
# metadata pass their validators. Run by ctest (install_layout) with
#   -DBUILD_DIR=... -DWORK_DIR=... -DAPP_ID=... -DICON_SIZES=16,22,...

foreach(variable BUILD_DIR WORK_DIR APP_ID ICON_SIZES)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "${variable} is not set")
  endif()
endforeach()
string(REPLACE "," ";" ICON_SIZES "${ICON_SIZES}")

# A blank in the prefix catches an install rule that splits or hard-codes its path.
set(prefix "${WORK_DIR}/a prefix")
file(REMOVE_RECURSE "${WORK_DIR}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}"
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "cmake --install failed:\n${output}")
endif()

set(expected
  bin/quillory
  share/applications/${APP_ID}.desktop
  share/metainfo/${APP_ID}.metainfo.xml
  share/mime/packages/${APP_ID}.xml
  share/icons/hicolor/scalable/apps/${APP_ID}.svg
  share/man/man1/quillory.1.gz
  share/doc/quillory/copyright
  share/doc/quillory/changelog.gz)
foreach(size IN LISTS ICON_SIZES)
  list(APPEND expected share/icons/hicolor/${size}x${size}/apps/${APP_ID}.png)
endforeach()
list(SORT expected)

file(GLOB_RECURSE installed LIST_DIRECTORIES false RELATIVE "${prefix}" "${prefix}/*")
list(SORT installed)
if(NOT installed STREQUAL expected)
  set(missing ${expected})
  list(REMOVE_ITEM missing ${installed})
  set(extra ${installed})
  list(REMOVE_ITEM extra ${expected})
  message(FATAL_ERROR "The installed files differ from the expected ones.\n"
                      "Missing: ${missing}\nUnexpected: ${extra}")
endif()

execute_process(COMMAND test -x "${prefix}/bin/quillory" RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "bin/quillory is not executable")
endif()

# Each PNG is as wide and as high as the folder it sits in says (bytes 16 to 23 of a PNG).
foreach(size IN LISTS ICON_SIZES)
  set(png "${prefix}/share/icons/hicolor/${size}x${size}/apps/${APP_ID}.png")
  file(READ "${png}" signature LIMIT 8 HEX)
  if(NOT signature STREQUAL "89504e470d0a1a0a")
    message(FATAL_ERROR "${png} is not a PNG")
  endif()
  file(READ "${png}" header OFFSET 16 LIMIT 8 HEX)
  string(SUBSTRING "${header}" 0 8 width_hex)
  string(SUBSTRING "${header}" 8 8 height_hex)
  math(EXPR width "0x${width_hex}")
  math(EXPR height "0x${height_hex}")
  if(NOT width EQUAL size OR NOT height EQUAL size)
    message(FATAL_ERROR "${png} is ${width}x${height}, not ${size}x${size}")
  endif()
endforeach()

# The manual page must render without warnings from man's own checker.
find_program(MAN_PROGRAM man)
if(MAN_PROGRAM)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C.UTF-8 MANROFFSEQ= MANWIDTH=80
                          ${MAN_PROGRAM} --warnings -E UTF-8 -l "${prefix}/share/man/man1/quillory.1.gz"
                  RESULT_VARIABLE result OUTPUT_VARIABLE page ERROR_VARIABLE warnings)
  if(NOT result EQUAL 0 OR NOT warnings STREQUAL "" OR NOT page MATCHES "quillory")
    message(FATAL_ERROR "The manual page does not render cleanly (exit ${result}):\n${warnings}")
  endif()
endif()

find_program(DESKTOP_FILE_VALIDATE desktop-file-validate REQUIRED)
execute_process(COMMAND ${DESKTOP_FILE_VALIDATE} "${prefix}/share/applications/${APP_ID}.desktop"
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR output MATCHES "error")
  message(FATAL_ERROR "desktop-file-validate:\n${output}")
endif()

# --no-net: the screenshot's address is checked where the package is published, not in a test.
find_program(APPSTREAMCLI appstreamcli REQUIRED)
execute_process(COMMAND ${APPSTREAMCLI} validate --no-net --explain "${prefix}/share/metainfo/${APP_ID}.metainfo.xml"
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "appstreamcli validate:\n${output}")
endif()
# The file manager knows a backup by its content and offers Quillory for it. The database is
# built in the test prefix, as dpkg's trigger builds it in /usr/share/mime, and asked about two
# files written the way the program writes them: a backup, and a data file that must stay plain XML.
find_program(UPDATE_MIME_DATABASE update-mime-database REQUIRED)
find_program(GIO gio REQUIRED)
execute_process(COMMAND ${UPDATE_MIME_DATABASE} "${prefix}/share/mime"
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR output MATCHES "[Ww]arning|[Ee]rror")
  message(FATAL_ERROR "update-mime-database:\n${output}")
endif()
set(plist_header "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n")
file(WRITE "${WORK_DIR}/samples/Quillory Backup" "${plist_header}<array>\n\t<array/>\n\t<array>\n\t\t<dict/>\n\t</array>\n\t<array/>\n</array>\n</plist>\n")
file(WRITE "${WORK_DIR}/samples/Assignments.plist" "${plist_header}<array>\n\t<dict>\n\t\t<key>Name</key>\n\t\t<string>Essay</string>\n\t</dict>\n</array>\n</plist>\n")
foreach(sample_and_type "Quillory Backup=application/x-quillory-backup" "Assignments.plist=application/xml")
  string(REPLACE "=" ";" sample_and_type "${sample_and_type}")
  list(GET sample_and_type 0 sample)
  list(GET sample_and_type 1 wanted)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env "XDG_DATA_HOME=${prefix}/share" "XDG_DATA_DIRS=/usr/share"
                          ${GIO} info -a standard::content-type "${WORK_DIR}/samples/${sample}"
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0 OR NOT output MATCHES "standard::content-type: ${wanted}\n")
    message(FATAL_ERROR "\"${sample}\" should be ${wanted}:\n${output}")
  endif()
endforeach()
# Every type the menu entry opens is one the desktop knows.
file(STRINGS "${prefix}/share/applications/${APP_ID}.desktop" mime_line REGEX "^MimeType=")
if(NOT mime_line MATCHES "^MimeType=application/x-quillory-backup\\\\?;$")
  message(FATAL_ERROR "The desktop entry's MimeType line is '${mime_line}'")
endif()
file(STRINGS "${prefix}/share/applications/${APP_ID}.desktop" exec_line REGEX "^Exec=")
if(NOT exec_line MATCHES "^Exec=quillory %[fF]$")
  message(FATAL_ERROR "The desktop entry does not pass the files it opens: '${exec_line}'")
endif()
message(STATUS "Installed ${prefix}: ${installed}")
# Checked: the copy goes, so that a test run does not keep a second program on a small disk.
file(REMOVE_RECURSE "${WORK_DIR}")
