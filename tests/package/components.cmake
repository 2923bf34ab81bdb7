# Installs the build into a prefix of its own, then configures a host that asks for one component
# at a time; a component whose targets name another's before those exist fails here.
file(REMOVE_RECURSE ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
    RESULT_VARIABLE failed OUTPUT_QUIET
)
if(failed)
    message(FATAL_ERROR "the build does not install")
endif()
foreach(component Core Widgets Quick)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${HOST_DIR} -B ${WORK_DIR}/host-${component}
            -DCOMPONENT=${component} -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix
        RESULT_VARIABLE failed OUTPUT_QUIET ERROR_VARIABLE errors
    )
    if(failed)
        message(FATAL_ERROR "find_package(Brevanti COMPONENTS ${component}) fails:\n${errors}")
    endif()
    message(STATUS "find_package(Brevanti COMPONENTS ${component}): found")
endforeach()
