# SPDX-License-Identifier: GPL-3.0-or-later
# Debian's cross compiler for 64-bit ARM, with the libraries that lie in VANTIRO_SYSROOT, and an emulator for the tests.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTIRO_SYSROOT)

set(CMAKE_FIND_ROOT_PATH ${VANTIRO_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The compiler brings a C library of its own, but not what Qt's library needs.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${VANTIRO_SYSROOT}/usr/lib/aarch64-linux-gnu:${VANTIRO_SYSROOT}/lib/aarch64-linux-gnu")

# Qt's programs that take part in a build are this machine's.
execute_process(COMMAND gcc -print-multiarch OUTPUT_VARIABLE host OUTPUT_STRIP_TRAILING_WHITESPACE)
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${host}/cmake)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${VANTIRO_SYSROOT})
