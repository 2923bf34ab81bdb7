# Makes the template afresh from the sources and compares it with the one in the source tree.
file(REMOVE ${FRESH})
execute_process(COMMAND ${LUPDATE} ${SOURCES} -ts ${FRESH} ${OPTIONS}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${TEMPLATE} ${FRESH}
    RESULT_VARIABLE differs)
if(differs)
    message(FATAL_ERROR "${TEMPLATE} is not the sources' texts (${FRESH} is): "
        "cmake --build <build> --target update_translations")
endif()
