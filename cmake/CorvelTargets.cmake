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
# GoogleTest program whose cases CTest runs one by one.
function(corvel_unit_tests)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;LIBS" ${ARGN})
  if(NOT BUILD_TESTING)
    return()
  endif()
  corvel_executable(NAME ${ARG_NAME} SOURCES ${ARG_SOURCES}
                    DEPS ${ARG_LIBS} corvel_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${ARG_NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
