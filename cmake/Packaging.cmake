# Installing Quillory the way a Linux desktop expects (program, menu entry, software-centre data,
# icons, manual page) and packing that into a Debian package with CPack.
#
#   cmake --install build --prefix /some/prefix
#   cmake --build build --target package      # build/quillory_<version>_<arch>.deb

include(GNUInstallDirs)

set(QUILLORY_APP_ID com.brevandt.Quillory)
set(QUILLORY_PACKAGE_NAME quillory)
set(QUILLORY_MAINTAINER "Quillory developers <packages@quillory.invalid>")
# The software centre fetches screenshots from the web; the README's picture is published there.
set(QUILLORY_SCREENSHOT_BASE_URL "https://quillory.invalid/screenshots"
    CACHE STRING "Where the README's screenshots are published, for the software centre")

set(PACKAGING_SOURCE ${CMAKE_SOURCE_DIR}/resources)
set(PACKAGING_OUT ${CMAKE_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${PACKAGING_OUT})

# --- Release notes: NEWS is the one place they are written -------------------------------------
# A release starts with "VERSION (YYYY-MM-DD)"; its notes are "- " items, which may continue on
# indented lines. The same notes feed the AppStream <releases> and the Debian changelog.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/NEWS)
file(STRINGS ${CMAKE_SOURCE_DIR}/NEWS NEWS_LINES)
set(RELEASE_VERSIONS)
set(current_release "")
set(current_item "")
macro(_quillory_close_item)
  if(current_release AND NOT current_item STREQUAL "")
    # A semicolon would split the note in two as a CMake list: it travels as a marker.
    string(REPLACE ";" "<semicolon>" current_item "${current_item}")
    list(APPEND RELEASE_ITEMS_${current_release} "${current_item}")
  endif()
  set(current_item "")
endmacro()
foreach(line IN LISTS NEWS_LINES)
  if(line MATCHES "^([0-9]+\\.[0-9]+(\\.[0-9]+)?) \\(([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])\\)$")
    _quillory_close_item()
    set(current_release ${CMAKE_MATCH_1})
    set(RELEASE_DATE_${current_release} ${CMAKE_MATCH_3})
    list(APPEND RELEASE_VERSIONS ${current_release})
  elseif(current_release AND line MATCHES "^- (.*)$")
    _quillory_close_item()
    set(current_item "${CMAKE_MATCH_1}")
  elseif(current_release AND NOT current_item STREQUAL "" AND line MATCHES "^[ \t]+([^ \t].*)$")
    string(APPEND current_item " ${CMAKE_MATCH_1}")
  endif()
endforeach()
_quillory_close_item()
list(GET RELEASE_VERSIONS 0 NEWEST_RELEASE)
if(NOT NEWEST_RELEASE STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "NEWS starts with release ${NEWEST_RELEASE}, but the project is version "
                      "${PROJECT_VERSION}: add the release notes for ${PROJECT_VERSION} to NEWS")
endif()

# Debian changelog lines stay within 80 columns: "  * " and "    " before each wrapped line.
function(_quillory_wrap text out)
  string(REPLACE " " ";" words "${text}")
  set(result "  *")
  set(line_length 3)
  foreach(word IN LISTS words)
    string(LENGTH "${word}" word_length)
    math(EXPR new_length "${line_length} + 1 + ${word_length}")
    if(new_length GREATER 78 AND line_length GREATER 4)
      string(APPEND result "\n    ${word}")
      math(EXPR line_length "4 + ${word_length}")
    else()
      string(APPEND result " ${word}")
      set(line_length ${new_length})
    endif()
  endforeach()
  set(${out} "${result}" PARENT_SCOPE)
endfunction()

function(_quillory_xml_escape text out)
  string(REPLACE "&" "&amp;" text "${text}")
  string(REPLACE "<" "&lt;" text "${text}")
  string(REPLACE ">" "&gt;" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

set(QUILLORY_RELEASES "")
set(DEBIAN_CHANGELOG "")
foreach(version IN LISTS RELEASE_VERSIONS)
  set(date ${RELEASE_DATE_${version}})
  string(APPEND QUILLORY_RELEASES "    <release version=\"${version}\" date=\"${date}\">\n"
                                  "      <description>\n        <ul>\n")
  string(APPEND DEBIAN_CHANGELOG "${QUILLORY_PACKAGE_NAME} (${version}) unstable; urgency=medium\n\n")
  foreach(item IN LISTS RELEASE_ITEMS_${version})
    _quillory_wrap("${item}" wrapped)
    string(REPLACE "<semicolon>" ";" wrapped "${wrapped}")
    string(APPEND DEBIAN_CHANGELOG "${wrapped}\n")
    string(REPLACE "<semicolon>" ";" item "${item}")
    _quillory_xml_escape("${item}" escaped)
    string(APPEND QUILLORY_RELEASES "          <li>${escaped}</li>\n")
  endforeach()
  string(APPEND QUILLORY_RELEASES "        </ul>\n      </description>\n    </release>\n")
  # The changelog wants an RFC 2822 date with its weekday.
  execute_process(COMMAND date -u -R -d "${date} 12:00:00" OUTPUT_VARIABLE rfc_date
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  string(APPEND DEBIAN_CHANGELOG "\n -- ${QUILLORY_MAINTAINER}  ${rfc_date}\n\n")
endforeach()
string(REGEX REPLACE "\n+$" "" QUILLORY_RELEASES "${QUILLORY_RELEASES}")
string(REGEX REPLACE "\n\n$" "\n" DEBIAN_CHANGELOG "${DEBIAN_CHANGELOG}")

# --- AppStream metadata --------------------------------------------------------------------------
set(SCREENSHOT ${CMAKE_SOURCE_DIR}/docs/screenshot.png)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${SCREENSHOT})
# Width and height from the PNG's header (bytes 16 to 23, big-endian).
file(READ ${SCREENSHOT} png_size OFFSET 16 LIMIT 8 HEX)
string(SUBSTRING ${png_size} 0 8 width_hex)
string(SUBSTRING ${png_size} 8 8 height_hex)
math(EXPR QUILLORY_SCREENSHOT_WIDTH "0x${width_hex}")
math(EXPR QUILLORY_SCREENSHOT_HEIGHT "0x${height_hex}")
set(QUILLORY_SCREENSHOT_URL "${QUILLORY_SCREENSHOT_BASE_URL}/screenshot.png")
configure_file(${PACKAGING_SOURCE}/desktop/${QUILLORY_APP_ID}.metainfo.xml.in
               ${PACKAGING_OUT}/${QUILLORY_APP_ID}.metainfo.xml @ONLY)

# --- Icons: every size drawn from the one SVG at build time --------------------------------------
set(QUILLORY_ICON_SIZES 16 22 24 32 48 64 128 256 512)
set(ICON_SVG ${PACKAGING_SOURCE}/icons/quillory.svg)
find_program(RSVG_CONVERT rsvg-convert)
if(NOT RSVG_CONVERT)
  message(FATAL_ERROR "rsvg-convert (Debian package librsvg2-bin) is needed to draw the icons; scripts/setup installs it")
endif()
set(ICON_PNGS)
foreach(size IN LISTS QUILLORY_ICON_SIZES)
  set(png ${PACKAGING_OUT}/icons/${size}x${size}/${QUILLORY_APP_ID}.png)
  add_custom_command(OUTPUT ${png}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PACKAGING_OUT}/icons/${size}x${size}
    COMMAND ${RSVG_CONVERT} --width=${size} --height=${size} --keep-aspect-ratio --output=${png} ${ICON_SVG}
    DEPENDS ${ICON_SVG} VERBATIM)
  list(APPEND ICON_PNGS ${png})
  install(FILES ${png} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
endforeach()

# --- Manual page and the Debian documentation files, compressed as Debian wants them -------------
set(MAN_PAGE ${PACKAGING_SOURCE}/man/quillory.1)
file(WRITE ${PACKAGING_OUT}/changelog "${DEBIAN_CHANGELOG}")
add_custom_command(OUTPUT ${PACKAGING_OUT}/quillory.1.gz ${PACKAGING_OUT}/changelog.gz
  COMMAND gzip -9 -n -c ${MAN_PAGE} > ${PACKAGING_OUT}/quillory.1.gz
  COMMAND gzip -9 -n -c ${PACKAGING_OUT}/changelog > ${PACKAGING_OUT}/changelog.gz
  DEPENDS ${MAN_PAGE} ${PACKAGING_OUT}/changelog VERBATIM)
add_custom_target(quillory_desktop_files ALL DEPENDS ${ICON_PNGS} ${PACKAGING_OUT}/quillory.1.gz ${PACKAGING_OUT}/changelog.gz)

# --- What goes where ------------------------------------------------------------------------------
install(TARGETS quillory RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PACKAGING_SOURCE}/desktop/${QUILLORY_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PACKAGING_OUT}/${QUILLORY_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
# The backup file type, so that the file manager offers Quillory for it (dpkg's trigger of
# shared-mime-info rebuilds the desktop's MIME cache when the package is installed).
install(FILES ${PACKAGING_SOURCE}/desktop/${QUILLORY_APP_ID}.mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        RENAME ${QUILLORY_APP_ID}.xml)
install(FILES ${ICON_SVG} DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps RENAME ${QUILLORY_APP_ID}.svg)
install(FILES ${PACKAGING_OUT}/quillory.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${PACKAGING_SOURCE}/desktop/copyright ${PACKAGING_OUT}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${QUILLORY_PACKAGE_NAME})

# --- Debian package ---------------------------------------------------------------------------------
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${QUILLORY_PACKAGE_NAME})
set(CPACK_PACKAGE_VENDOR "Brevandt")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${QUILLORY_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "planner for students: assignments, courses, grades and calendars")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Quillory keeps a student's homework, projects and their subprojects tied to
courses and textbooks, with due dates, completion, grades, priorities, notes
and attachments. It shows them as a sortable list coloured by due date or as
weekly and monthly calendars, works out the grade point average and what the
final exam must bring, exports to iCalendar and text, backs up and merges, and
can keep its data in sync with an FTP server.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://quillory.invalid/")
# The libraries the program links come from dpkg-shlibdeps; what it starts or loads at run time
# does not show in its links and is listed here: curl for syncing (tar is essential), the Qt platform and
# image plug-ins, and the icon themes it takes its toolbar icons from.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "curl, qt6-qpa-plugins, qt6-image-formats-plugins, libqt6svg6, hicolor-icon-theme")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "adwaita-icon-theme, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "default-mta | mail-transport-agent")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

# --- Check: an install into an empty prefix holds exactly the expected files, and they validate ----
if(QUILLORY_BUILD_TESTS)
  string(REPLACE ";" "," ICON_SIZES_ARG "${QUILLORY_ICON_SIZES}")
  add_test(NAME install_layout
    COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR} -DWORK_DIR=${CMAKE_BINARY_DIR}/install-layout-test
            -DAPP_ID=${QUILLORY_APP_ID} -DICON_SIZES=${ICON_SIZES_ARG}
            -P ${CMAKE_SOURCE_DIR}/cmake/CheckInstallLayout.cmake)
endif()
