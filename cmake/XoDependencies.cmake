# What the library and its tests take from others. A package that find_package sees comes first, as a vcpkg manifest or a
# folder in CMAKE_PREFIX_PATH provides it; Debian's folders come last. The cross build's root has no packages.

# Sets UTF8CPP_INCLUDE_DIR, the folder of utf8.h.
macro(xo_find_utfcpp)
  if(NOT UTF8CPP_INCLUDE_DIR)
    find_package(utf8cpp CONFIG QUIET)
    foreach(target utf8cpp::utf8cpp utf8::cpp utf8cpp)
      if(TARGET ${target} AND NOT UTF8CPP_INCLUDE_DIR)
        get_target_property(UTF8CPP_INCLUDE_DIR ${target} INTERFACE_INCLUDE_DIRECTORIES)
      endif()
    endforeach()
  endif()
  # Debian's folder by its name: /usr/include as a whole must not come into a cross build.
  find_path(UTF8CPP_INCLUDE_DIR utf8.h PATHS /usr/include/utf8cpp NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  find_path(UTF8CPP_INCLUDE_DIR utf8.h PATH_SUFFIXES utf8cpp DOC "Folder of utfcpp's utf8.h")
  if(NOT UTF8CPP_INCLUDE_DIR)
    message(FATAL_ERROR "utfcpp is missing. Use a preset that reads vcpkg.json, or name the folder of utf8.h by "
      "UTF8CPP_INCLUDE_DIR.")
  endif()
endmacro()

# Gives the targets GTest::gtest, GTest::gtest_main and GTest::gmock.
macro(xo_find_googletest)
  if(NOT TARGET GTest::gtest_main)
    find_package(GTest CONFIG QUIET)
  endif()
  if(NOT TARGET GTest::gtest_main)
    set(XO_GOOGLETEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources, where find_package finds none")
    if(NOT EXISTS "${XO_GOOGLETEST_SOURCES}/CMakeLists.txt")
      message(FATAL_ERROR "GoogleTest is missing. Use a preset that reads vcpkg.json, name the folder of its sources by "
        "XO_GOOGLETEST_SOURCES, or switch XO_BUILD_TESTS off.")
    endif()
    set(CMAKE_POLICY_DEFAULT_CMP0077 NEW) # its options are variables
    set(gtest_force_shared_crt ON)
    if(MSVC)
      # The Microsoft-ABI build cannot link CMake's test programs, so CMake's search would report pthreads as present.
      set(gtest_disable_pthreads ON)
    endif()
    set(INSTALL_GTEST OFF)
    add_subdirectory("${XO_GOOGLETEST_SOURCES}" ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  endif()
endmacro()
