# SPDX-License-Identifier: MIT
# Installs the program into the build folder and compares what the files say of it with what it says itself.
# BUILD and SOURCE are folders, HOLDER, CONTACT, LICENCE and WEB_URL what CMakeLists.txt says, GUIDE whether it was made.

set(prefix ${BUILD}/tests/installed)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
set(docs ${prefix}/share/doc/norvo)
if(EXISTS ${docs}/copyright)
    message(SEND_ERROR "what only the Debian package has is installed without it")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix} --component debian
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

# said(<variable> <regular expression> <option>) runs the installed program.
function(said variable pattern option)
    execute_process(COMMAND ${prefix}/bin/norvo ${option} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    if(NOT output MATCHES "${pattern}")
        message(FATAL_ERROR "norvo ${option} says: ${output}")
    endif()
    set(${variable} ${CMAKE_MATCH_1} PARENT_SCOPE)
endfunction()

# expect(<file> <text>...) reports each text that the file does not hold.
function(expect file)
    file(READ ${file} content)
    foreach(text IN LISTS ARGN)
        string(FIND "${content}" "${text}" at)
        if(at LESS 0)
            message(SEND_ERROR "${file} does not say: ${text}")
        endif()
    endforeach()
endfunction()

said(name "^([A-Za-z]+) [0-9.]+\n$" --version)
said(version "^[A-Za-z]+ ([0-9.]+)\n$" --version)
said(description "\n${name} - ([^\n]+)\n" --help)

file(GLOB metainfo ${prefix}/share/metainfo/*.metainfo.xml)
expect(${metainfo} "<id>example.norvo.norvo</id>" "<name>${name}</name>" "<summary>${description}</summary>"
    "<release version=\"${version}\" "
    "<project_license>${LICENCE}</project_license>" "<url type=\"homepage\">${WEB_URL}</url>"
    "<developer_name>${HOLDER}</developer_name>" "<update_contact>${CONTACT}</update_contact>"
    "<launchable type=\"desktop-id\">norvo.desktop</launchable>")
expect(${prefix}/share/applications/norvo.desktop
    "\nName=${name}\n" "\nComment=${description}\n" "\nExec=norvo\n" "\nIcon=norvo\n")
expect(${prefix}/share/man/man1/norvo.1
    "\"${name} ${version}\"" "norvo \\- ${description}\n" "\n${HOLDER}," "MT ${CONTACT}\n" "UR ${WEB_URL}\n")
expect(${docs}/LICENSE "${LICENCE} License" " ${HOLDER}\n")

foreach(size IN ITEMS 16 22 24 32 48 64 128 256)
    file(READ ${prefix}/share/icons/hicolor/${size}x${size}/apps/norvo.png header OFFSET 16 LIMIT 8 HEX)
    string(REGEX MATCH "^(........)(........)$" whole "${header}")
    math(EXPR width "0x${CMAKE_MATCH_1}")
    math(EXPR height "0x${CMAKE_MATCH_2}")
    if(NOT "${width}x${height}" STREQUAL "${size}x${size}")
        message(SEND_ERROR "the icon for ${size} pixels has ${width}x${height}")
    endif()
endforeach()
expect(${prefix}/share/icons/hicolor/scalable/apps/norvo.svg "<svg ")

if(GUIDE)
    file(READ ${BUILD}/generated/ProductInfo.h product)
    string(REGEX MATCH "installedUserGuide {\"([^\"]+)\"}" whole "${product}")
    expect(${prefix}/bin/${CMAKE_MATCH_1} "<title>${name} ${version}: " "href=\"${WEB_URL}\"")
    file(READ ${docs}/user-guide.html guide)
    string(REGEX MATCHALL "src=\"[^\"]+\"" pictures "${guide}")
    list(TRANSFORM pictures REPLACE "src=\"(.*)\"" "${docs}/\\1")
    foreach(picture IN LISTS pictures)
        if(NOT EXISTS ${picture})
            message(SEND_ERROR "the guide shows ${picture}, which is not installed")
        endif()
    endforeach()
endif()

if(EXISTS ${BUILD}/CPackConfig.cmake)
    set(maintainer "${HOLDER} <${CONTACT}>")
    expect(${docs}/copyright "Upstream-Name: ${name}\n" "${maintainer}\n" "Source: ${WEB_URL}\n" "License: ${LICENCE}\n"
        " ${HOLDER}\n" "\n THE SOFTWARE IS PROVIDED \"AS IS\"")
    if(GUIDE)
        expect(${prefix}/share/doc-base/norvo "Title: ${name} " "Author: ${HOLDER}\n")
    endif()
    execute_process(COMMAND gzip -dc ${docs}/changelog.gz OUTPUT_VARIABLE changelog COMMAND_ERROR_IS_FATAL ANY)
    if(NOT changelog MATCHES "^norvo \\(${version}\\) .*\n -- ${maintainer}  ")
        message(SEND_ERROR "the package's changelog says: ${changelog}")
    endif()
    execute_process(COMMAND gzip -dc ${prefix}/share/man/man1/norvo.1.gz OUTPUT_FILE ${BUILD}/tests/norvo.1)
    file(SHA256 ${BUILD}/tests/norvo.1 packed)
    file(SHA256 ${prefix}/share/man/man1/norvo.1 plain)
    if(NOT packed STREQUAL plain)
        message(SEND_ERROR "the package's manual page is another one")
    endif()
    include(${BUILD}/CPackConfig.cmake)
    set(control "${CPACK_PACKAGE_NAME}|${CPACK_PACKAGE_VERSION}|${CPACK_PACKAGE_CONTACT}|${CPACK_PACKAGE_HOMEPAGE_URL}")
    if(NOT "${control}|${CPACK_PACKAGE_DESCRIPTION_SUMMARY}" STREQUAL
            "norvo|${version}|${maintainer}|${WEB_URL}|${description}")
        message(SEND_ERROR "the package says of itself: ${control}|${CPACK_PACKAGE_DESCRIPTION_SUMMARY}")
    endif()
endif()

foreach(file IN ITEMS README.md CHANGELOG.md docs/user-guide.md)
    file(READ ${SOURCE}/${file} text)
    string(REGEX MATCHALL "(${name}[/ ]|version is )[0-9]+\\.[0-9]+\\.[0-9]+" named "${text}")
    foreach(product IN LISTS named)
        if(NOT product MATCHES "[/ ]${version}$")
            message(SEND_ERROR "${file} says ${product}")
        endif()
    endforeach()
endforeach()
