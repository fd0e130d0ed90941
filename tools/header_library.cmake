# tollmere_header_library(TARGET FOLDER PACKAGE): a library of headers alone, from the distribution's package, for the tools.
#
# Its folder is linked into one of our own: as an include path /usr/include would give a cross build the wrong C library.
function(tollmere_header_library target folder package)
  find_path(${target}_headers "${folder}" PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED
    DOC "Where ${package} keeps its headers")
  set(include_path "${CMAKE_CURRENT_BINARY_DIR}/${target}")
  file(MAKE_DIRECTORY "${include_path}")
  file(CREATE_LINK "${${target}_headers}/${folder}" "${include_path}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE "${include_path}")
endfunction()
