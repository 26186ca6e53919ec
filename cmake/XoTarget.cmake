# What every program and library of this project is built with; none of it reaches a consumer.

add_library(xoWarnings INTERFACE)
if(MSVC)
  target_compile_options(xoWarnings INTERFACE /W4 /WX /permissive-)
  # C4996 recommends functions that only this C runtime has.
  target_compile_definitions(xoWarnings INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(xoWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wshadow        # a hidden name is a wrong name sooner or later
    -Wconversion    # 64-bit sizes meet 32-bit Windows interfaces everywhere here
    -Wno-language-extension-token  # __try and __int64 come from the platform
    -Wdate-time)    # the same sources give the same bytes
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang") # clang-cl as well
  target_compile_options(xoWarnings INTERFACE -Wthread-safety)
endif()

# For tests, which find the library's module by the name of its file: a debug build for Visual Studio has another name.
add_library(xoLibraryFile INTERFACE)
target_compile_definitions(xoLibraryFile INTERFACE
  $<$<STREQUAL:$<TARGET_PROPERTY:xoSystem,TYPE>,SHARED_LIBRARY>:XO_LIBRARY_FILE="$<TARGET_FILE_NAME:xoSystem>">)

# Gives a program or library the project's language level, warnings, Windows target and, beside it, its PDB.
function(xo_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL SHARED_LIBRARY)
    set_target_properties(${target} PROPERTIES PREFIX "") # xoSystem.dll, whatever the toolchain's habit
  endif()
  target_compile_definitions(${target} PRIVATE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0A00 _WIN32_WINNT=0x0A00)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:xoWarnings>)
  if(MSVC)
    xo_use_msvc_settings(${target})
  else()
    xo_build_the_same_bytes(${target})
    target_link_options(${target} PRIVATE
      -Wl,--pdb= # beside the program, under its name
      -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
  endif()
endfunction()

# What cl and clang-cl need beyond their defaults, and link.exe and lld-link.
function(xo_use_msvc_settings target)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:
    /utf-8            # sources and literals, whatever the machine's code page
    /EHsc             # under /EHa, catch (...) would take processor faults before the fault guard's filter sees them
    /Zc:__cplusplus /Zc:inline>)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "MSVC")
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/MP>)
  endif()
  # Crash reports need the PDB in every configuration, and the names of functions instead of those of the thunks of an
  # incremental link. /DEBUG alone would switch off what makes the program small.
  target_link_options(${target} PRIVATE /DEBUG /INCREMENTAL:NO $<$<NOT:$<CONFIG:Debug>>:/OPT:REF,ICF>)
endfunction()

# Neither the time nor a folder of this machine is in what is built: sources lie in /xoSystem wherever they were, a
# hash stands where a time stamp would, and a program looks for its PDB beside itself.
function(xo_build_the_same_bytes target)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=/xoSystem
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=/xoSystem/build
    -ffile-compilation-dir=. -gno-codeview-command-line>)
  target_link_options(${target} PRIVATE
    -Wl,-Xlink=-Brepro -Wl,-Xlink=-pdbsourcepath:/xoSystem -Wl,-Xlink=-pdbaltpath:%_PDB%)
endfunction()

# The C++ runtime is shared between the DLL and its hosts, so that exceptions and streams cross the border. Windows
# looks for it beside the program.
function(xo_find_runtime_dlls out)
  set(paths "")
  if(MSVC)
    return()
  endif()
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND x86_64-w64-mingw32-g++-posix -print-file-name=${dll}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      set(path /usr/x86_64-w64-mingw32/lib/${dll})
    endif()
    if(NOT EXISTS "${path}")
      message(FATAL_ERROR "The C++ runtime ${dll} is missing; install g++-mingw-w64-x86-64-posix.")
    endif()
    list(APPEND paths ${path})
  endforeach()
  set(${out} ${paths} PARENT_SCOPE)
endfunction()

function(xo_place_runtime_dlls folder)
  xo_find_runtime_dlls(paths)
  file(COPY ${paths} DESTINATION ${folder})
endfunction()
