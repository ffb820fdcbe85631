# What each package carries besides its program, its manual page and its
# completion: the licence as Debian's copyright file, and the examples.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corvelcfg RENAME copyright COMPONENT corvelcfg)
install(FILES ${PROJECT_SOURCE_DIR}/examples/read-ssid.hex ${PROJECT_SOURCE_DIR}/examples/office.conf
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corvelcfg/examples COMPONENT corvelcfg)
if(CORVEL_BUILD_SIM)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/corvelsim RENAME copyright COMPONENT corvelsim)
endif()
