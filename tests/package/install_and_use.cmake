# Installs the build into a fresh folder, then builds and runs a program against what stands there.
# cmake -D BUILD=folder -D GENERATOR=name -D COMPILER=path -P install_and_use.cmake

cmake_minimum_required(VERSION 3.25)

set(place ${BUILD}/package)
file(REMOVE_RECURSE ${place})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${place}/first)
file(RENAME ${place}/first ${place}/moved) # nothing installed may know the place it was made for
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${place}/consumer -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${place}/moved)
run(${CMAKE_COMMAND} --build ${place}/consumer)
run(${place}/consumer/consumer)
# The program finds the library and the formats installed with it.
execute_process(COMMAND ${place}/moved/bin/harbor formats OUTPUT_VARIABLE formats COMMAND_ERROR_IS_FATAL ANY)
string(TOLOWER "${formats}" formats)
if(NOT formats MATCHES "cab")
    message(SEND_ERROR "The installed program does not know the cabinet format, it says: ${formats}")
endif()
