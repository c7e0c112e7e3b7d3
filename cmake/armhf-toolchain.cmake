# Cross build for the recorder's 32-bit ARM (armhf) with Debian's cross compiler.
# Libraries come from Debian's armhf packages installed through multiarch.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

# Only search the armhf multiarch directories for libraries and packages,
# while headers (architecture independent) stay shared with the host.
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Tests run under user-mode emulation. The dynamic loader and C library come
# from the multiarch libc6:armhf (a dependency of the armhf packages above);
# mixing in the cross toolchain's own loader (qemu-arm -L) pairs two different
# builds of glibc, and fork or thread creation then crashes.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)

# GCC notes that the passing of some arguments changed in GCC 7.1; every
# piece of code here is built with one compiler, so the note says nothing.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")
