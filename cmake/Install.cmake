# What an installation has beside the programs, which their own folders install: the header and
# how a host's build finds it, and the documentation. Components are runtime (the plug-in), dev
# (for host programmers) and tools (kovactl, the simulator and the recorder).
include(CMakePackageConfigHelpers)

set(build_support ${CMAKE_CURRENT_LIST_DIR})
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KovaIoT)
set(generated_folder ${PROJECT_BINARY_DIR}/install)

install(FILES include/kova_iot.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)

# find_package(KovaIoT)
set(include_folder ${CMAKE_INSTALL_INCLUDEDIR})
set(plugin_folder ${CMAKE_INSTALL_LIBDIR})
set(data_folder ${CMAKE_INSTALL_DATADIR}/kova-iot)
configure_package_config_file(${build_support}/KovaIoTConfig.cmake.in
                              ${generated_folder}/KovaIoTConfig.cmake
                              INSTALL_DESTINATION ${config_folder}
                              PATH_VARS include_folder plugin_folder data_folder)
# Before 1.0.0 a minor release may break hosts.
write_basic_package_version_file(${generated_folder}/KovaIoTConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${generated_folder}/KovaIoTConfig.cmake ${generated_folder}/KovaIoTConfigVersion.cmake
        DESTINATION ${config_folder} COMPONENT dev)

# pkg-config. Paths are relative to the file's own folder: it stays right under DESTDIR and
# cmake --install --prefix.
set(pkgconfig_folder ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH include_from_pkgconfig ${pkgconfig_folder} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
file(RELATIVE_PATH data_from_pkgconfig ${pkgconfig_folder} ${CMAKE_INSTALL_FULL_DATADIR})
configure_file(${build_support}/kova-iot.pc.in ${generated_folder}/kova-iot.pc @ONLY)
install(FILES ${generated_folder}/kova-iot.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

set(document_folder ${CMAKE_INSTALL_DATADIR}/doc)
install(FILES CHANGELOG.md DESTINATION ${document_folder}/kova-iot COMPONENT runtime)
install(FILES docs/host-guide.md docs/items.md
        DESTINATION ${document_folder}/kova-iot-dev COMPONENT dev)
install(FILES examples/minimal_host.c examples/minimal_host.py
        DESTINATION ${document_folder}/kova-iot-dev/examples COMPONENT dev)
install(FILES docs/json.md docs/json.schema.json docs/machine-description.md docs/support.md
        DESTINATION ${document_folder}/kova-iot-tools COMPONENT tools)
