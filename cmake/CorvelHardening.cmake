# The hardening Debian builds its packages with, for every optimized build:
# the flags `dpkg-buildflags` gives with hardening=+all (PIE, the strong stack
# protector, _FORTIFY_SOURCE, -z relro -z now, format checks), plus the stack
# clash protection and control-flow protection that later dpkg versions add
# and bookworm's does not yet, where the compiler takes them.
#
# Off by default in Debug builds (_FORTIFY_SOURCE needs optimization), under
# the sanitizers and in the fuzz build; the Debian package build turns it off
# too, since dh passes the same flags itself (debian/rules). The build type
# still decides optimization and debug information: -g and -O2 are left out.
if(CMAKE_BUILD_TYPE STREQUAL "Debug" OR CORVEL_SANITIZE OR CORVEL_FUZZ)
  set(corvel_harden_default OFF)
else()
  set(corvel_harden_default ON)
endif()
option(CORVEL_HARDEN "Build with the hardening flags of Debian's packages (dpkg-buildflags, hardening=+all)"
       ${corvel_harden_default})
if(NOT CORVEL_HARDEN)
  return()
endif()

find_program(CORVEL_DPKG_BUILDFLAGS dpkg-buildflags)
if(NOT CORVEL_DPKG_BUILDFLAGS)
  message(FATAL_ERROR "CORVEL_HARDEN needs dpkg-buildflags (package dpkg-dev); or configure with -DCORVEL_HARDEN=OFF")
endif()

# corvel_dpkg_buildflags(<variable> <CPPFLAGS|CXXFLAGS|LDFLAGS>): what
# dpkg-buildflags gives, run from the source folder so that its file prefix
# map makes the paths it records relative to the sources, as in the package.
function(corvel_dpkg_buildflags variable kind)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all "DEB_${kind}_MAINT_STRIP=-g -O2"
            ${CORVEL_DPKG_BUILDFLAGS} --get ${kind}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${variable} "${flags}" PARENT_SCOPE)
endfunction()

corvel_dpkg_buildflags(corvel_cppflags CPPFLAGS)
corvel_dpkg_buildflags(corvel_cxxflags CXXFLAGS)
corvel_dpkg_buildflags(corvel_ldflags LDFLAGS)

include(CheckCXXCompilerFlag)
foreach(flag -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "CORVEL_HAS${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    string(APPEND corvel_cxxflags " ${flag}")
  endif()
endforeach()

# The C compiler is the C++ compiler's sibling and takes the same flags.
string(APPEND CMAKE_CXX_FLAGS " ${corvel_cppflags} ${corvel_cxxflags}")
string(APPEND CMAKE_C_FLAGS " ${corvel_cppflags} ${corvel_cxxflags}")
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS " ${corvel_ldflags}")
endforeach()
message(STATUS "Hardened build: ${corvel_cppflags} ${corvel_cxxflags} ${corvel_ldflags}")
