# What is installed, by component: `runtime` is the library with the formats, which install themselves, `dev` what
# projects need that use it, `program` the program. An installation may be moved.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/harbor6)
set(formats_dir ${CMAKE_INSTALL_LIBDIR}/harbor6/formats)

install(TARGETS harbor6 EXPORT harbor6-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)

list(TRANSFORM internal REPLACE ".*/(.+)" "PATTERN;\\1;EXCLUDE")
install(DIRECTORY harbor6 DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h" ${internal})
install(EXPORT harbor6-targets NAMESPACE harbor6:: DESTINATION ${package_dir} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/harbor6-config.cmake.in
                              ${PROJECT_BINARY_DIR}/harbor6-config.cmake INSTALL_DESTINATION ${package_dir}
                              PATH_VARS formats_dir)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/harbor6-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/harbor6-config.cmake ${PROJECT_BINARY_DIR}/harbor6-config-version.cmake
              ${PROJECT_SOURCE_DIR}/cmake/harbor6-format.cmake ${PROJECT_SOURCE_DIR}/cmake/harbor6-format.map
        DESTINATION ${package_dir} COMPONENT dev)
file(RELATIVE_PATH up_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" up_to_prefix ${up_to_prefix})
configure_file(${PROJECT_SOURCE_DIR}/cmake/harbor6.pc.in ${PROJECT_BINARY_DIR}/harbor6.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/harbor6.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

set(guides ${CMAKE_INSTALL_DATADIR}/doc/libharbor6-dev)
install(FILES ${PROJECT_SOURCE_DIR}/docs/model.md ${PROJECT_SOURCE_DIR}/docs/writing-a-host.md
              ${PROJECT_SOURCE_DIR}/docs/writing-a-format.md DESTINATION ${guides} COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${guides}/examples COMPONENT dev
        PATTERN cluster EXCLUDE)

if(HARBOR_PROGRAM)
    # In /usr the loader finds the library by itself.
    if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        file(RELATIVE_PATH to_library /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
        set_target_properties(harbor PROPERTIES INSTALL_RPATH "$ORIGIN/${to_library}")
    endif()
    install(TARGETS harbor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/harbor.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr") # where pages are compressed
        install(CODE "execute_process(COMMAND gzip -9nf \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/harbor.1)"
                COMPONENT program)
    endif()
    set(completions ${PROJECT_SOURCE_DIR}/completions)
    set(data ${CMAKE_INSTALL_DATADIR})
    install(FILES ${completions}/harbor.bash DESTINATION ${data}/bash-completion/completions RENAME harbor
            COMPONENT program)
    install(FILES ${completions}/harbor.zsh DESTINATION ${data}/zsh/site-functions RENAME _harbor COMPONENT program)
    install(FILES ${completions}/harbor.fish DESTINATION ${data}/fish/vendor_completions.d COMPONENT program)
endif()

include(${PROJECT_SOURCE_DIR}/cmake/deb.cmake)
