# Windows looks for the DLLs of an executable beside it, and Qt for its plug-ins in folders there.

file(COPY ${PAVO_WINDOWS_PREFIX}/dlls/ DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

# pavo_licence(LIBRARY PACKAGE): a library's licence, as Debian's package of the same sources has it.
function(pavo_licence library package)
  install(FILES /usr/share/doc/${package}/copyright RENAME ${library}.txt
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/licences COMPONENT pavo_framework)
endfunction()
pavo_licence(Qt5Core libqt5core5a)
pavo_licence(pcre2 libpcre2-16-0)
pavo_licence(libgcc_s_seh-1 gcc-mingw-w64-x86-64-posix-runtime)
pavo_licence(libjsoncpp libjsoncpp-dev)
pavo_licence(liblog4cplus liblog4cplus-dev)
pavo_licence(libstdc++-6 gcc-mingw-w64-x86-64-posix-runtime)
pavo_licence(libwinpthread-1 mingw-w64-x86-64-dev)
pavo_licence(zlib1 libz-mingw-w64)
# The texts that these refer to; some are links to others.
file(GLOB texts /usr/share/common-licenses/*)
foreach(text IN LISTS texts)
  get_filename_component(name ${text} NAME)
  file(REAL_PATH ${text} text)
  install(FILES ${text} RENAME ${name}
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/licences/common-licenses COMPONENT pavo_framework)
endforeach()
install(DIRECTORY ${PAVO_WINDOWS_PREFIX}/dlls/ DESTINATION ${CMAKE_INSTALL_BINDIR}
  COMPONENT pavo_framework)
