# What is installed and where. The components are named PACKAGE, what programs need when they run,
# PACKAGE_development, what is needed to build them, pavo_tools and pavo_debug.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# Below 1.0 a minor version may change the interface: no program takes another one for its own.
set(pavo_interface_version ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

if(WIN32)
  set(pavo_library_folder ${CMAKE_INSTALL_BINDIR})
else()
  set(pavo_library_folder ${CMAKE_INSTALL_LIBDIR})
  # Programs and libraries find each other wherever the folder that they are installed to is moved.
  file(RELATIVE_PATH pavo_libraries_from_programs
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH $ORIGIN $ORIGIN/${pavo_libraries_from_programs})
  # And a framework that is installed elsewhere.
  set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)
endif()

option(PAVO_SPLIT_DEBUG "Install what debuggers need apart from the programs and libraries" ON)

# pavo_install_debug(COMPONENT FOLDER TARGETS...): what debuggers need of targets that are installed in
# FOLDER as parts of COMPONENT, where debuggers look for it.
function(pavo_install_debug component folder)
  if(NOT PAVO_SPLIT_DEBUG)
    return()
  endif()
  foreach(target IN LISTS ARGN)
    if(MSVC)
      install(FILES $<TARGET_PDB_FILE:${target}> DESTINATION ${folder} COMPONENT pavo_debug OPTIONAL)
    else()
      # A DLL's own date is preserved, too: objcopy would set it to the time of day.
      set(debug $<TARGET_FILE:${target}>.debug)
      add_custom_command(TARGET ${target} POST_BUILD VERBATIM
        COMMAND ${CMAKE_OBJCOPY} --preserve-dates --only-keep-debug
          $<TARGET_FILE:${target}> ${debug})
      install(FILES ${debug} DESTINATION ${folder}/.debug COMPONENT pavo_debug)
      install(CODE "
        set(file \"${folder}/$<TARGET_FILE_NAME:${target}>\")
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
        execute_process(
          COMMAND \"${CMAKE_OBJCOPY}\" --preserve-dates --strip-unneeded
            \"--add-gnu-debuglink=${debug}\" \"\$ENV{DESTDIR}\${file}\"
          COMMAND_ERROR_IS_FATAL ANY)" COMPONENT ${component})
    endif()
  endforeach()
endfunction()

# pavo_install_package(PACKAGE TARGETS...): libraries that find_package(PACKAGE) gives as pavo::...,
# and pkg-config where it is usual. Their headers are left to the caller.
function(pavo_install_package package)
  set(development ${package}_development)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${package})
  set_target_properties(${ARGN} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${pavo_interface_version})
  install(TARGETS ${ARGN} EXPORT ${package}Targets
    RUNTIME COMPONENT ${package}
    LIBRARY COMPONENT ${package} NAMELINK_COMPONENT ${development}
    ARCHIVE COMPONENT ${development}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  pavo_install_debug(${package} ${pavo_library_folder} ${ARGN})
  install(EXPORT ${package}Targets NAMESPACE pavo:: DESTINATION ${folder} COMPONENT ${development})

  set(generated ${CMAKE_CURRENT_BINARY_DIR}/${package})
  configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/${package}Config.cmake.in
    ${generated}Config.cmake INSTALL_DESTINATION ${folder})
  write_basic_package_version_file(${generated}ConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${generated}Config.cmake ${generated}ConfigVersion.cmake
    DESTINATION ${folder} COMPONENT ${development})

  if(NOT WIN32)
    set(folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH headers_from_pc
      ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
    configure_file(${PROJECT_SOURCE_DIR}/packaging/${package}.pc.in ${generated}.pc @ONLY)
    install(FILES ${generated}.pc DESTINATION ${folder} COMPONENT ${development})
  endif()
endfunction()
