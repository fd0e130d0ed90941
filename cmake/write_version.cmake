# cmake -D VERSION=1.2.3 -D COMMIT=HASH -D SOURCES=FOLDER -D HEADER=FILE -P write_version.cmake
#
# Without COMMIT git tells it, with `-dirty` behind it if a file of the clone is changed. Where there is no clone, or no
# git, the version stands alone.

cmake_minimum_required(VERSION 3.25)
if(NOT COMMIT AND EXISTS "${SOURCES}/.git")
  execute_process(
    COMMAND git --no-optional-locks describe --always --dirty --abbrev=12 --exclude=*
    WORKING_DIRECTORY "${SOURCES}"
    OUTPUT_VARIABLE COMMIT
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET)
endif()
if(COMMIT)
  string(APPEND VERSION "+${COMMIT}")
endif()
file(CONFIGURE OUTPUT "${HEADER}" CONTENT "#define TOLLMERE_VERSION \"@VERSION@\"\n" @ONLY)
