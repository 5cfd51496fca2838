# What `cmake --install` puts where (freedesktop and Debian layout below the
# prefix), and the Debian package that CPack builds from it.
#
#   bin/tarnby, bin/tarnby-cli
#   libexec/tarnby/tarnby-cli-*            the command programs tarnby-cli starts
#   share/tarnby/...                       files a new program folder is given
#   share/applications/tarnby.desktop      menu entry and file associations
#   share/mime/packages/tarnby.xml         the old file kinds the MIME database lacks
#   share/icons/hicolor/*/apps/tarnby.*    the icon, as SVG and PNG sizes
#   share/man/man1/tarnby{,-cli}.1.gz      manual pages
#   share/bash-completion/completions/tarnby-cli

install(TARGETS tarnby tarnby-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(desktopDir ${PROJECT_SOURCE_DIR}/resources/desktop)
install(FILES ${desktopDir}/tarnby.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${desktopDir}/tarnby.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${desktopDir}/tarnby.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(DIRECTORY ${TARNBY_ICON_DIR}/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)

install(FILES ${PROJECT_SOURCE_DIR}/resources/completion/tarnby-cli
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)

# Manual pages are installed compressed, as Debian keeps them; -n leaves the
# name and time out, so that the same page gives the same file.
find_program(GZIP gzip REQUIRED)
set(manPages)
foreach(page tarnby.1 tarnby-cli.1)
  set(out ${CMAKE_BINARY_DIR}/man/${page}.gz)
  add_custom_command(OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
    COMMAND sh -c "${GZIP} -9n -c \"$1\" > \"$2\"" gzip ${PROJECT_SOURCE_DIR}/resources/man/${page} ${out}
    DEPENDS ${PROJECT_SOURCE_DIR}/resources/man/${page}
    COMMENT "Compressing the manual page ${page}"
    VERBATIM)
  list(APPEND manPages ${out})
endforeach()
add_custom_target(tarnby_man_pages ALL DEPENDS ${manPages})
install(FILES ${manPages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The Debian package: `cpack -G DEB` in the build folder (scripts/package.sh).
# dpkg-shlibdeps computes the libraries' packages; the list below names what
# the program needs at run time that no library link shows: Qt's and
# GStreamer's plugins (Qt's SQLite driver for the table reader), the sound font for MIDI, the Word converters.
set(TARNBY_PACKAGE_MAINTAINER "Tarnby developers <tarnby@example.org>" CACHE STRING
    "The Maintainer field of the Debian package")
set(CPACK_PACKAGE_NAME tarnby)
set(CPACK_PACKAGE_VENDOR Tarnby)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${TARNBY_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop disk-file utility")
set(CPACK_PACKAGE_DESCRIPTION
    "Tarnby finds files on local disks and mounted network folders, shows them\n"
    "(pictures in about forty formats, text and rich text, web pages, database\n"
    "and spreadsheet tables, sound and video), edits pictures, prints, sends\n"
    "files by e-mail and receives attachments, and gathers files into named\n"
    "groups kept in an organizer database. tarnby-cli offers its file services\n"
    "from a terminal.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qt6-image-formats-plugins, libqt6sql6-sqlite, gstreamer1.0-plugins-base, gstreamer1.0-plugins-good, gstreamer1.0-plugins-bad, gstreamer1.0-libav, fluid-soundfont-gm, antiword | catdoc")
# The shared organizer catalogue needs QtSql's PostgreSQL driver, and the mail
# windows' reply, forward and "Send with Outlook Express" hand over to
# xdg-email; both are optional.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland, libqt6sql6-psql, xdg-utils")
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)
set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_GENERATOR "")
include(CPack)
