# Cross build for Windows x86-64 with clang 19, lld and the mingw-w64 headers of Debian's g++ (posix threads).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET ${triple})
set(CMAKE_CXX_COMPILER_TARGET ${triple})
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)

# -pthread brings in winpthreads, on which this libstdc++ stands; -fms-extensions gives __try and __except.
set(CMAKE_C_FLAGS_INIT "-pthread -fms-extensions")
set(CMAKE_CXX_FLAGS_INIT "-pthread -fms-extensions")
# CodeView is the one debug format whose PDB Windows tools (and Wine's DbgHelp) read with source lines.
set(CMAKE_C_FLAGS_DEBUG_INIT "-g -gcodeview")
set(CMAKE_CXX_FLAGS_DEBUG_INIT "-g -gcodeview")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g -gcodeview -DNDEBUG")
set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O2 -g -gcodeview -DNDEBUG")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -pthread -Wl,--gc-sections -Wno-unused-command-line-argument")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-test)
