# Read by cpack: the package version is the one the built program names (build/version.txt).
if(EXISTS "${CPACK_VTX_VERSION_TEXT}")
  file(STRINGS "${CPACK_VTX_VERSION_TEXT}" CPACK_PACKAGE_VERSION LIMIT_COUNT 1)
endif()
