# The libraries that we are compared with. Those that have to be compiled are compiled here, from the distribution's
# sources, so that they get the same compiler and the same target as the program.

set(TOLLMERE_PEER_SOURCES "${CMAKE_SOURCE_DIR}/build/peers" CACHE PATH
  "The unpacked source packages benchmark, libuv1 and simdjson; scripts/bench fetches them")

set(BENCHMARK_ENABLE_TESTING OFF CACHE BOOL "")
set(BENCHMARK_ENABLE_INSTALL OFF CACHE BOOL "")
set(BENCHMARK_ENABLE_WERROR OFF CACHE BOOL "")
set(GIT_VERSION 1.7.1)  # the package has no history to find it in
add_subdirectory("${TOLLMERE_PEER_SOURCES}/benchmark" benchmark EXCLUDE_FROM_ALL SYSTEM)

enable_language(C)
set(LIBUV_BUILD_TESTS OFF CACHE BOOL "")
add_subdirectory("${TOLLMERE_PEER_SOURCES}/libuv1" libuv EXCLUDE_FROM_ALL SYSTEM)

add_library(simdjson STATIC EXCLUDE_FROM_ALL "${TOLLMERE_PEER_SOURCES}/simdjson/singleheader/simdjson.cpp")
target_include_directories(simdjson SYSTEM PUBLIC "${TOLLMERE_PEER_SOURCES}/simdjson/singleheader")

# They deserve their best, whatever our own program is compiled for.
target_compile_options(uv_a PRIVATE -O2 -w)
# Nearly every processor has these instructions, and the user of such a library would ask for them.
target_compile_options(simdjson PUBLIC -msse4.2 -mpclmul PRIVATE -O2 -w)
target_compile_definitions(simdjson PUBLIC SIMDJSON_BUILTIN_IMPLEMENTATION=westmere)

include("${CMAKE_SOURCE_DIR}/tools/header_library.cmake")
tollmere_header_library(asio boost libboost-dev)
target_compile_definitions(asio INTERFACE BOOST_ASIO_HEADER_ONLY BOOST_ERROR_CODE_HEADER_ONLY BOOST_ALL_NO_LIB)
if(WIN32)
  target_link_libraries(asio INTERFACE ws2_32 mswsock)
else()
  target_link_libraries(asio INTERFACE Threads::Threads)
endif()
tollmere_header_library(rapidjson rapidjson rapidjson-dev)
target_compile_definitions(rapidjson INTERFACE RAPIDJSON_SSE42)
tollmere_header_library(fmt fmt libfmt-dev)
tollmere_header_library(spdlog spdlog libspdlog-dev)
target_compile_definitions(fmt INTERFACE FMT_HEADER_ONLY)
target_compile_definitions(spdlog INTERFACE SPDLOG_FMT_EXTERNAL)
target_link_libraries(spdlog INTERFACE fmt Threads::Threads)
