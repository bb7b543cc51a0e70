# The Debian package (make package): the program at the place where the instrument starts it,
# "/home/vtx/Code/update", on i386 with its runtime beside it. The destination is relative on purpose: a plain install of the build
# tree lands under CMAKE_INSTALL_PREFIX and never writes into a real /home/vtx; only the package
# puts it at the root.
install(TARGETS update RUNTIME DESTINATION home/vtx/Code COMPONENT update)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vtx-update)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# The version of the build being packed, as the program names it (cmake/BuildVersion.cmake),
# read when cpack runs: the configure-time version above would stay behind the history.
set(CPACK_VTX_VERSION_TEXT ${VTX_VERSION_TEXT})
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/CPackVersion.cmake)
set(CPACK_PACKAGE_VENDOR "Korvalin")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "software-update utility of the Korvalin veterinary analyser")
set(CPACK_PACKAGE_DESCRIPTION
    "Installs the new application build that waits in /home/vtx/Code/NEW, keeps the old one as a dated\n\
backup, repairs the runtime library link when needed, installs the optional font package and\n\
auxiliary file from the USB stick, logs every step and reboots the instrument.")
set(CPACK_PACKAGING_INSTALL_PREFIX "/")
# Only the program's component, whatever else may one day have install rules.
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};${PROJECT_NAME};update;/")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Korvalin instrument software <software@korvalin.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the system must supply: the fonts the screen is drawn with ("Arial" through its metric twin)
# and fontconfig's configuration of them, and "mount", which the operating-system update runs
# through the privileged tool. cp, tar, gzip, ldd, grep, wc and sh are in essential packages.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "mount, fontconfig-config, fonts-liberation, fonts-linuxlibertine, fonts-wqy-microhei")

# The instrument's package carries the program's runtime: its loader and every library it loads,
# taken from the root it was linked against, in a folder of its own beside it, tied to it by its
# ELF interpreter and RPATH (tools/bundle-runtime). So it starts whatever C library and C++ runtime
# the instrument has, and the operating-system update, which replaces the system's C++ runtime,
# can never stop it from starting again. The package then depends on no library package. Elsewhere (the rehearsal on the build machine) the program
# runs on the system it was built on, and its package declares its libraries (dpkg-shlibdeps).
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(vtx_bundle_default ON)
else()
  set(vtx_bundle_default OFF)
endif()
option(VTX_BUNDLE_RUNTIME "The package carries the program's runtime (default on i386)" ${vtx_bundle_default})
set(VTX_RUNTIME_SYSROOT "${CMAKE_SYSROOT}" CACHE PATH "The root the program is linked against (default: /)")
if(VTX_BUNDLE_RUNTIME)
  set(vtx_sysroot "${VTX_RUNTIME_SYSROOT}")
  if(NOT vtx_sysroot)
    set(vtx_sysroot /)
  endif()
  set(vtx_code "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/home/vtx/Code")
  # A cross build's package test runs inside the root itself, where that root is "/": the
  # environment may name the root as the packaging process sees it.
  install(CODE "
    set(vtx_sysroot \"${vtx_sysroot}\")
    if(DEFINED ENV{VTX_RUNTIME_SYSROOT})
      set(vtx_sysroot \"\$ENV{VTX_RUNTIME_SYSROOT}\")
    endif()
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/bundle-runtime --sysroot \"\${vtx_sysroot}\"
                            --runtime-dir \"${vtx_code}/update-runtime\"
                            --runtime-path /home/vtx/Code/update-runtime \"${vtx_code}/update\"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)" COMPONENT update)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

# A cross build's package is made on the build machine, whose own architecture dpkg would name.
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR MATCHES "^i.86$")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()

include(CPack)
