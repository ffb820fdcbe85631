# Two Debian packages from one build, one per install component:
#   corvelcfg  the utility
#   corvelsim  the simulated printer (only when it is built)
# Both carry the project's version. Their library dependencies come from
# dpkg-shlibdeps; what corvelsim loads by LD_PRELOAD or runs (umockdev's
# preload library, libfaketime) links nothing, so it is named by hand.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvelcfg)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "the corvelcfg developers")
set(CPACK_PACKAGE_CONTACT "the corvelcfg developers")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL corvelcfg)
if(CORVEL_BUILD_SIM)
  list(APPEND CPACK_COMPONENTS_ALL corvelsim)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)  # NAME_VERSION_ARCH.deb
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_CORVELCFG_PACKAGE_NAME corvelcfg)
set(CPACK_DEBIAN_CORVELCFG_DESCRIPTION "configures the Wi-Fi of a printer attached by USB
corvelcfg sets a USB printer's wireless network: SSID, ad-hoc or managed
mode, channel, WEP, WPA/WPA2 pre-shared key or 802.1x, and manages the
certificates the printer uses for 802.1x. It queries the printer's network
state and sends raw NPA packets for diagnosis.")

set(CPACK_DEBIAN_CORVELSIM_PACKAGE_NAME corvelsim)
set(CPACK_DEBIAN_CORVELSIM_PACKAGE_DEPENDS "umockdev, faketime")
set(CPACK_DEBIAN_CORVELSIM_DESCRIPTION "simulated USB printer for corvelcfg
corvelsim attaches a simulated printer at /dev/usb/lp0 (through umockdev,
without root or hardware) for one command or a shell, and plays the
printer's side of the protocol, keeping its settings between runs.")

include(CPack)
