# Debian's cross compiler and multi-arch libraries for arm64; where qemu-user is installed, what is built runs under it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# pkg-config would otherwise answer for the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
find_program(MVX2_QEMU qemu-aarch64)
if(MVX2_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${MVX2_QEMU};-L;/usr/aarch64-linux-gnu)
endif()
