# SPDX-License-Identifier: MIT
# What every target of Norvo is compiled with.
add_library(norvo_options INTERFACE)
target_compile_features(norvo_options INTERFACE cxx_std_20)
target_compile_definitions(norvo_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(NOT MSVC)
    target_compile_options(norvo_options INTERFACE
        -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<BOOL:${NORVO_WERROR}>:-Werror>)
    if(NORVO_SANITIZE)
        target_compile_options(norvo_options INTERFACE
            -fsanitize=${NORVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_compile_definitions(norvo_options INTERFACE NORVO_SANITIZED)
        target_link_options(norvo_options INTERFACE -fsanitize=${NORVO_SANITIZE})
    endif()
    if(NORVO_FUZZ) # libFuzzer is led by what it sees of the libraries
        target_compile_options(norvo_options INTERFACE -fsanitize=fuzzer-no-link)
    endif()
endif()

find_package(Threads REQUIRED)
