# The build's version, so that an installed program and its package say which build they are.
# Run as a script at every build (cmake -P), from the source tree's history:
#
#   a commit tagged vX.Y.Z          X.Y.Z
#   N commits after that tag        X.Y.Z+N.g<commit>
#   no tag yet                      <VERSION>~dev.N.g<commit>   (N: the commits up to HEAD)
#   uncommitted changes             the same, with .dirty
#   no history (a source copy)      $VTX_BUILD_VERSION if set, else <VERSION>~~nogit
#
# Every form is a Debian package version that grows with the history, and dpkg orders them as
# they were made: a development build before the first tag comes before that release ("~" sorts
# before the end of a version), a build after a tag after it, and a source copy without history
# before every build of its version. Variables: SOURCE_DIR,
# VERSION (the project's; read from CMakeLists.txt when not given), OUT (a C++ source defining the version text, rewritten only when it
# changes) and TEXT (a file holding the version alone, for the package). Without OUT the version
# goes to standard output.
if(NOT DEFINED VERSION)
  file(STRINGS "${SOURCE_DIR}/CMakeLists.txt" project REGEX "^project\\(.* VERSION ")
  string(REGEX REPLACE ".* VERSION ([0-9.]+).*" "\\1" VERSION "${project}")
endif()
if(DEFINED ENV{VTX_BUILD_VERSION} AND NOT "$ENV{VTX_BUILD_VERSION}" STREQUAL "")
  set(version "$ENV{VTX_BUILD_VERSION}")
else()
  # safe.directory: a root build (the i386 root) of a tree that another user owns.
  set(git git -c safe.directory=* -C "${SOURCE_DIR}")
  execute_process(COMMAND ${git} describe --tags --match "v[0-9]*" --long --dirty --always
                  OUTPUT_VARIABLE described RESULT_VARIABLE failed OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(failed OR described STREQUAL "")
    set(version "${VERSION}~~nogit")
  else()
    set(dirty "")
    if(described MATCHES "-dirty$")
      set(dirty ".dirty")
      string(REGEX REPLACE "-dirty$" "" described "${described}")
    endif()
    if(described MATCHES "^v([0-9][0-9A-Za-z.~]*)-([0-9]+)-g([0-9a-f]+)$")
      set(base "${CMAKE_MATCH_1}")
      set(count "${CMAKE_MATCH_2}")
      set(commit "${CMAKE_MATCH_3}")
      set(after "+")
    else()
      set(base "${VERSION}")
      set(after "~dev.")
      set(commit "${described}")
      execute_process(COMMAND ${git} rev-list --count HEAD OUTPUT_VARIABLE count
                      OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
    if(count STREQUAL "0" AND dirty STREQUAL "")
      set(version "${base}")
    else()
      set(version "${base}${after}${count}.g${commit}${dirty}")
    endif()
  endif()
endif()

if(NOT DEFINED OUT)
  execute_process(COMMAND ${CMAKE_COMMAND} -E echo "${version}")
  return()
endif()
set(source "// Made at build time by cmake/BuildVersion.cmake.\nextern const char kVtxBuildVersion[];\nconst char kVtxBuildVersion[] = \"${version}\";\n")
if(EXISTS "${OUT}")
  file(READ "${OUT}" old)
else()
  set(old "")
endif()
if(NOT old STREQUAL source)
  file(WRITE "${OUT}" "${source}")
endif()
if(DEFINED TEXT)
  file(WRITE "${TEXT}.new" "${version}\n")
  file(COPY_FILE "${TEXT}.new" "${TEXT}" ONLY_IF_DIFFERENT)
  file(REMOVE "${TEXT}.new")
endif()
