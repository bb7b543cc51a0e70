# Shared build settings of every subsystem library and test.

find_package(wxWidgets 3.2 REQUIRED COMPONENTS core base)
find_package(X11 REQUIRED)
find_package(Threads REQUIRED)

# wxWidgets as an interface target, so that its flags stay with the targets that use it.
add_library(vtx_wx INTERFACE)
target_include_directories(vtx_wx SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
target_compile_definitions(vtx_wx INTERFACE ${wxWidgets_DEFINITIONS})
target_compile_options(vtx_wx INTERFACE ${wxWidgets_CXX_FLAGS})
target_link_libraries(vtx_wx INTERFACE ${wxWidgets_LIBRARIES} Threads::Threads)

add_library(vtx_warnings INTERFACE)
target_compile_options(vtx_warnings INTERFACE -Wall -Wextra)
if(VTX_WERROR)
  target_compile_options(vtx_warnings INTERFACE -Werror)
endif()

if(VTX_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

if(VTX_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(VTX_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(NOT VTX_SANITIZE STREQUAL "none")
  message(FATAL_ERROR "VTX_SANITIZE must be none, address or thread")
endif()

set(VTX_TOOLS_DIR ${CMAKE_SOURCE_DIR}/tools)

# vtx_library(name SOURCES ... DEPS ...): one subsystem library.
function(vtx_library name)
  cmake_parse_arguments(A "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${A_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC vtx_wx PRIVATE vtx_warnings)
  foreach(dep ${A_DEPS})
    if(dep MATCHES "^vtx_")
      # Our own libraries always go in whole (see vtx_link_whole).
      target_link_libraries(${name} PUBLIC "$<LINK_LIBRARY:WHOLE_ARCHIVE,${dep}>")
    else()
      target_link_libraries(${name} PUBLIC ${dep})
    endif()
  endforeach()
endfunction()

# Self-registering objects (settings items, images, fonts, views) live in translation units that
# nothing references by name, so executables take those libraries whole.
function(vtx_link_whole target)
  foreach(lib ${ARGN})
    target_link_libraries(${target} PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${lib}>")
  endforeach()
  target_link_libraries(${target} PRIVATE vtx_warnings)
endfunction()

# vtx_test(name SOURCES ... DEPS ... [GUI] [SANDBOX] [WHOLE libs...] [TIMEOUT s])
#   headless tests are discovered case by case; GUI tests run under Xvfb and SANDBOX tests inside
#   the instrument sandbox, as one CTest entry per binary.
function(vtx_test name)
  cmake_parse_arguments(A "GUI;SANDBOX" "TIMEOUT" "SOURCES;DEPS;WHOLE;LABELS" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE ${A_DEPS} GTest::gtest vtx_warnings)
  if(A_WHOLE)
    vtx_link_whole(${name} ${A_WHOLE})
  endif()
  if(NOT A_TIMEOUT)
    set(A_TIMEOUT 300)
  endif()
  set(cmd $<TARGET_FILE:${name}>)
  if(A_GUI)
    set(cmd ${VTX_TOOLS_DIR}/with-xvfb ${cmd})
  endif()
  if(A_SANDBOX)
    set(cmd ${VTX_TOOLS_DIR}/instrument-sandbox -- ${cmd})
  endif()
  if(A_GUI OR A_SANDBOX)
    add_test(NAME ${name} COMMAND ${cmd})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${A_TIMEOUT} LABELS "${A_LABELS}")
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${A_TIMEOUT} LABELS "${A_LABELS}")
  endif()
endfunction()
