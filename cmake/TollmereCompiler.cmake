# What every target of this project is compiled with: `target_link_libraries(X PRIVATE tollmere_compiler)`.

set(TOLLMERE_SANITIZE "" CACHE STRING "Value of -fsanitize for the whole build, or empty")

# The system's headers take most of the time of a build for Windows. One preset does without this, so that a missing
# include is seen.
option(TOLLMERE_PRECOMPILE "Compile the headers that most files of the program use once" ON)

add_library(tollmere_compiler INTERFACE)
target_include_directories(tollmere_compiler INTERFACE "${CMAKE_SOURCE_DIR}/src")
if(MSVC)
  target_compile_options(tollmere_compiler INTERFACE /W4 /WX /utf-8 /permissive-)
  # It warns of the standard's own text functions.
  target_compile_definitions(tollmere_compiler INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(tollmere_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Werror
    -ffunction-sections)
  # With mingw-w64 zeroed data in sections of its own would stand in the file, the read buffer's 64 KB above all.
  if(NOT WIN32)
    target_compile_options(tollmere_compiler INTERFACE -fdata-sections)
  endif()
  target_link_options(tollmere_compiler INTERFACE -Wl,--gc-sections)
endif()

# The sanitizers see the whole program only if the test framework is built with them too.
if(TOLLMERE_SANITIZE)
  add_compile_options(-fsanitize=${TOLLMERE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOLLMERE_SANITIZE})
endif()

if(WIN32)
  target_compile_definitions(tollmere_compiler INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
  if(NOT MSVC)
    # Static: no DLL of the compiler beside the program. No time stamp and no path of the machine: the same inputs give
    # the same bytes.
    add_link_options(-static -Wl,--no-insert-timestamp)
    add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
  endif()
endif()

# tollmere_split_symbols(TARGET): the program's debug symbols go to a file of their own beside it, which it names.
function(tollmere_split_symbols target)
  if(WIN32 AND NOT MSVC)
    set(symbols "$<TARGET_FILE:${target}>.debug")
    # By itself it would put in the time of day.
    set(objcopy "${CMAKE_COMMAND}" -E env SOURCE_DATE_EPOCH=315532800 "${CMAKE_OBJCOPY}")
    add_custom_command(TARGET ${target} POST_BUILD
      COMMAND ${objcopy} --only-keep-debug "$<TARGET_FILE:${target}>" "${symbols}"
      COMMAND ${objcopy} --strip-all "--add-gnu-debuglink=${symbols}" "$<TARGET_FILE:${target}>")
  endif()
endfunction()
