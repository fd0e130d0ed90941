# What a program says of itself: the version of project() and, if it is built from a clone, the commit.

set(TOLLMERE_COMMIT "" CACHE STRING "The commit that the programs name; if it is empty, each build asks git")

# At each build, because a commit and a change of a file don't configure anew. The header is written only if it becomes
# another one, so that nothing is compiled for the same commit.
set(folder "${CMAKE_BINARY_DIR}/version")
add_custom_target(tollmere_version_header
  COMMAND "${CMAKE_COMMAND}" -D VERSION=${PROJECT_VERSION} -D "COMMIT=${TOLLMERE_COMMIT}" -D "SOURCES=${CMAKE_SOURCE_DIR}"
    -D "HEADER=${folder}/tollmere_version.h" -P "${CMAKE_SOURCE_DIR}/cmake/write_version.cmake"
  BYPRODUCTS "${folder}/tollmere_version.h"
  COMMENT "Asking git for the commit"
  VERBATIM)
add_library(tollmere_version INTERFACE)
target_include_directories(tollmere_version INTERFACE "${folder}")
add_dependencies(tollmere_version tollmere_version_header)

# tollmere_add_version(TARGET DESCRIPTION): the version resource of a Windows program.
function(tollmere_add_version target description)
  if(WIN32)
    set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc")
    configure_file("${CMAKE_SOURCE_DIR}/cmake/version.rc.in" "${resource}" @ONLY)
    target_sources(${target} PRIVATE "${resource}")
    target_link_libraries(${target} PRIVATE tollmere_version)
    set_source_files_properties("${resource}" PROPERTIES
      OBJECT_DEPENDS "${CMAKE_BINARY_DIR}/version/tollmere_version.h")
  endif()
endfunction()
