# Run by CPack before it packs: adds the copyright statement, which every package has, and the
# changelog in the form that the packages' system wants, and compresses what it has compressed.
cmake_minimum_required(VERSION 3.25)

# The releases of CHANGELOG.md in the form of deb-changelog(5), for any package, or of an RPM's spec:
# newest first.
function(read_changelog system maintainer output)
  file(READ ${CPACK_KOVA_CHANGELOG} text)
  # Neither brackets nor semicolons of the text are CMake's.
  string(REPLACE ";" "," text "${text}")
  string(REPLACE "[" "" text "${text}")
  string(REPLACE "]" "" text "${text}")
  string(REPLACE "\n" ";" lines "${text}")
  set(changelog "")
  set(signature "")
  set(in_release FALSE)
  foreach(line IN LISTS lines)
    if(line MATCHES "^## ([0-9.]+) - ([0-9-]+)$")
      set(version ${CMAKE_MATCH_1})
      set(date_form --rfc-email)
      if(system STREQUAL RPM)
        set(date_form "+%a %b %d %Y")
      endif()
      # Each entry has to be newer than the one below it: releases of one day are as many hours,
      # minutes and seconds into it as their number says.
      set(day ${CMAKE_MATCH_2})
      string(REPLACE "." ":" time ${version})
      execute_process(COMMAND ${CMAKE_COMMAND} -E env LC_ALL=C
                              date --utc "--date=${day} ${time}" ${date_form}
                      OUTPUT_VARIABLE date
                      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
      if(NOT in_release AND NOT version VERSION_EQUAL CPACK_PACKAGE_VERSION)
        message(FATAL_ERROR "CHANGELOG.md: newest release ${version}, not ${CPACK_PACKAGE_VERSION}")
      endif()
      set(in_release TRUE)
      string(APPEND changelog "${signature}")
      if(system STREQUAL RPM)
        string(APPEND changelog "* ${date} ${maintainer} - ${version}-1\n")
        set(signature "\n")
      else()
        string(APPEND changelog "@PACKAGE@ (${version}) unstable; urgency=medium\n\n")
        set(signature "\n -- ${maintainer}  ${date}\n\n")
      endif()
    elseif(in_release AND line MATCHES "^- (.*)$")
      if(system STREQUAL RPM)
        string(APPEND changelog "- ${CMAKE_MATCH_1}\n")
      else()
        string(APPEND changelog "  * ${CMAKE_MATCH_1}\n")
      endif()
    elseif(in_release AND line MATCHES "^  (.*)$")
      string(APPEND changelog "    ${CMAKE_MATCH_1}\n")
    endif()
  endforeach()
  if(NOT in_release)
    message(FATAL_ERROR "CHANGELOG.md: no release found")
  endif()
  string(STRIP "${signature}" signature)
  if(signature)
    string(APPEND changelog "\n ${signature}\n")
  endif()
  set(${output} "${changelog}" PARENT_SCOPE)
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

read_changelog(${CPACK_GENERATOR} "${CPACK_PACKAGE_CONTACT}" changelog)
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
  # scripts/sbom.py reads the first line of each as well.
  foreach(embedded IN LISTS CPACK_KOVA_${upper}_EMBEDS)
    execute_process(COMMAND dpkg-query --show "--showformat=\${Version}" ${embedded}
                    OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
    file(READ /usr/share/doc/${embedded}/copyright statement)
    file(APPEND ${documents}/copyright "
The programs contain ${embedded} ${version}, with this statement of its own:

${statement}")
  endforeach()
  if(CPACK_GENERATOR STREQUAL DEB)
    string(REPLACE "@PACKAGE@" "${package}" text "${changelog}")
    file(WRITE ${documents}/changelog "${text}")
    compress(${documents}/changelog)
  endif()
  file(GLOB manuals ${tree}/share/man/man*/*.[0-9])
  foreach(manual IN LISTS manuals)
    compress(${manual})
  endforeach()
endforeach()
if(CPACK_GENERATOR STREQUAL DEB)
  file(WRITE ${CPACK_TEMPORARY_DIRECTORY}/runtime${CPACK_PACKAGING_INSTALL_PREFIX}/share/lintian/overrides/kova-iot
       "${overrides}")
else()
  file(WRITE ${CPACK_RPM_CHANGELOG_FILE} "${changelog}")
endif()

# Two builds of one commit agree on the time of every file.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec
                          touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
                  COMMAND_ERROR_IS_FATAL ANY)
endif()
