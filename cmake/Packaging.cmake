# The Debian package (make package): the program alone, at the place where the instrument starts
# it, "/home/vtx/Code/update". The destination is relative on purpose: a plain install of the build
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
# The shared libraries come from dpkg-shlibdeps. Beyond them: the fonts the screen is drawn with
# ("Arial" through its metric twin), and "mount", which the operating-system update runs through
# the privileged tool. cp, tar, gzip, ldd, grep, wc and sh are in essential packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "mount, fonts-liberation, fonts-linuxlibertine, fonts-wqy-microhei")

include(CPack)
