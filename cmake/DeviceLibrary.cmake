# Libraries that stand in for the device library: under the file name of the real one as their
# SONAME. Once such a library is in a process, the dynamic linker answers a later dlopen() of that
# absolute path with it, so a host's loading code runs unchanged.
#   kova_name_device_library(TARGET): gives TARGET that name.
#   kova_device_library(TARGET EXPORT_LIST COMPONENT): gives TARGET that name and these exports alone,
# and installs it with COMPONENT in a private folder, since under its name it would stand in for
# every program.
function(kova_name_device_library target)
  target_link_options(${target} PRIVATE -Wl,-soname,/usr/lib/libKOVADevice.so)
  set_target_properties(${target} PROPERTIES NO_SONAME ON)
endfunction()

function(kova_device_library target exports component)
  kova_name_device_library(${target})
  target_link_options(${target} PRIVATE -Wl,--version-script=${exports})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports}
                                             CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/kova-iot
          COMPONENT ${component})
endfunction()
