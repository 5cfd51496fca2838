# What `cmake --install` puts where: the freedesktop and Debian layout below
# the prefix.
#
#   bin/tarnby, bin/tarnby-cli
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
