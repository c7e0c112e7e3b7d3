# Cross build for the recorder's 32-bit ARM (armhf) with Debian's cross
# compiler; every header and library comes from an armhf sysroot.
#
#   -DCMAKE_SYSROOT=DIR   the sysroot: a vendor SDK's, or a copy of ours (an
#                         absolute path)
#   otherwise             $ENV{ARMHF_SYSROOT} (absolute too), else
#                         build/sysroot-armhf of this source tree, as
#                         scripts/armhf-sysroot.sh makes it
#
# Packages installed elsewhere for armhf (an installed BSCommonLibrary) are
# found by naming their prefix in CMAKE_FIND_ROOT_PATH.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

if(NOT CMAKE_SYSROOT)
    if(DEFINED ENV{ARMHF_SYSROOT} AND NOT "$ENV{ARMHF_SYSROOT}" STREQUAL "")
        set(CMAKE_SYSROOT "$ENV{ARMHF_SYSROOT}")
    else()
        get_filename_component(CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-armhf" ABSOLUTE)
    endif()
endif()
if(NOT IS_ABSOLUTE "${CMAKE_SYSROOT}")
    message(FATAL_ERROR "The armhf sysroot is named by an absolute path, not ${CMAKE_SYSROOT}")
endif()
if(NOT IS_DIRECTORY "${CMAKE_SYSROOT}/usr/include")
    message(FATAL_ERROR "No armhf sysroot at ${CMAKE_SYSROOT}: scripts/setup.sh all makes one, "
                        "or name a vendor SDK's with -DCMAKE_SYSROOT=DIR")
endif()
# Try-compiles (compiler checks, FindThreads) use the same sysroot.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CMAKE_SYSROOT)

# Libraries, headers and CMake packages only from the sysroot (and from
# CMAKE_FIND_ROOT_PATH); programs (python3, nm) are the host's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Debian's cross compiler carries a C library and a C++ runtime of its own
# (/usr/arm-linux-gnueabihf) and searches them before the sysroot even with
# --sysroot. Where the sysroot holds the runtime of the compiler's version, as
# a Debian sysroot does, the build takes headers, start files and libraries
# from the sysroot alone, so that it links against the very glibc and
# libstdc++ that run it. Include directories are named relative to the sysroot
# (=/...), so a copy of the sysroot serves the same flags.
set(_armhf_triple ${CMAKE_LIBRARY_ARCHITECTURE})
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpversion
    OUTPUT_VARIABLE _armhf_gcc OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE _armhf_status)
if(NOT _armhf_status EQUAL 0)
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not run: scripts/setup.sh all installs it")
endif()
set(_armhf_gcc_dir usr/lib/gcc/${_armhf_triple}/${_armhf_gcc})
if(IS_DIRECTORY "${CMAKE_SYSROOT}/usr/include/c++/${_armhf_gcc}" AND EXISTS "${CMAKE_SYSROOT}/${_armhf_gcc_dir}/crtbegin.o")
    set(_armhf_c_includes "-nostdinc -isystem =/${_armhf_gcc_dir}/include -isystem =/usr/include/${_armhf_triple} -isystem =/usr/include")
    set(_armhf_cxx_includes "-nostdinc -isystem =/usr/include/c++/${_armhf_gcc} -isystem =/usr/include/${_armhf_triple}/c++/${_armhf_gcc} -isystem =/usr/include/c++/${_armhf_gcc}/backward -isystem =/${_armhf_gcc_dir}/include -isystem =/usr/include/${_armhf_triple} -isystem =/usr/include")
    # -B: start files (crt1.o, crtbegin.o) and libraries, ahead of the compiler's own.
    set(_armhf_link "-B${CMAKE_SYSROOT}/${_armhf_gcc_dir}/ -B${CMAKE_SYSROOT}/usr/lib/${_armhf_triple}/ -B${CMAKE_SYSROOT}/lib/${_armhf_triple}/")
else()
    message(WARNING "${CMAKE_SYSROOT} has no GCC ${_armhf_gcc} runtime (usr/include/c++/${_armhf_gcc}, "
                    "${_armhf_gcc_dir}): the cross compiler's own C and C++ runtime come first")
    set(_armhf_c_includes "")
    set(_armhf_cxx_includes "")
    set(_armhf_link "")
endif()

# GCC notes that the passing of some arguments changed in GCC 7.1; every
# piece of code here is built with one compiler, so the note says nothing.
set(CMAKE_C_FLAGS_INIT "${_armhf_c_includes}")
set(CMAKE_CXX_FLAGS_INIT "${_armhf_cxx_includes} -Wno-psabi")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_armhf_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_armhf_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_armhf_link}")

# Tests run under user-mode emulation with the sysroot as the root for the
# program's loader and libraries: the loader and the C library it runs with
# are the sysroot's, one build of glibc (pairing another build's loader with
# this C library makes fork and thread creation crash).
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${CMAKE_SYSROOT})
