# ARMv7 hard-float with Debian's cross compiler, against the sysroot that tools/armhf/sysroot lays out.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

get_filename_component(project ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(CMAKE_SYSROOT ${project}/build/armhf-sysroot)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(libraries ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} ${libraries}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")

# moc, uic and rcc are this machine's.
set(QT_HOST_PATH /usr)
file(GLOB QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake)

# A board reads what is not aligned, at a price or not at all: a cast that hides it is told.
set(CMAKE_CXX_FLAGS_INIT "-Wcast-align=strict -Wno-psabi") # nothing here was built by an older compiler

# ctest runs the tests as ARM code, on this machine.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/emulate)

# The packages are the board's, and so are the libraries whose packages they depend on.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${libraries})
