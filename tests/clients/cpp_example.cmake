# The C++ client's example, built with the installed package and with the two files copied beside it, and run as it stands:
#     cmake -D CLIENT=clients/cpp -D WORK=FOLDER -D HELPER=... -D STEAM=... -D GAME=... [-D EMULATOR=...] -P cpp_example.cmake -- OPTION...
# The options are those of a configure step: generator, compiler, toolchain.
cmake_minimum_required(VERSION 3.25)

foreach(i RANGE ${CMAKE_ARGC})
  if(seen_end)
    list(APPEND options "${CMAKE_ARGV${i}}")
  elseif("${CMAKE_ARGV${i}}" STREQUAL "--")
    set(seen_end TRUE)
  endif()
endforeach()
list(REMOVE_ITEM options "")

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# build(SOURCES FOLDER [OPTION...])
function(build sources folder)
  run("${CMAKE_COMMAND}" -S "${sources}" -B "${folder}" -D CMAKE_BUILD_TYPE=Release ${options} ${ARGN})
  run("${CMAKE_COMMAND}" --build "${folder}")
endfunction()

# play(FOLDER): the launcher that was built there, in the folder that the example speaks of.
function(play folder)
  file(COPY_FILE "${HELPER}" "${folder}/steam/tollmere_steam_helper.exe")
  file(COPY_FILE "${STEAM}" "${folder}/steam/steam_api64.dll")
  file(COPY_FILE "${GAME}" "${folder}/game/game.exe")
  set(ENV{SAMPLE_GAME_RECORD} "${folder}/record.json")
  execute_process(COMMAND ${EMULATOR} "${folder}/launcher${SUFFIX}" WORKING_DIRECTORY "${folder}"
    OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY COMMAND_ECHO STDOUT)
  if(NOT output MATCHES "^Ada plays as 76561197960287930, with a ticket of 20 bytes\r?\n$")
    message(FATAL_ERROR "It says: ${output}")
  endif()
  file(READ "${folder}/record.json" record)
  string(JSON argument GET "${record}" arguments 1)
  if(NOT argument STREQUAL "-windowed")
    message(FATAL_ERROR "The game got ${argument}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK}")
foreach(folder IN ITEMS pipes data found/steam found/game copied/steam copied/game source)
  file(MAKE_DIRECTORY "${WORK}/${folder}")
endforeach()
set(ENV{STEAM_STAND_IN_PERSONA} Ada)
set(ENV{TOLLMERE_PIPE_DIR} "${WORK}/pipes")
set(ENV{TOLLMERE_PROGRAM_DATA} "${WORK}/data")
set(ENV{TOLLMERE_LOCAL_APP_DATA} "${WORK}/data")

build("${CLIENT}" "${WORK}/client")
run("${CMAKE_COMMAND}" --install "${WORK}/client" --prefix "${WORK}/installed")
build("${CLIENT}/example" "${WORK}/found" -D "CMAKE_PREFIX_PATH=${WORK}/installed")
play("${WORK}/found")

file(COPY "${CLIENT}/example/main.cpp" "${CLIENT}/tollmere_launcher_client.cpp" "${CLIENT}/tollmere_launcher_client.h"
  DESTINATION "${WORK}/source")
file(WRITE "${WORK}/source/CMakeLists.txt" "
cmake_minimum_required(VERSION 3.21)
project(launcher LANGUAGES CXX)
add_executable(launcher main.cpp tollmere_launcher_client.cpp)
target_include_directories(launcher PRIVATE .)
target_compile_features(launcher PRIVATE cxx_std_20)
")
build("${WORK}/source" "${WORK}/copied")
play("${WORK}/copied")

# The page shows the example as it is built here.
file(READ "${CLIENT}/README.md" page)
file(READ "${CLIENT}/example/main.cpp" example)
string(FIND "${page}" "```cpp\n${example}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md shows another example than example/main.cpp")
endif()
