# Windows looks for the DLLs of an executable beside it.

file(GLOB pavo_runtime_dlls ${PAVO_WINDOWS_PREFIX}/dlls/*.dll)
file(COPY ${pavo_runtime_dlls} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
install(DIRECTORY ${PAVO_WINDOWS_PREFIX}/dlls/ DESTINATION bin COMPONENT pavo_framework)
