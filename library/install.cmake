# What a host needs to build against us: the library, the headers as they stand in the tree, a CMake package.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/orbel)

install(TARGETS orbel EXPORT orbelTargets)
foreach(folder exc suite Sources player_core reference_suite/audio/output reference_suite/audio/device
        reference_suite/audio/stretch)
  get_filename_component(parent ${folder} DIRECTORY)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} DESTINATION include/orbel/${parent} FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT orbelTargets NAMESPACE orbel:: DESTINATION ${package_folder})
configure_package_config_file(orbelConfig.cmake.in orbelConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(orbelConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orbelConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/orbelConfigVersion.cmake
        DESTINATION ${package_folder})
