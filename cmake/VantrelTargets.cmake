# How every target of the project is compiled.

set(CMAKE_C_COMPILER_LAUNCHER "$ENV{CMAKE_CXX_COMPILER_LAUNCHER}" CACHE STRING "")

add_library(vantrel_options INTERFACE)
target_compile_options(vantrel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
if(VANTREL_WARNINGS_AS_ERRORS)
  target_compile_options(vantrel_options INTERFACE -Werror)
endif()
if(VANTREL_SANITIZE)
  target_compile_options(vantrel_options INTERFACE
    # The check of virtual tables asks by a pipe whether memory can be read, and cries where no descriptors are left.
    -fsanitize=${VANTREL_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(vantrel_options INTERFACE -fsanitize=${VANTREL_SANITIZE})
  # Programs with sanitizers are large, and the tests are many. With the thread sanitizer mold takes too much from archives.
  find_program(VANTREL_MOLD mold)
  if(VANTREL_MOLD AND NOT VANTREL_SANITIZE STREQUAL "thread")
    target_link_options(vantrel_options INTERFACE -fuse-ld=mold)
  endif()
endif()

# With VANTREL_UNITY several sources are compiled as one: a build from nothing takes less than half the time. Sources
# that use the same names for different things stay out by vantrel_by_themselves.
function(vantrel_together name)
  if(VANTREL_UNITY)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
  endif()
endfunction()
function(vantrel_by_themselves)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
# Tests put parts of their own in the place of these sources, so they must be members of their library by themselves.
function(vantrel_replaceable)
  if(VANTREL_TESTS)
    vantrel_by_themselves(${ARGN})
  endif()
endfunction()

# vantrel_library(NAME SOURCES...): a static library with the project's options.
function(vantrel_library name)
  add_library(${name} STATIC ${ARGN})
  target_link_libraries(${name} PUBLIC vantrel_options)
  vantrel_together(${name})
endfunction()

# vantrel_program(NAME SOURCES...): an executable with the project's options.
function(vantrel_program name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE vantrel_options)
  vantrel_together(${name})
endfunction()
