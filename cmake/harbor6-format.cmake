# harbor_add_format(NAME [SOURCE...])
#
# Builds the plug-in NAME.so, which supports one archive format, from the sources, or from every .cpp file below the
# current folder if none is given. It exports loadFormats, which the sources must define, and nothing else.
# `cmake --install` puts it into harbor6/formats beside the library, where programs look for it.
#
# The target is NAME; the object library NAME_code holds its code for tests that need more than loadFormats.
include(GNUInstallDirs)

function(harbor_add_format name)
    set(sources ${ARGN})
    if(NOT sources)
        file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.cpp)
    endif()
    add_library(${name}_code OBJECT ${sources})
    target_link_libraries(${name}_code PUBLIC harbor6::harbor6)
    set_target_properties(${name}_code PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                                                  POSITION_INDEPENDENT_CODE ON)

    set(exports ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/harbor6-format.map)
    add_library(${name} MODULE)
    target_link_libraries(${name} PRIVATE ${name}_code)
    target_link_options(${name} PRIVATE LINKER:--version-script=${exports})
    set_target_properties(${name} PROPERTIES PREFIX "" LINKER_LANGUAGE CXX LINK_DEPENDS ${exports})
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr") # there the loader finds the library by itself
        set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN/../..")
    endif()
    install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/harbor6/formats COMPONENT runtime)
endfunction()
