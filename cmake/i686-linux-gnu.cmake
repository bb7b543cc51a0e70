# The instrument's build (i386) made on an x86-64 build machine at its own speed: Debian's i686
# cross compiler, with the Debian i386 root that tools/i386-root makes as the system root. The
# root supplies every header and library the program links against, exactly the versions its
# tests then run with inside that root; the build machine supplies only the compiler and the build
# tools (CMake, Ninja, Python, ImageMagick for the embedded images).
#
#   cmake -S . -B build-i386 -DCMAKE_TOOLCHAIN_FILE=cmake/i686-linux-gnu.cmake -DVTX_I386_ROOT=DIR
#
# DIR defaults to $VTX_I386_ROOT, else /var/cache/vtx-i386/root.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

if(NOT VTX_I386_ROOT)
  if(DEFINED ENV{VTX_I386_ROOT})
    set(VTX_I386_ROOT "$ENV{VTX_I386_ROOT}")
  else()
    set(VTX_I386_ROOT /var/cache/vtx-i386/root)
  endif()
endif()
set(VTX_I386_ROOT "${VTX_I386_ROOT}" CACHE PATH "The Debian i386 root the instrument's build links against")
# try_compile projects read the toolchain file anew: they must see the same root.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VTX_I386_ROOT)
if(NOT EXISTS "${VTX_I386_ROOT}/usr/lib/i386-linux-gnu/wx/config/gtk3-unicode-3.2")
  message(FATAL_ERROR "No i386 root with the toolkit at ${VTX_I386_ROOT}: make it with "
                      "`tools/i386-root -- make deps` (the Makefile's i386 targets do so)")
endif()

set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_SYSROOT "${VTX_I386_ROOT}")
# The build machine's binutils read i386 programs too, and the root has the same at the same path:
# the package can be stripped on either side.
set(CMAKE_STRIP /usr/bin/strip CACHE FILEPATH "")
set(CMAKE_FIND_ROOT_PATH "${VTX_I386_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)

# The toolkit's configuration script of the root, told that its tree lies inside the root.
set(wxWidgets_CONFIG_EXECUTABLE "${VTX_I386_ROOT}/usr/lib/i386-linux-gnu/wx/config/gtk3-unicode-3.2"
    CACHE FILEPATH "")
set(wxWidgets_CONFIG_OPTIONS --prefix=${VTX_I386_ROOT}/usr CACHE STRING "")

# pkg-config (GTK and the rest) reads the root's descriptions and prefixes their paths with it.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${VTX_I386_ROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${VTX_I386_ROOT}/usr/lib/i386-linux-gnu/pkgconfig:${VTX_I386_ROOT}/usr/share/pkgconfig")

# The tests run inside the root, where the build machine's Python (a version manager's, say) does
# not exist: the root's own, at the path both have.
set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "")

# Test binaries are i386 programs that need the root's libraries: their cases are listed when
# CTest runs them inside the root, not on the build machine after linking.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
