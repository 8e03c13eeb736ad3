# Debian's cross compiler and multi-arch libraries for armhf; where qemu-user is installed, what is built runs under it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

# pkg-config would otherwise answer for the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig:/usr/share/pkgconfig)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
find_program(MVX2_QEMU qemu-arm)
if(MVX2_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${MVX2_QEMU};-L;/usr/arm-linux-gnueabihf)
endif()
