# How the project's targets are made.
#
# Headers are included as "<folder>/<Header>.h". Each folder gets an include
# root of its own in the build tree that holds only that folder (a link to
# it), so a target sees the headers of the folders it links and no others.

# corvel_include_root(<target> <PUBLIC|PRIVATE|INTERFACE>): adds the include
# root of the calling folder to <target>.
function(corvel_include_root target scope)
  get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(root ${CMAKE_BINARY_DIR}/include/${folder})
  if(NOT EXISTS ${root}/${folder})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
  endif()
  target_include_directories(${target} ${scope} ${root})
endfunction()

# corvel_library(NAME <lib> SOURCES <files...> [DEPS <libs...>]): a static
# library of the calling folder; DEPS are the libraries its headers or code use.
function(corvel_library)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;DEPS" ${ARGN})
  add_library(${ARG_NAME} STATIC ${ARG_SOURCES})
  corvel_include_root(${ARG_NAME} PUBLIC)
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_DEPS} PRIVATE corvel_build_flags)
endfunction()

# corvel_executable(NAME <exe> SOURCES <files...> [DEPS <libs...>])
function(corvel_executable)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;DEPS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  corvel_include_root(${ARG_NAME} PRIVATE)
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_DEPS} corvel_build_flags)
endfunction()

# corvel_unit_tests(NAME <exe> SOURCES <files...> LIBS <libs...>): one
# GoogleTest program, one CTest test: its cases take milliseconds, and a
# process of their own each would cost more than the cases themselves.
function(corvel_unit_tests)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  corvel_executable(NAME ${ARG_NAME} SOURCES ${ARG_SOURCES}
                    DEPS ${ARG_LIBS} corvel_test_support GTest::gtest GTest::gtest_main)
  corvel_precompiled_gtest(${ARG_NAME})
  add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME} --gtest_brief=1)
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT 120)
endfunction()

# corvel_precompiled_gtest(<target>): GoogleTest's header takes longer to
# compile than most test files, so the first test program precompiles it and
# every later one reuses that (all are built with the same flags).
function(corvel_precompiled_gtest target)
  get_property(first GLOBAL PROPERTY CORVEL_GTEST_PCH_TARGET)
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    target_precompile_headers(${target} PRIVATE <gtest/gtest.h>)
    set_property(GLOBAL PROPERTY CORVEL_GTEST_PCH_TARGET ${target})
  endif()
endfunction()
