# Rooms of the host library: folders that are libraries of their own and build on each other.
#   kova_room(NAME BUILDS_ON ROOM... SOURCES FILE... [LIBRARIES TARGET...]): the folder NAME below
# this one, as the library kova_host_NAME. What includes a header of a room that it does not build
# on, directly or through others, is not compiled.
set(KOVA_ROOM_CHECK ${CMAKE_CURRENT_LIST_DIR}/check_room.cmake)

function(kova_room name)
  cmake_parse_arguments(room "" "" "BUILDS_ON;SOURCES;LIBRARIES" ${ARGN})
  set(target kova_host_${name})
  list(TRANSFORM room_SOURCES PREPEND ${name}/)
  add_library(${target} STATIC ${room_SOURCES})
  target_link_libraries(${target} PUBLIC kova_options ${room_LIBRARIES})
  # Programs read what strangers send: the standard library's own checks end one that has lost its
  # bounds. They reach whatever links a room, and so not the module.
  target_compile_definitions(${target} PUBLIC _GLIBCXX_ASSERTIONS)

  set(reachable ${name})
  foreach(other IN LISTS room_BUILDS_ON)
    target_link_libraries(${target} PUBLIC kova_host_${other})
    get_target_property(beyond kova_host_${other} KOVA_REACHABLE_ROOMS)
    list(APPEND reachable ${beyond})
  endforeach()
  list(REMOVE_DUPLICATES reachable)
  set_target_properties(${target} PROPERTIES KOVA_REACHABLE_ROOMS "${reachable}")

  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.h)
  list(TRANSFORM room_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${name}.includes)
  add_custom_command(OUTPUT ${stamp}
                     COMMAND ${CMAKE_COMMAND} -D "room=${name}" -D "reachable=${reachable}"
                             -D "files=${room_SOURCES};${headers}" -D "stamp=${stamp}"
                             -P ${KOVA_ROOM_CHECK}
                     DEPENDS ${room_SOURCES} ${headers} ${KOVA_ROOM_CHECK}
                     COMMENT "Looking at what the room ${name} includes"
                     VERBATIM)
  add_custom_target(${target}_includes DEPENDS ${stamp})
  add_dependencies(${target} ${target}_includes)
endfunction()
