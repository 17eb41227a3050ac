# The plug-in exports one function and needs nothing but libharbor6 and the C and C++ runtime.
# cmake -D MODULE=cab.so -D NM=nm -D READELF=readelf -P exports.cmake

cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND ${NM} --dynamic --defined-only --format=posix ${MODULE}
                OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" symbols "${table}")
list(TRANSFORM symbols REPLACE " .*" "")
if(NOT symbols STREQUAL "loadFormats")
    message(SEND_ERROR "${MODULE} should export loadFormats alone, but exports: ${symbols}")
endif()

execute_process(COMMAND ${READELF} --dynamic --wide ${MODULE}
                OUTPUT_VARIABLE section COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" needed "${section}")
list(TRANSFORM needed REPLACE ".*\\[(.*)\\].*" "\\1")
if(NOT "libharbor6.so.1" IN_LIST needed)
    message(SEND_ERROR "${MODULE} should need libharbor6.so.1, but needs: ${needed}")
endif()
list(FILTER needed EXCLUDE REGEX "^(libharbor6|libstdc\\+\\+|libm|libgcc_s|libc|ld-linux-[a-z0-9-]+)\\.so\\.[0-9]+$")
if(needed)
    message(SEND_ERROR "${MODULE} should need no library but libharbor6 and the runtime, but needs: ${needed}")
endif()
