# An overlay port: it builds the sources that it lies in, and downloads nothing.
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH sources)
cmake_path(GET sources PARENT_PATH sources)
cmake_path(GET sources PARENT_PATH SOURCE_PATH)

vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS -DXO_BUILD_TESTS=OFF -DXO_BUILD_EXAMPLES=OFF -DXO_INSTALL=ON)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME xoSystem CONFIG_PATH lib/cmake/xoSystem)
# vcpkg has a folder of debug libraries, where a file for pkg-config has the same name as the other.
set(debug_pc "${CURRENT_PACKAGES_DIR}/debug/lib/pkgconfig/xoSystem")
if(EXISTS "${debug_pc}d.pc")
  file(RENAME "${debug_pc}d.pc" "${debug_pc}.pc")
endif()
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()

# What the package has beside the library itself.
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
foreach(folder "${CURRENT_PACKAGES_DIR}" "${CURRENT_PACKAGES_DIR}/debug")
  file(REMOVE_RECURSE "${folder}/docs" "${folder}/examples")
  file(REMOVE "${folder}/README.md" "${folder}/CHANGELOG.md")
endforeach()
# vcpkg keeps the headers of one configuration, and the library needs the records of both.
file(GLOB records "${CURRENT_BUILDTREES_DIR}/${TARGET_TRIPLET}-dbg/include/xoSystem/xoBuilt*.h"
  "${CURRENT_BUILDTREES_DIR}/${TARGET_TRIPLET}-rel/include/xoSystem/xoBuilt*.h")
file(INSTALL ${records} DESTINATION "${CURRENT_PACKAGES_DIR}/include/xoSystem")
file(WRITE "${CURRENT_PACKAGES_DIR}/share/${PORT}/copyright" "No licence has been chosen yet; all rights are the owner's.\n")
