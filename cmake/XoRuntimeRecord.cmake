# Writes how the library is built into a header that a host includes with every other one: xoExport.h compares it with
# the host's own settings. A host with another C++ runtime or another layout of standard types would corrupt memory.
#
# Debug and release libraries lie side by side in one installation, so each has a header of its own.
if(NOT MSVC)
  return()
endif()

set(XO_ITERATOR_DEBUG_LEVEL "" CACHE STRING
  "_ITERATOR_DEBUG_LEVEL that the compiler's flags set; empty: 2 with a debug runtime, 0 otherwise")

set(runtime "$<TARGET_GENEX_EVAL:xoSystem,$<TARGET_PROPERTY:xoSystem,MSVC_RUNTIME_LIBRARY>>")
set(uses_dll "$<OR:$<STREQUAL:${runtime},>,$<IN_LIST:${runtime},MultiThreadedDLL;MultiThreadedDebugDLL>>")
set(is_debug "$<OR:$<AND:$<STREQUAL:${runtime},>,$<CONFIG:Debug>>,$<IN_LIST:${runtime},MultiThreadedDebug;MultiThreadedDebugDLL>>")
set(level "${XO_ITERATOR_DEBUG_LEVEL}")
if(level STREQUAL "")
  set(level "$<IF:${is_debug},2,0>")
endif()

set(xo_runtime_record "${PROJECT_BINARY_DIR}/include/xoSystem/xoBuilt$<IF:${is_debug},Debug,Release>.h")
file(GENERATE OUTPUT "${xo_runtime_record}" CONTENT "// Made by CMake: how the library beside this header was built. xoExport.h reads it.
#define XOSYSTEM_BUILT_WITH_RUNTIME_DLL ${uses_dll}
#define XOSYSTEM_BUILT_WITH_ITERATOR_DEBUG_LEVEL ${level}
#define XOSYSTEM_BUILT_STATIC $<STREQUAL:$<TARGET_PROPERTY:xoSystem,TYPE>,STATIC_LIBRARY>
")
target_include_directories(xoSystem PUBLIC $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
