# What 'cmake --install' places: a folder that other projects take the library from, wherever it is moved to.
include(CMakePackageConfigHelpers)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/xoSystem)
get_target_property(library_type xoSystem TYPE)

install(TARGETS xoSystem EXPORT xoSystemTargets)
install(EXPORT xoSystemTargets NAMESPACE xoSystem:: DESTINATION ${config_folder})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/xoSystem TYPE INCLUDE FILES_MATCHING PATTERN "*.h")
if(MSVC)
  install(FILES "${xo_runtime_record}" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/xoSystem)
endif()
if(library_type STREQUAL SHARED_LIBRARY)
  install(FILES $<TARGET_FILE_DIR:xoSystem>/$<TARGET_FILE_BASE_NAME:xoSystem>.pdb TYPE BIN)
endif()
xo_find_runtime_dlls(runtime_dlls)
install(PROGRAMS ${runtime_dlls} TYPE BIN)

configure_package_config_file(${packaging}/xoSystemConfig.cmake.in ${PROJECT_BINARY_DIR}/xoSystemConfig.cmake
  INSTALL_DESTINATION ${config_folder} PATH_VARS CMAKE_INSTALL_BINDIR NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/xoSystemConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/xoSystemConfig.cmake ${PROJECT_BINARY_DIR}/xoSystemConfigVersion.cmake
  DESTINATION ${config_folder})

# pkg-config cannot express what a static build needs, so these lists come from the CMake target. The file is named after
# the library: a debug build for Visual Studio is installed beside the optimised one.
set(pc_flags "")
set(pc_libraries "")
if(NOT MSVC)
  set(pc_libraries -pthread) # the headers use what this C++ runtime builds on winpthreads
endif()
if(NOT library_type STREQUAL SHARED_LIBRARY)
  set(pc_flags "-DXOSYSTEM_STATIC")
  get_target_property(linked xoSystem LINK_LIBRARIES)
  list(FILTER linked EXCLUDE REGEX "[$:]")
  list(TRANSFORM linked PREPEND "-l")
  list(APPEND pc_libraries ${linked})
endif()
string(JOIN " " pc_libraries ${pc_libraries})
configure_file(${packaging}/xoSystem.pc.in ${PROJECT_BINARY_DIR}/xoSystem.pc.in @ONLY)
set(pc_file ${PROJECT_BINARY_DIR}/pkgconfig/$<TARGET_LINKER_FILE_BASE_NAME:xoSystem>.pc)
file(GENERATE OUTPUT ${pc_file} INPUT ${PROJECT_BINARY_DIR}/xoSystem.pc.in)
install(FILES ${pc_file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION .)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION . FILES_MATCHING PATTERN "*.md")
install(DIRECTORY ${packaging}/natvis TYPE DATA FILES_MATCHING PATTERN "*.natvis")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples ${packaging}/examples DESTINATION .)
