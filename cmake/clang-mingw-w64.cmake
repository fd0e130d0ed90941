# Builds Windows programs from Linux, by clang and lld on mingw-w64's headers and libraries, and runs them with Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_C_COMPILER_TARGET ${triple})
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET ${triple})
set(CMAKE_RC_COMPILER ${triple}-windres)

# The C++ library is that of g++ with POSIX threads, because the other thread model has no std::thread. clang doesn't
# find its folder by itself. That library keeps its thread-local data the emulated way, holds the comparison of type_info
# itself and needs the POSIX threads.
set(gcc_folder /usr/lib/gcc/${triple}/12-posix)
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${gcc_folder}/include/c++ ${gcc_folder}/include/c++/${triple})
set(CMAKE_CXX_FLAGS_INIT "-femulated-tls -D__GXX_TYPEINFO_EQUALITY_INLINE=0")
foreach(kind IN ITEMS EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -L${gcc_folder} -pthread")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine")
