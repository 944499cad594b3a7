# SPDX-License-Identifier: GPL-3.0-or-later
# clipheave_layer(NAME [FOLDERS folders…] [DEPENDS targets…] [PRIVATE_DEPENDS targets…])
# One static library of all sources in the calling folder and in the named folders below it. DEPENDS are the
# layers and vocabulary that its headers use; PRIVATE_DEPENDS are third-party libraries that stay in
# its .cpp files. A tiny executable links the whole archive, so that an undeclared use of another
# layer fails the build even when no test pulls that object in.
function(clipheave_layer name)
  cmake_parse_arguments(ARG "" "" "FOLDERS;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  set(patterns)
  foreach(folder . ${ARG_FOLDERS})
    list(APPEND patterns ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h)
  endforeach()
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(
    ${name}
    PUBLIC clipheave_options Qt6::Core tl::expected ${ARG_DEPENDS}
    PRIVATE ${ARG_PRIVATE_DEPENDS})
  file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}_link.cpp CONTENT "int main() { return 0; }\n")
  add_executable(${name}_link ${CMAKE_CURRENT_BINARY_DIR}/${name}_link.cpp)
  set_target_properties(${name}_link PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/link-checks)
  target_link_libraries(${name}_link PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,${name}>)
endfunction()

# A test's limit: the sanitizers make everything several times slower. A limit of the test preset is only for tests without
# one of their own.
set(CLIPHEAVE_TEST_SECONDS 300)
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
  set(CLIPHEAVE_TEST_SECONDS 1800)
endif()

# clipheave_test(NAME DEPENDS targets…): a GoogleTest executable of all sources in the calling folder. Its tests carry its
# name as a label.
function(clipheave_test name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE clipheave_options testkit GTest::gmock ${ARG_DEPENDS})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${CLIPHEAVE_TEST_SECONDS} LABELS ${name})
endfunction()

# clipheave_gui_test(NAME DEPENDS targets…): the same with a QApplication, offscreen unless told otherwise.
function(clipheave_gui_test name)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  add_executable(${name} ${sources} ${CMAKE_SOURCE_DIR}/tests/testkit/gui_main.cpp)
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE clipheave_options testkit GTest::gmock Qt6::Widgets Qt6::Test ${ARG_DEPENDS})
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${CLIPHEAVE_TEST_SECONDS} LABELS ${name})
endfunction()
