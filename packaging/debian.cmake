# SPDX-License-Identifier: MIT
# The Debian package, which CPack makes: `make package`.

execute_process(COMMAND date --utc --rfc-email --date=${NORVO_RELEASE_DATE}
    OUTPUT_VARIABLE NORVO_RELEASE_TIME OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([0-9-]+) ([^\n]+)\n+(.*)\n$" whole "${licence}")
set(NORVO_COPYRIGHT_YEARS ${CMAKE_MATCH_1})
if(NOT CMAKE_MATCH_2 STREQUAL NORVO_HOLDER)
    message(FATAL_ERROR "LICENSE names '${CMAKE_MATCH_2}' as the holder, CMakeLists.txt '${NORVO_HOLDER}'")
endif()
string(REPLACE "\n\n" "\n.\n" NORVO_LICENCE_TEXT "${CMAKE_MATCH_3}")
string(REPLACE "\n" "\n " NORVO_LICENCE_TEXT " ${NORVO_LICENCE_TEXT}")

configure_file(linux/copyright.in copyright @ONLY)
configure_file(linux/changelog.in changelog @ONLY)
configure_file(linux/doc-base.in doc-base @ONLY)
foreach(file IN ITEMS norvo.1 changelog)
    execute_process(COMMAND gzip -9 --no-name --stdout ${made}/${file}
        OUTPUT_FILE ${made}/${file}.gz COMMAND_ERROR_IS_FATAL ANY)
endforeach()
install(FILES ${made}/copyright ${made}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES ${made}/norvo.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT debian EXCLUDE_FROM_ALL)
if(NORVO_USER_GUIDE)
    install(FILES ${made}/doc-base DESTINATION ${CMAKE_INSTALL_DATADIR}/doc-base RENAME norvo
        COMPONENT debian EXCLUDE_FROM_ALL)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${PROJECT_BINARY_DIR};${PROJECT_NAME};norvo;/;${PROJECT_BINARY_DIR};${PROJECT_NAME};debian;/")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/strip.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_CONTACT ${NORVO_MAINTAINER})
set(CPACK_PACKAGE_HOMEPAGE_URL ${NORVO_WEB_URL})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_DESCRIPTION "Norvo is a desktop program for people who run their own Kubo IPFS node. It
asks the node for its pins and shows them in one live table: CID, number of
refs, type, kind, total size and name.

It also adds files and folders, pins them at remote services, unpins, saves
what is below a pin, publishes IPNS names, and shows the configuration, the
network and the repository of the node. The node itself is not part of this
package.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, qt6-wayland") # to open addresses; where there is no X11
include(CPack)
