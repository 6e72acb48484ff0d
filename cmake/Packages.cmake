# Debian packages, one a component, made by scripts/package.sh: kova-iot has the plug-in,
# kova-iot-dev what host programmers need, kova-iot-tools kovactl and the simulator, kova-iot-exporter
# kova-exporter and its unit.
set(KOVA_MAINTAINER "KOVA IoT module maintainers <maintainers@kova-iot.invalid>" CACHE STRING
    "Maintainer of the Debian packages, name and address")

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime dev tools exporter)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KOVA_MAINTAINER})
# Each package has a summary of its own: the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                                                GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Adds to each package's tree what Debian asks for beside the installed files.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebianFiles.cmake)
set(CPACK_KOVA_CHANGELOG ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

# The plug-in stands among the linker's default folders, whose index dpkg keeps.
file(WRITE ${PROJECT_BINARY_DIR}/install/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/install/triggers)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME kova-iot)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"hardware-monitoring plug-in for an IoT agent
The KOVA IoT module is a shared library that an IoT device-management agent
loads. It tells the agent, in JSON, what a vehicle computer's PoE ports,
power and ignition controller, add-on board, accelerometer, memory modules
and smart battery report, and writes their settings.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME kova-iot-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "kova-iot (= ${PROJECT_VERSION}), libjansson-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS kova-iot-tools)
set(CPACK_DEBIAN_DEV_DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (development files)
Header, CMake and pkg-config files, guide and examples for programs that load
the KOVA IoT module.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kova-iot-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "kova-iot (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS bash-completion)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (command-line tool)
kovactl loads the KOVA IoT module as an agent does, and lists, reads, writes
and watches its items, records a machine and compares two. A simulated device
library lets both run on a machine without the hardware, and replays what was
recorded.")

set(CPACK_DEBIAN_EXPORTER_PACKAGE_NAME kova-iot-exporter)
set(CPACK_DEBIAN_EXPORTER_PACKAGE_SECTION net)
set(CPACK_DEBIAN_EXPORTER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_EXPORTER_PACKAGE_DEPENDS "kova-iot (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_EXPORTER_PACKAGE_SUGGESTS kova-iot-tools)
set(CPACK_DEBIAN_EXPORTER_DESCRIPTION
"hardware-monitoring plug-in for an IoT agent (exporter)
kova-exporter loads the KOVA IoT module and serves what it reads over HTTP:
metrics for Prometheus, a live page with charts, and JSON. It listens on the
machine itself only unless told otherwise, and cannot write to the device.
Its systemd service is not enabled by the installation.")

include(CPack)
