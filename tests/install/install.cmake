# -DBUILD=FOLDER -DPREFIX=FOLDER [-DCOMPONENTS=NAME,NAME...] -P install.cmake: installs a build, or
# some components of it, so that nothing is left of an earlier time.

function(install)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} ${ARGN}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${PREFIX})
if(COMPONENTS)
  string(REPLACE "," ";" components ${COMPONENTS})
  foreach(component IN LISTS components)
    install(--component ${component})
  endforeach()
else()
  install()
endif()
