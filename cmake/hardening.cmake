# Protections against what a memory error could be used for, in Release builds: checks of the C library's functions and of
# the stack, no writable relocation tables, and where the processor knows them, marked targets of jumps. Off with
# -DHARBOR_HARDENING=OFF. The cost is in docs/trust.md.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(HARBOR_HARDENING AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize|-D_FORTIFY_SOURCE")
    add_compile_options("$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
    foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
        string(MAKE_C_IDENTIFIER "HARBOR_HAS${flag}" known)
        check_cxx_compiler_flag(${flag} ${known})
        if(${known})
            add_compile_options($<$<CONFIG:Release>:${flag}>)
        endif()
    endforeach()
    if(CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF")
        add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro,-z,now,-z,noexecstack>")
    endif()
endif()
