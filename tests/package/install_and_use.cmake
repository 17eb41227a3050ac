# Installs the build into a fresh folder, then builds the examples against that installation: programs, which are run,
# and a format, which the installed program and they load.
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

function(expect_content path expected)
    file(READ ${place}/${path} content)
    if(NOT content STREQUAL expected)
        message(SEND_ERROR "${path} should hold ${expected}, but holds: ${content}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${place}/first)
file(RENAME ${place}/first ${place}/moved) # the installation holds no absolute path
set(examples ${CMAKE_CURRENT_LIST_DIR}/../../examples)
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${place}/consumer -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${place}/moved -D EXAMPLES=${examples})
run(${CMAKE_COMMAND} --build ${place}/consumer)

# The program finds the library and the formats installed with it.
set(harbor ${place}/moved/bin/harbor)
expect_output("^cab\n" ${harbor} formats)

# The other project's format is loaded from a folder of its own, and beside cab.so, where programs find it by themselves.
run(${CMAKE_COMMAND} --install ${place}/consumer --prefix ${place}/other)
set(formats_dir lib/harbor6/formats)
run(${CMAKE_COMMAND} -D MODULE=${place}/other/${formats_dir}/toy.so -D NM=${NM} -D READELF=${READELF}
    -P ${CMAKE_CURRENT_LIST_DIR}/../formats/exports.cmake)
expect_output("^toy\n" ${harbor} formats --formats ${place}/other/${formats_dir})
expect_output("^toy\n" ${CMAKE_COMMAND} -E env HARBOR_FORMATS=${place}/other/${formats_dir} ${harbor} formats)
run(${CMAKE_COMMAND} --install ${place}/consumer --prefix ${place}/moved)

# Its files obey what the user says, like a cabinet's, and other programs read them.
execute_process(COMMAND printf "TOY!\\005d/one\\002\\000\\000\\00011\\003two\\003\\000\\000\\000222"
                OUTPUT_FILE ${place}/x.toy COMMAND_ERROR_IS_FATAL ANY)
file(MAKE_DIRECTORY ${place}/out/d)
file(WRITE ${place}/out/d/one "old")
run(${harbor} test ${place}/x.toy)
expect_output(" 2 .*d/one\n.* 3 .*two\n" ${harbor} list ${place}/x.toy)
run(${harbor} expand ${place}/x.toy -C ${place}/out --overwrite=never)
expect_content(out/d/one "old")
expect_content(out/two "222")
run(${harbor} expand ${place}/x.toy -C ${place}/out --overwrite=always -- d/one)
expect_content(out/d/one "11")
run(${CMAKE_COMMAND} -E chdir ${place}/out ${harbor} expand ${place}/x.toy)
expect_content(out/x/two "222")

set(built ${place}/consumer/examples)
set(cabinet ${CMAKE_CURRENT_LIST_DIR}/../data/mszip.cab)
expect_output("^d/one 2\ntwo 3\n$" ${built}/expand_to_memory ${place}/x.toy)
expect_output("hello.txt 6\n" ${built}/expand_to_memory ${cabinet})
expect_output("{\"path\": \"hello.txt\", \"size\": 6, .*\"compMethod\": \"MSZIP\"" ${built}/list_json ${cabinet})
expect_output("         3  0000-00-00  two\n" ${built}/read ${place}/x.toy)
expect_output("^hello\n" ${built}/read ${cabinet} hello.txt)
