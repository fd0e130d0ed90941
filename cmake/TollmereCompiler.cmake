# What every target of this project is compiled with: `target_link_libraries(X PRIVATE tollmere_compiler)`.

set(TOLLMERE_SANITIZE "" CACHE STRING "Value of -fsanitize for the whole build, or empty")

# The system's headers take most of the time of a build for Windows. One preset does without this, so that a missing
# include is seen.
option(TOLLMERE_PRECOMPILE "Compile the headers that most files of the program use once" ON)

add_library(tollmere_compiler INTERFACE)
target_include_directories(tollmere_compiler INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_compile_options(tollmere_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Werror
  -ffunction-sections)
# With mingw-w64 zeroed data in sections of its own would stand in the file, the read buffer's 64 KB above all.
if(NOT WIN32)
  target_compile_options(tollmere_compiler INTERFACE -fdata-sections)
endif()
target_link_options(tollmere_compiler INTERFACE -Wl,--gc-sections)

# The sanitizers see the whole program only if the test framework is built with them too.
if(TOLLMERE_SANITIZE)
  add_compile_options(-fsanitize=${TOLLMERE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOLLMERE_SANITIZE})
endif()

if(WIN32)
  target_compile_definitions(tollmere_compiler INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
  # Static: no DLL of the compiler beside the program. No time stamp and no path of the machine: the same inputs give
  # the same bytes.
  add_link_options(-static -Wl,--no-insert-timestamp)
  add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=." -ffile-prefix-map=/usr/= -fdebug-compilation-dir=.)
endif()

# tollmere_keep_symbols(): what the calling folder compiles can stand in a PDB. The linker generates the code, because the
# compiler would put its own command line, with paths of the machine, into each object file.
macro(tollmere_keep_symbols)
  if(WIN32)
    add_compile_options(-g -gcodeview -flto)
  endif()
endmacro()

# tollmere_add_symbols(TARGET): a PDB beside the program, which names it without a folder. Both hold the same GUID, by which
# debuggers and symbol servers find the PDB. What the system's libraries bring along of another form is stripped.
function(tollmere_add_symbols target)
  if(WIN32)
    target_link_options(${target} PRIVATE
      LINKER:--pdb= "LINKER:-Xlink=-pdbaltpath:$<TARGET_FILE_BASE_NAME:${target}>.pdb" LINKER:-Xlink=-pdbsourcepath:.)
    # By itself strip would put in the time of day.
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=315532800 "${CMAKE_STRIP}" "$<TARGET_FILE:${target}>")
    set_property(TARGET ${target} APPEND PROPERTY
      ADDITIONAL_CLEAN_FILES "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/$<TARGET_FILE_BASE_NAME:${target}>.pdb")
  endif()
endfunction()
