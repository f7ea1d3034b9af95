# Builds and runs the project in consumer/ against the library, by the way that WAY names. Nothing of the working tree
# may be needed but for add_subdirectory: the installed tree is moved before it is used.
cmake_minimum_required(VERSION 3.22)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " text)
        message(FATAL_ERROR "failed (${result}): ${text}")
    endif()
endfunction()

function(expect_text text pattern)
    if(NOT "${text}" MATCHES "${pattern}")
        message(FATAL_ERROR "'${text}' doesn't match '${pattern}'")
    endif()
endfunction()

set(consumer ${CMAKE_CURRENT_LIST_DIR}/consumer)
set(configure ${CMAKE_COMMAND} -G ${GENERATOR} -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER})
# The build of add_subdirectory is kept: it compiles the whole library, which a second run need not do again.
file(REMOVE_RECURSE ${WORK}/prefix ${WORK}/elsewhere ${WORK}/installed ${WORK}/absolute)
if(NOT WAY STREQUAL "add_subdirectory")
    file(REMOVE_RECURSE ${WORK}/build)
endif()
file(MAKE_DIRECTORY ${WORK})

if(NOT WAY STREQUAL "add_subdirectory")
    run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/elsewhere)
    file(RENAME ${WORK}/elsewhere ${WORK}/prefix)
    file(GLOB_RECURSE pc_files ${WORK}/prefix/lumo25d.pc)
    get_filename_component(pc_dir ${pc_files} DIRECTORY)
    get_filename_component(lib_dir ${pc_dir} DIRECTORY)
endif()

if(WAY STREQUAL "find_package")
    run(${configure} -S ${consumer} -B ${WORK}/build -D WAY=${WAY} -D CMAKE_PREFIX_PATH=${WORK}/prefix)
    run(${CMAKE_COMMAND} --build ${WORK}/build)
    run(${WORK}/build/consumer ${VERSION})
elseif(WAY STREQUAL "add_subdirectory")
    # Unoptimised and in large pieces, as some projects want it: here it's enough that it compiles, links and runs.
    run(${configure} -S ${consumer} -B ${WORK}/build -D WAY=${WAY} -D SOURCE=${SOURCE} -D CMAKE_UNITY_BUILD=ON
        -D CMAKE_CXX_FLAGS=-O0)
    run(${CMAKE_COMMAND} --build ${WORK}/build)
    run(${WORK}/build/consumer ${VERSION})
    # Installing the consumer installs nothing of ours.
    run(${CMAKE_COMMAND} --install ${WORK}/build --prefix ${WORK}/installed)
    file(GLOB_RECURSE installed ${WORK}/installed/*)
    if(installed)
        message(FATAL_ERROR "installed with the consumer: ${installed}")
    endif()
else()
    find_program(PKG_CONFIG NAMES pkg-config pkgconf REQUIRED)
    set(ENV{PKG_CONFIG_PATH} ${pc_dir})
    execute_process(COMMAND ${PKG_CONFIG} --modversion lumo25d OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
    expect_text("${version}" "^${VERSION}")
    execute_process(COMMAND ${PKG_CONFIG} --cflags --libs lumo25d OUTPUT_VARIABLE flags COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    run(${CXX} -std=c++17 ${consumer}/main.cpp ${consumer}/everyName.cpp -o ${WORK}/consumer ${flags})
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${lib_dir} ${WORK}/consumer ${VERSION})

    # Directories given as absolute paths stand in the file as they are.
    run(${configure} -S ${SOURCE} -B ${WORK}/absolute -D LUMO25D_BUILD_TESTS=OFF -D LUMO25D_BUILD_EXAMPLES=OFF
        -D CMAKE_INSTALL_PREFIX=/p -D CMAKE_INSTALL_LIBDIR=/l/lib -D CMAKE_INSTALL_INCLUDEDIR=/i/include)
    file(READ ${WORK}/absolute/lumo25d.pc text)
    expect_text("${text}" "prefix=/p\nlibdir=/l/lib\nincludedir=/i/include/lumo25d\n")
    run(${configure} -S ${SOURCE} -B ${WORK}/absolute -D CMAKE_INSTALL_LIBDIR=lib/triplet -D
        CMAKE_INSTALL_INCLUDEDIR=include)
    file(READ ${WORK}/absolute/lumo25d.pc text)
    expect_text("${text}" "prefix=[$]{pcfiledir}/../../..\nlibdir=[$]{prefix}/lib/triplet\nincludedir=[$]{prefix}/include/")
endif()
