# Where things are installed. One component for each package: platform, account, gateway, devcloud,
# python and dev.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Modes do not follow the umask of whoever installs.
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(QORN_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/qorn)
# Components are loaded, never linked: a folder of their own.
set(QORN_COMPONENTDIR ${CMAKE_INSTALL_LIBDIR}/qorn)
set(QORN_CONFIG_FILE ${CMAKE_INSTALL_FULL_SYSCONFDIR}/qorn/config.xml)
set(QORN_STORAGE_FOLDER ${CMAKE_INSTALL_FULL_LOCALSTATEDIR}/lib/qorn/)
set(QORN_LOG_FOLDER ${CMAKE_INSTALL_FULL_LOCALSTATEDIR}/log/qorn/)
file(RELATIVE_PATH QORN_LIBDIR_FROM_BINDIR
  ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

# qorn_install_headers(ROOT FILE...): headers keep the path, seen from ROOT, by which they are included.
function(qorn_install_headers root)
  foreach(header IN LISTS ARGN)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${root} OUTPUT_VARIABLE path)
    cmake_path(GET path PARENT_PATH folder)
    install(FILES ${header} DESTINATION ${QORN_INCLUDEDIR}/${folder} COMPONENT dev)
  endforeach()
endfunction()

# qorn_install_package(NAME): the CMake package NAME with the export set NAMETargets, the
# configuration cmake/NAMEConfig.cmake and the pkg-config file FILE.pc.
function(qorn_install_package name pkgconfig)
  set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${name})
  install(EXPORT ${name}Targets NAMESPACE Qorn:: DESTINATION ${folder} COMPONENT dev)
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  install(FILES
    ${CMAKE_SOURCE_DIR}/cmake/${name}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${name}ConfigVersion.cmake
    DESTINATION ${folder} COMPONENT dev)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/${pkgconfig}.pc.in ${pkgconfig}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pkgconfig}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()
