# SPDX-License-Identifier: MIT
# Puts the converted user guide into its page, and fails if a link or a picture leads nowhere, or if Markdown was taken
# for text: cmake -D body=… -D template=… -D page=… -P norvo_guide_page.cmake
file(READ ${body} guide)
get_filename_component(folder ${page} DIRECTORY)
string(REGEX REPLACE "[][;]" "," checked "${guide}") # what would part or join items of a list
set(faults "")

string(REGEX MATCHALL "href=\"[^\"]*\"" links "${checked}")
foreach(link IN LISTS links)
    string(REGEX REPLACE "href=\"(.*)\"" "\\1" target ${link})
    if(target MATCHES "^#(.+)")
        string(FIND "${checked}" " id=\"${CMAKE_MATCH_1}\"" found)
        if(found LESS 0)
            string(APPEND faults "\n  no heading has the anchor ${target}")
        endif()
    elseif(NOT target MATCHES "^https?://")
        string(APPEND faults "\n  ${target} is not installed with the guide")
    endif()
endforeach()

string(REGEX MATCHALL "src=\"[^\"]*\"" pictures "${checked}")
foreach(picture IN LISTS pictures)
    string(REGEX REPLACE "src=\"(.*)\"" "\\1" file ${picture})
    if(NOT EXISTS ${folder}/${file})
        string(APPEND faults "\n  there is no picture ${file}")
    endif()
endforeach()

# A browser would show these as they are written.
string(REGEX MATCHALL "<p>[^\n]*\n([^<\n][^\n]*\n)*([-*+|#]|[0-9]+\\.) [^\n]*" unconverted "${checked}")
foreach(text IN LISTS unconverted)
    string(REGEX REPLACE ".*\n" "" line "${text}")
    string(APPEND faults "\n  a list, table or heading needs an empty line before it: ${line}")
endforeach()

if(faults)
    message(FATAL_ERROR "docs/user-guide.md:${faults}")
endif()
configure_file(${template} ${page} @ONLY)
