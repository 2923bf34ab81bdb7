# Installs the build into a prefix of its own, then configures a host that asks for one component
# at a time; a component whose targets name another's before those exist fails here. The host of
# Core alone is built too, and must need neither Qt Gui nor Qt Widgets; so is the Qt Quick host,
# which must need no Qt Widgets and walk a first run against the local service. Last, the README's
# snippets are built as hosts.
file(REMOVE_RECURSE ${WORK_DIR}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
    RESULT_VARIABLE failed OUTPUT_QUIET
)
if(failed)
    message(FATAL_ERROR "the build does not install")
endif()
# A sanitized build's static libraries need the sanitizers' runtime in the host too.
if(SANITIZE)
    set(host_flags -DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined)
    set(host_flags_raw -fsanitize=address,undefined)
endif()
foreach(component Core Widgets Quick)
    execute_process(COMMAND ${CMAKE_COMMAND} -S ${HOST_DIR} -B ${WORK_DIR}/host-${component}
            -DCOMPONENT=${component} -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix ${host_flags}
        RESULT_VARIABLE failed OUTPUT_QUIET ERROR_VARIABLE errors
    )
    if(failed)
        message(FATAL_ERROR "find_package(Brevanti COMPONENTS ${component}) fails:\n${errors}")
    endif()
    message(STATUS "find_package(Brevanti COMPONENTS ${component}): found")
endforeach()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/host-Core
    RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output
)
if(failed)
    message(FATAL_ERROR "a host of Brevanti::Core alone does not build:\n${output}")
endif()
execute_process(COMMAND readelf -d ${WORK_DIR}/host-Core/host OUTPUT_VARIABLE needed)
if(needed MATCHES "libQt6(Gui|Widgets|Quick)")
    message(FATAL_ERROR "a host of Brevanti::Core alone needs ${CMAKE_MATCH_0}:\n${needed}")
endif()
message(STATUS "a host of Brevanti::Core alone needs no Qt Gui, Widgets or Quick")
if(SHARED AND NOT needed MATCHES "libBrevantiCore[.]so[.]1")
    message(FATAL_ERROR "a host of the shared build does not name libBrevantiCore.so.1:\n${needed}")
endif()

# Without CMake: pkg-config names what a compiler needs for the service alone.
set(ENV{PKG_CONFIG_PATH} ${WORK_DIR}/prefix/${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs brevanti-core
    RESULT_VARIABLE failed OUTPUT_VARIABLE flags ERROR_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
)
if(failed)
    message(FATAL_ERROR "pkg-config --cflags --libs brevanti-core fails:\n${flags}")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(COMMAND ${CXX} -std=c++17 -fPIC ${HOST_DIR}/main.cpp ${flags} ${host_flags_raw}
        -o ${WORK_DIR}/pkg-config-host
    RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output
)
if(failed)
    message(FATAL_ERROR "a host built with pkg-config's flags does not build:\n${output}")
endif()
message(STATUS "pkg-config --cflags --libs brevanti-core builds a host")

execute_process(COMMAND ${WORK_DIR}/prefix/bin/brevanti-sim --version
    RESULT_VARIABLE failed OUTPUT_VARIABLE version ERROR_VARIABLE version
)
if(failed OR NOT version MATCHES "^brevanti-sim [0-9]")
    message(FATAL_ERROR "the installed brevanti-sim --version answers:\n${version}")
endif()
message(STATUS "the installed local service: ${version}")

execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/host-Quick
    RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output
)
if(failed)
    message(FATAL_ERROR "a Qt Quick host of Brevanti::Quick does not build:\n${output}")
endif()
execute_process(COMMAND readelf -d ${WORK_DIR}/host-Quick/quick-host OUTPUT_VARIABLE needed)
if(needed MATCHES "libQt6Widgets")
    message(FATAL_ERROR "the Qt Quick host needs ${CMAKE_MATCH_0}:\n${needed}")
endif()
# The walk in each style a host may choose, light and dark: every text of the card must read.
set(walks "")
foreach(style Fusion Basic Material:Light Material:Dark Universal:Light Universal:Dark)
    string(REPLACE ":" ";" parts ${style})
    list(GET parts 0 name)
    set(ENV{QT_QUICK_CONTROLS_STYLE} ${name})
    set(ENV{QT_QUICK_CONTROLS_MATERIAL_THEME} "")
    set(ENV{QT_QUICK_CONTROLS_UNIVERSAL_THEME} "")
    if(style MATCHES ":")
        string(TOUPPER ${name} upper)
        list(GET parts 1 theme)
        set(ENV{QT_QUICK_CONTROLS_${upper}_THEME} ${theme})
    endif()
    execute_process(
        COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/walk-quick-host.sh ${SIM}
                ${WORK_DIR}/host-Quick/quick-host ${WORK_DIR}/walk
        RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output
    )
    if(failed)
        message(FATAL_ERROR "the Qt Quick host did not walk its first run in ${style}:\n${output}")
    endif()
    list(APPEND walks ${style})
endforeach()
string(REGEX MATCHALL "quick-host: [^\n]*" steps "${output}")
list(JOIN steps "\n" steps)
message(STATUS "the Qt Quick host needs no Qt Widgets, and walked its first run in ${walks}; "
    "the last:\n${steps}")

# The README's snippets, built against the installed package as a host would copy them.
if(SANITIZE)
    set(ENV{HOST_LINKER_FLAGS} -fsanitize=address,undefined)
endif()
execute_process(
    COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/build-readme-snippets.sh ${WORK_DIR}/prefix
            ${WORK_DIR}/readme-snippets ${README}
    RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output
)
if(failed)
    message(FATAL_ERROR "the README's snippets do not build:\n${output}")
endif()
message(STATUS "the README's C++, CMake and QML snippets build and load:\n${output}")
