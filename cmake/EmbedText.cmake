# Builds text files into a program.
set(KOVA_EMBED_TEMPLATE ${CMAKE_CURRENT_LIST_DIR}/embedded_text.cpp.in)

# embed_text(TARGET NAMESPACE VARIABLE FILE): TARGET gets a source that defines
# `const std::string_view VARIABLE` in NAMESPACE, the content of FILE as it stands. Whoever uses it
# declares it `extern`. A change of FILE is seen by the next build.
function(embed_text target namespace variable file)
  get_filename_component(file ${file} ABSOLUTE)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} content)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${variable}.cpp)
  configure_file(${KOVA_EMBED_TEMPLATE} ${source} @ONLY)
  target_sources(${target} PRIVATE ${source})
endfunction()
