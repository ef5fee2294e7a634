# SPDX-License-Identifier: MIT
# What CPack runs on the files that go into the package: leaves out of the program what only a debugger reads.
execute_process(COMMAND strip --remove-section=.comment --remove-section=.note
    ${CPACK_TEMPORARY_DIRECTORY}/usr/bin/norvo COMMAND_ERROR_IS_FATAL ANY)
