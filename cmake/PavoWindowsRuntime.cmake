# Windows looks for the DLLs of an executable beside it, and Qt for its plug-ins in folders there.

file(COPY ${PAVO_WINDOWS_PREFIX}/dlls/ DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
install(DIRECTORY ${PAVO_WINDOWS_PREFIX}/dlls/ DESTINATION ${CMAKE_INSTALL_BINDIR}
  COMPONENT pavo_framework)
