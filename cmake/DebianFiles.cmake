# Run by CPack before it packs: adds the copyright statement and the changelog, which every Debian
# package has, and compresses changelogs and manual pages.
cmake_minimum_required(VERSION 3.25)

# From CHANGELOG.md to the form of deb-changelog(5): releases newest first, their points indented.
function(read_changelog maintainer output)
  file(READ ${CPACK_KOVA_CHANGELOG} text)
  # Neither brackets nor semicolons of the text are CMake's.
  string(REPLACE ";" "," text "${text}")
  string(REPLACE "[" "" text "${text}")
  string(REPLACE "]" "" text "${text}")
  string(REPLACE "\n" ";" lines "${text}")
  set(changelog "")
  set(signature "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^## ([0-9.]+) - ([0-9-]+)$")
      set(version ${CMAKE_MATCH_1})
      execute_process(COMMAND date --utc --rfc-email --date=${CMAKE_MATCH_2} OUTPUT_VARIABLE date
                      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
      if(changelog STREQUAL "" AND NOT version VERSION_EQUAL CPACK_PACKAGE_VERSION)
        message(FATAL_ERROR "CHANGELOG.md: newest release ${version}, not ${CPACK_PACKAGE_VERSION}")
      endif()
      string(APPEND changelog "${signature}@PACKAGE@ (${version}) unstable; urgency=medium\n\n")
      set(signature "\n -- ${maintainer}  ${date}\n\n")
    elseif(signature AND line MATCHES "^- (.*)$")
      string(APPEND changelog "  * ${CMAKE_MATCH_1}\n")
    elseif(signature AND line MATCHES "^  (.*)$")
      string(APPEND changelog "    ${CMAKE_MATCH_1}\n")
    endif()
  endforeach()
  if(changelog STREQUAL "")
    message(FATAL_ERROR "CHANGELOG.md: no release found")
  endif()
  string(STRIP "${signature}" signature)
  set(${output} "${changelog}\n ${signature}\n" PARENT_SCOPE)
endfunction()

function(compress)
  # Without a time stamp, so that two builds of one release agree.
  execute_process(COMMAND gzip -9 --no-name --force ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What lintian warns of and is meant: a plug-in that agents load by its plain name has no version
# in it; and cpack calls ldconfig in scripts, where the trigger would do.
set(overrides "kova-iot: shared-library-lacks-version
kova-iot: package-name-doesnt-match-sonames
kova-iot: maintscript-calls-ldconfig
")

read_changelog("${CPACK_PACKAGE_CONTACT}" changelog)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
  set(documents ${tree}/share/doc/${package})
  if(NOT IS_DIRECTORY ${tree})
    message(FATAL_ERROR "no installed files of the component ${component} in ${tree}")
  endif()

  file(WRITE ${documents}/copyright
"KOVA IoT module, packaged from its own source tree.

Copyright (C) 2026 the maintainers of the KOVA IoT module
All rights reserved.
")
  string(REPLACE "@PACKAGE@" "${package}" text "${changelog}")
  file(WRITE ${documents}/changelog "${text}")
  compress(${documents}/changelog)
  file(GLOB manuals ${tree}/share/man/man*/*.[0-9])
  foreach(manual IN LISTS manuals)
    compress(${manual})
  endforeach()
endforeach()
file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/runtime${CPACK_PACKAGING_INSTALL_PREFIX}/share/lintian/overrides/kova-iot
     "${overrides}")
