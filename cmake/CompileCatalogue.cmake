# SPDX-License-Identifier: GPL-3.0-or-later
# cmake -DLRELEASE=PROGRAM -DCATALOGUE=FILE.ts -DOUTPUT=FILE.qm -P CompileCatalogue.cmake
# Qt's compiler of catalogues warns and succeeds; here a warning is a failure. When silent, it prints nothing else.
execute_process(
    COMMAND ${LRELEASE} -silent ${CATALOGUE} -qm ${OUTPUT}
    RESULT_VARIABLE status
    OUTPUT_VARIABLE printed
    ERROR_VARIABLE printed)
if(NOT status EQUAL 0 OR NOT printed STREQUAL "")
    file(REMOVE ${OUTPUT})
    message(FATAL_ERROR "${CATALOGUE} does not compile without a warning (${status}): ${printed}")
endif()
