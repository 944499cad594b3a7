# SPDX-License-Identifier: GPL-3.0-or-later
# Warnings are errors only where the code is written and checked: a user's compiler that knows one warning more must not
# stop the build.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  option(CLIPHEAVE_WERROR "Warnings are errors" ON)
else()
  option(CLIPHEAVE_WERROR "Warnings are errors" OFF)
endif()
set(werror)
if(CLIPHEAVE_WERROR)
  set(werror -Werror)
endif()
# One INTERFACE target carries the options of every target of the project.
add_library(clipheave_options INTERFACE)
target_compile_options(
  clipheave_options
  INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wcast-qual -Woverloaded-virtual -Wold-style-cast
            -Wnon-virtual-dtor ${werror} -fvisibility=hidden)
target_compile_definitions(
  clipheave_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
                              QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400)
# What Qt has deprecated since 6.4 need not have its successor there.
if(Qt6_VERSION VERSION_GREATER_EQUAL 6.5)
  target_compile_definitions(clipheave_options INTERFACE QT_WARN_DEPRECATED_UP_TO=0x060400)
endif()
target_include_directories(clipheave_options INTERFACE ${CMAKE_SOURCE_DIR})
