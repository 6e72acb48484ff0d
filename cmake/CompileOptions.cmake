# Warnings, hardening, sanitizers and coverage, gathered in one interface target that every
# target of the project links: kova_options.
add_library(kova_options INTERFACE)
target_include_directories(kova_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kova_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 takes joined strings for overlapping copies.
  target_compile_options(kova_options INTERFACE -Wno-restrict)
endif()
if(KOVA_WARNINGS_AS_ERRORS)
  target_compile_options(kova_options INTERFACE -Werror)
endif()

# The module runs inside somebody else's process: it is built as a hardened binary always.
target_compile_options(kova_options INTERFACE -fstack-protector-strong -fcf-protection=full
                                              -fstack-clash-protection)
target_link_options(kova_options INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text)

# What is shipped tells nothing of the folder it was built in.
target_compile_options(kova_options INTERFACE
                       $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)

if(KOVA_SANITIZE)
  target_compile_options(kova_options INTERFACE -fsanitize=address,undefined
                         -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kova_options INTERFACE -fsanitize=address,undefined)
else()
  # _FORTIFY_SOURCE needs optimisation, and hides calls from AddressSanitizer.
  target_compile_options(kova_options INTERFACE
                         $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()

if(KOVA_SANITIZE_THREADS)
  target_compile_options(kova_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(kova_options INTERFACE -fsanitize=thread)
endif()

if(KOVA_COVERAGE)
  # A function that is made part of its callers would be counted once for each of them.
  target_compile_definitions(kova_options INTERFACE always_inline=unused)
  target_compile_options(kova_options INTERFACE --coverage -fprofile-abs-path -fprofile-update=atomic)
  target_link_options(kova_options INTERFACE --coverage)
endif()

if(KOVA_BUILD_FUZZERS)
  # The module's objects carry the coverage hooks; only a fuzz target links the driver.
  target_compile_options(kova_options INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(kova_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
