# What an installation has beside the programs, which their own folders install: the header and
# how a host's build finds it, and the documentation. Components are runtime (the plug-in), dev
# (for host programmers) and tools (kovactl, the simulator and the recorder).
include(CMakePackageConfigHelpers)

set(build_support ${CMAKE_CURRENT_LIST_DIR})
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KovaIoT)
set(generated_folder ${PROJECT_BINARY_DIR}/install)

install(FILES include/kova_iot.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES include/kova_iot.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT dev)

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
install(FILES examples/minimal_host.c examples/minimal_host.py
        DESTINATION ${document_folder}/kova-iot-dev/examples COMPONENT dev)

# The documents of each package. Their links lead to neighbours in the source; what is installed
# elsewhere gets its link rewritten. What is said to scripts/docs_test.sh stays behind.
set(dev_documents host-guide items)
set(tools_documents json machine-description support troubleshooting)
set(exporter_documents exporter fleet live-page metrics performance)

function(install_documents component)
  set(folder ${document_folder}/kova-iot-${component})
  file(RELATIVE_PATH headers /${folder} /${CMAKE_INSTALL_INCLUDEDIR})
  foreach(name IN LISTS ${component}_documents)
    set(source ${PROJECT_SOURCE_DIR}/docs/${name}.md)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    file(READ ${source} text)
    string(REGEX REPLACE "<!-- docs-test:[^\n]*-->\n" "" text "${text}")
    string(REPLACE "](../examples/" "](../kova-iot-dev/examples/" text "${text}")
    string(REPLACE "](../tools/monitoring/" "](../../kova-iot/monitoring/" text "${text}")
    string(REPLACE "](../include/" "](${headers}/" text "${text}")
    foreach(other IN ITEMS dev tools exporter)
      foreach(target IN LISTS ${other}_documents)
        string(REPLACE "](${target}.md" "](../kova-iot-${other}/${target}.md" text "${text}")
      endforeach()
    endforeach()
    file(WRITE ${generated_folder}/documents/${name}.md "${text}")
    install(FILES ${generated_folder}/documents/${name}.md DESTINATION ${folder}
            COMPONENT ${component})
  endforeach()
endfunction()
install_documents(dev)
install_documents(tools)
install_documents(exporter)
install(FILES docs/json.schema.json
        DESTINATION ${document_folder}/kova-iot-tools COMPONENT tools)
