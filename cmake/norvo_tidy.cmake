# SPDX-License-Identifier: MIT
# What `make check` reads the sources by, in the preset `tidy`: nothing here is ever linked or run.

# A header is parsed once for all the files that use it: each library is one unity file, and the programs outside src
# are two together. A program brings a main and names that another one has too, so each is put into a namespace of its
# own, after all that they include.
function(norvo_tidy_programs)
    set(sources "")
    set(libraries "")
    set(definitions "")
    foreach(folder IN LISTS ARGN)
        get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(type ${target} TYPE)
            if(NOT type STREQUAL EXECUTABLE)
                continue()
            endif()
            set_target_properties(${target} PROPERTIES EXPORT_COMPILE_COMMANDS OFF UNITY_BUILD OFF)
            get_target_property(target_sources ${target} SOURCES)
            list(FILTER target_sources INCLUDE REGEX "\\.cpp$")
            foreach(source IN LISTS target_sources)
                get_filename_component(source ${source} ABSOLUTE BASE_DIR ${folder})
                list(APPEND sources ${source})
            endforeach()
            list(APPEND libraries $<TARGET_PROPERTY:${target},LINK_LIBRARIES>)
            list(APPEND definitions $<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>)
        endforeach()
    endforeach()
    list(REMOVE_DUPLICATES sources)

    # Two unity files: as one they would be half of all that is to be checked, and keep one core busy long after the rest.
    list(LENGTH sources count)
    math(EXPR half "(${count} + 1) / 2")
    add_library(norvo_programs OBJECT EXCLUDE_FROM_ALL ${sources})
    target_link_libraries(norvo_programs PRIVATE norvo_options ${libraries})
    target_compile_definitions(norvo_programs PRIVATE ${definitions})
    norvo_write_includes(${PROJECT_BINARY_DIR}/generated/programs.h ${sources})
    target_compile_options(norvo_programs PRIVATE -include ${PROJECT_BINARY_DIR}/generated/programs.h)
    # A fuzz target is extern "C", where a namespace makes no difference.
    set_target_properties(norvo_programs PROPERTIES AUTOMOC ON AUTOGEN_ORIGIN_DEPENDS OFF
        UNITY_BUILD_BATCH_SIZE ${half}
        UNITY_BUILD_UNIQUE_ID NORVO_PROGRAM
        UNITY_BUILD_CODE_BEFORE_INCLUDE "#undef LLVMFuzzerTestOneInput
#define LLVMFuzzerTestOneInput NORVO_PROGRAM
namespace NORVO_PROGRAM {
// NOLINTNEXTLINE(bugprone-suspicious-include)"
        UNITY_BUILD_CODE_AFTER_INCLUDE "}")
endfunction()

# Writes a header that includes all that the sources include, but for their meta-objects.
function(norvo_write_includes header)
    set(names "<memory>;<QtCore/qmetatype.h>") # of each meta-object
    foreach(source IN LISTS ARGN)
        file(STRINGS ${source} lines REGEX "^ *# *include ")
        string(REGEX MATCHALL "[<\"][^>\"]+[>\"]" found "${lines}")
        list(APPEND names ${found})
    endforeach()
    list(REMOVE_DUPLICATES names)
    list(FILTER names EXCLUDE REGEX "\\.moc\"$")
    list(TRANSFORM names REPLACE "(.+)" "#if __has_include(\\1)\n#include \\1\n#endif\n")
    list(JOIN names "" text)
    file(CONFIGURE OUTPUT ${header} CONTENT "#pragma once\n${text}" @ONLY)
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARGN})
endfunction()

# The target windows_syntax: each library below `folder` compiles for Windows, against the Qt headers of this machine.
function(norvo_windows_syntax folder)
    find_program(NORVO_WINDOWS_CXX NAMES x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-g++ REQUIRED)
    add_custom_target(windows_syntax)
    # curl's headers are in one folder with those of this machine's C library, which must not be found.
    find_path(NORVO_CURL_HEADERS curl/curl.h)
    if(NORVO_CURL_HEADERS)
        file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/windows)
        file(CREATE_LINK ${NORVO_CURL_HEADERS}/curl ${PROJECT_BINARY_DIR}/windows/curl SYMBOLIC)
    endif()
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(NOT type MATCHES "^(EXECUTABLE|STATIC_LIBRARY)$")
            continue()
        endif()
        set(includes "$<FILTER:$<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>,EXCLUDE,^/usr/include(/[^/]+-linux-gnu)?/?$>")
        set(definitions "$<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>")
        add_custom_target(windows_syntax_${target} VERBATIM COMMAND_EXPAND_LISTS COMMENT "Windows: ${target}"
            COMMAND ${NORVO_WINDOWS_CXX} -std=c++20 -fsyntax-only "-D$<JOIN:${definitions},;-D>"
                -isystem ${PROJECT_BINARY_DIR}/windows "-isystem;$<JOIN:${includes},;-isystem;>"
                ${CMAKE_CURRENT_BINARY_DIR}/${folder}/CMakeFiles/${target}.dir/Unity/unity_0_cxx.cxx)
        add_dependencies(windows_syntax windows_syntax_${target})
    endforeach()
endfunction()

get_property(folders DIRECTORY PROPERTY SUBDIRECTORIES)
foreach(folder IN LISTS folders)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        set_property(TARGET ${target} PROPERTY
            UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
    endforeach()
endforeach()
list(REMOVE_ITEM folders ${PROJECT_SOURCE_DIR}/src)
norvo_tidy_programs(${folders})
norvo_windows_syntax(src)
