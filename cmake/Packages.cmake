# Debian and RPM packages, one of each a component, made by scripts/package.sh. A component is
# declared here once, by kova_package; what it holds is said by the install rules that name it.
set(KOVA_MAINTAINER "KOVA IoT module maintainers <maintainers@kova-iot.invalid>" CACHE STRING
    "Maintainer of the packages, name and address")

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KOVA_MAINTAINER})
set(CPACK_PACKAGE_VENDOR ${KOVA_MAINTAINER})
# Each package has a summary of its own: the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                                                GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# Adds to each package's tree what it has beside the installed files.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackageFiles.cmake)
set(CPACK_KOVA_CHANGELOG ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
set(CPACK_RPM_CHANGELOG_FILE ${PROJECT_BINARY_DIR}/install/rpm-changelog)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_COMPRESSION_TYPE xz)
set(CPACK_RPM_PACKAGE_LICENSE "Proprietary")
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_RPM_PACKAGE_AUTOREQ ON)
# Neither the plug-in nor the simulator is a library that others are linked with.
set(CPACK_RPM_PACKAGE_AUTOPROV OFF)
# Nothing of the machine or the moment of a build goes into a package.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _buildhost reproducible
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _build_id_links none")
# Folders that the system has, or that another package brings.
foreach(folder bin include lib lib/systemd lib/systemd/system ${CMAKE_INSTALL_LIBDIR}
        ${CMAKE_INSTALL_LIBDIR}/cmake ${CMAKE_INSTALL_LIBDIR}/pkgconfig share share/doc share/man
        share/man/man1 share/man/man3 share/man/man5 share/man/man8 share/bash-completion
        share/bash-completion/completions share/zsh share/zsh/vendor-completions share/fish
        share/fish/vendor_completions.d)
  list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr/${folder})
endforeach()

# The scripts that the package systems run for the unit ${package_UNIT} of a component.
macro(kova_unit_scripts upper)
  set(scripts ${PROJECT_BINARY_DIR}/install/${package_UNIT})
  foreach(script deb_postinst deb_prerm deb_postrm rpm_post rpm_preun rpm_postun)
    string(REGEX REPLACE "(deb|rpm)_" "\\1/" output ${script})
    configure_file(${CMAKE_CURRENT_LIST_DIR}/unit_scripts/${script}.in ${scripts}/${output} @ONLY
                   FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                    WORLD_READ WORLD_EXECUTE)
  endforeach()
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${scripts}/deb/postinst ${scripts}/deb/prerm
                                                  ${scripts}/deb/postrm)
  set(CPACK_RPM_${upper}_POST_INSTALL_SCRIPT_FILE ${scripts}/rpm/post)
  set(CPACK_RPM_${upper}_PRE_UNINSTALL_SCRIPT_FILE ${scripts}/rpm/preun)
  set(CPACK_RPM_${upper}_POST_UNINSTALL_SCRIPT_FILE ${scripts}/rpm/postun)
endmacro()

# kova_package(COMPONENT DEB <name> RPM <name> SECTION <of Debian> DESCRIPTION <summary, then text>
#              [BINARY] [NEEDS <component>...] [DEB_DEPENDS <package>...] [RPM_REQUIRES ...]
#              [DEB_RECOMMENDS <package>...] [DEB_SUGGESTS <package>...] [EMBEDS <package>...]
#              [UNIT <unit of systemd>])
# BINARY: has programs or libraries, whose own dependencies are found. NEEDS: components of the same
# release that have to be there. EMBEDS: Debian packages of which the programs carry code in them,
# such as libraries of headers alone; their copyright statements go along. UNIT: what the
# administrator may enable; an upgrade restarts it, a removal stops it.
macro(kova_package component)
  cmake_parse_arguments(package "BINARY" "DEB;RPM;SECTION;DESCRIPTION;UNIT"
                        "NEEDS;DEB_DEPENDS;RPM_REQUIRES;DEB_RECOMMENDS;DEB_SUGGESTS;EMBEDS"
                        ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  foreach(needed IN LISTS package_NEEDS)
    string(TOUPPER ${needed} needed)
    list(APPEND package_DEB_DEPENDS "${CPACK_DEBIAN_${needed}_PACKAGE_NAME} (= ${PROJECT_VERSION})")
    list(APPEND package_RPM_REQUIRES "${CPACK_RPM_${needed}_PACKAGE_NAME} = ${PROJECT_VERSION}")
  endforeach()
  foreach(field DEPENDS RECOMMENDS SUGGESTS)
    list(JOIN package_DEB_${field} ", " CPACK_DEBIAN_${upper}_PACKAGE_${field})
  endforeach()
  list(JOIN package_RPM_REQUIRES ", " CPACK_RPM_${upper}_PACKAGE_REQUIRES)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package_DEB})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${package_SECTION})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ${package_BINARY})
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${package_DESCRIPTION}")
  if(package_UNIT)
    kova_unit_scripts(${upper})
  endif()
  set(CPACK_KOVA_${upper}_EMBEDS ${package_EMBEDS})
  set(CPACK_RPM_${upper}_PACKAGE_NAME ${package_RPM})
  string(FIND "${package_DESCRIPTION}" "\n" summary_end)
  string(SUBSTRING "${package_DESCRIPTION}" 0 ${summary_end} CPACK_RPM_${upper}_PACKAGE_SUMMARY)
  math(EXPR summary_end "${summary_end} + 1")
  string(SUBSTRING "${package_DESCRIPTION}" ${summary_end} -1
         CPACK_RPM_${upper}_PACKAGE_DESCRIPTION)
endmacro()

kova_package(runtime DEB kova-iot RPM kova-iot SECTION admin BINARY DESCRIPTION
"hardware-monitoring plug-in for an IoT agent
The KOVA IoT module is a shared library that an IoT device-management agent
loads. It tells the agent, in JSON, what a vehicle computer's PoE ports,
power and ignition controller, add-on board, accelerometer, memory modules
and smart battery report, and writes their settings.")
# The plug-in stands among the linker's default folders, whose index dpkg keeps.
file(WRITE ${PROJECT_BINARY_DIR}/install/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/install/triggers)

kova_package(dev DEB kova-iot-dev RPM kova-iot-devel SECTION libdevel NEEDS runtime
             DEB_DEPENDS libjansson-dev RPM_REQUIRES jansson-devel DEB_RECOMMENDS kova-iot-tools
             DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (development files)
Header, CMake and pkg-config files, guide and examples for programs that load
the KOVA IoT module.")

kova_package(tools DEB kova-iot-tools RPM kova-iot-tools SECTION utils BINARY NEEDS runtime
             DEB_SUGGESTS bash-completion UNIT kova-metrics.timer EMBEDS libcli11-dev
             libjs-dygraphs DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (command-line tool)
kovactl loads the KOVA IoT module as an agent does, and lists, reads, writes
and watches its items, records a machine and compares two. A simulated device
library lets both run on a machine without the hardware, and replays what was
recorded.")

kova_package(exporter DEB kova-iot-exporter RPM kova-iot-exporter SECTION net BINARY NEEDS runtime
             DEB_SUGGESTS kova-iot-tools UNIT kova-exporter.service EMBEDS libcli11-dev
             libjs-dygraphs DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (exporter)
kova-exporter loads the KOVA IoT module and serves what it reads over HTTP:
metrics for Prometheus, a live page with charts, and JSON. It listens on the
machine itself only unless told otherwise, and cannot write to the device.
Its systemd service is not enabled by the installation.")

include(CPack)
