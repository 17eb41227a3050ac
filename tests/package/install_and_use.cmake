# Installs the build into a fresh folder, then builds another project against that installation: a program, which is
# run, and a format, which the installed program is to load.
# cmake -D BUILD=folder -D GENERATOR=name -D COMPILER=path -D NM=nm -D READELF=readelf -P install_and_use.cmake

cmake_minimum_required(VERSION 3.25)

set(place ${BUILD}/package)
file(REMOVE_RECURSE ${place})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(expect_output expected)
    execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    if(NOT output MATCHES "${expected}")
        message(SEND_ERROR "Expected output like ${expected}, but it is: ${output}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${place}/first)
file(RENAME ${place}/first ${place}/moved) # the installation holds no absolute path
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${place}/consumer -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${place}/moved)
run(${CMAKE_COMMAND} --build ${place}/consumer)
run(${place}/consumer/consumer)

# The program finds the library and the formats installed with it.
set(harbor ${place}/moved/bin/harbor)
expect_output("^cab\n" ${harbor} formats)

# The other project's format is loaded from a folder of its own, and beside cab.so, where the program finds it by itself.
run(${CMAKE_COMMAND} --install ${place}/consumer --prefix ${place}/other)
set(formats_dir lib/harbor6/formats)
run(${CMAKE_COMMAND} -D MODULE=${place}/other/${formats_dir}/toy.so -D NM=${NM} -D READELF=${READELF}
    -P ${CMAKE_CURRENT_LIST_DIR}/../formats/exports.cmake)
expect_output("^toy\n" ${harbor} formats --formats ${place}/other/${formats_dir})
run(${CMAKE_COMMAND} --install ${place}/consumer --prefix ${place}/moved)
file(WRITE ${place}/x.toy "TOY!hello")
run(${harbor} expand ${place}/x.toy -C ${place}/out)
file(READ ${place}/out/toy.txt content)
if(NOT content STREQUAL "hello")
    message(SEND_ERROR "toy.txt should hold hello, but holds: ${content}")
endif()
