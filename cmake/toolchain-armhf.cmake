# Cross-builds for armhf, as toolchain-arm64.cmake does for arm64. Time has 64 bits there only for
# those who ask for it, and a device lives beyond 2038.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_C_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64")
set(CMAKE_CXX_FLAGS_INIT "-D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig:/usr/share/pkgconfig)
