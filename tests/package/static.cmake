# Brevanti built statically inside a host's build with FetchContent, then installed from there: a
# host of the service alone, built against that prefix, carries the library in itself.
file(REMOVE_RECURSE ${WORK_DIR}/fetch ${WORK_DIR}/static-prefix ${WORK_DIR}/static-host)
function(run what)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE failed OUTPUT_VARIABLE output
        ERROR_VARIABLE output
    )
    if(failed)
        message(FATAL_ERROR "${what} fails:\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()
run("configuring a FetchContent host" ${CMAKE_COMMAND} -S ${FETCH_DIR} -B ${WORK_DIR}/fetch
    -G Ninja -DBREVANTI_SOURCE_DIR=${SOURCE_DIR} -DBUILD_SHARED_LIBS=OFF
)
run("building the FetchContent host" ${CMAKE_COMMAND} --build ${WORK_DIR}/fetch)
message(STATUS "a FetchContent host builds Brevanti statically and none of its tests")
run("installing from the FetchContent host"
    ${CMAKE_COMMAND} --install ${WORK_DIR}/fetch --prefix ${WORK_DIR}/static-prefix
)
run("configuring a host against the static prefix" ${CMAKE_COMMAND} -S ${HOST_DIR}
    -B ${WORK_DIR}/static-host -G Ninja -DCOMPONENT=Core
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/static-prefix
)
run("building a host against the static prefix" ${CMAKE_COMMAND} --build ${WORK_DIR}/static-host)
run("reading the static host" readelf -d ${WORK_DIR}/static-host/host)
if(output MATCHES "libBrevanti")
    message(FATAL_ERROR "the static host needs a shared Brevanti:\n${output}")
endif()
run("running the static host" ${CMAKE_COMMAND} -E env XDG_CONFIG_HOME=${WORK_DIR}/static-host
    ${WORK_DIR}/static-host/host
)
message(STATUS "a host built against the static prefix carries Brevanti and runs")
