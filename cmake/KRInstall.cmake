# Install rules: the libraries, their public headers in their folders, and a package for find_package().
#
# A header is public unless cmake/private-headers.txt names it; tools/check-includes reads the same list.
include(CMakePackageConfigHelpers)

set(KR_PACKAGE_FOLDER "${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME}")
set(KR_PRIVATE_HEADERS_FILE "${PROJECT_SOURCE_DIR}/cmake/private-headers.txt")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${KR_PRIVATE_HEADERS_FILE}")
file(STRINGS "${KR_PRIVATE_HEADERS_FILE}" KR_PRIVATE_HEADERS REGEX "^[^#]")

get_property(KR_HEADER_FOLDERS GLOBAL PROPERTY KR_HEADER_FOLDERS)
foreach(folder IN LISTS KR_HEADER_FOLDERS)
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/${folder}/*.h")
  if(headers AND KR_PRIVATE_HEADERS)
    list(REMOVE_ITEM headers ${KR_PRIVATE_HEADERS})
  endif()
  list(TRANSFORM headers PREPEND "${PROJECT_SOURCE_DIR}/")
  install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME}/${folder}")
endforeach()

get_property(KR_LIBRARIES GLOBAL PROPERTY KR_LIBRARIES)
install(TARGETS ${KR_LIBRARIES} EXPORT ${PROJECT_NAME}Targets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT ${PROJECT_NAME}Targets NAMESPACE ${PROJECT_NAME}:: DESTINATION "${KR_PACKAGE_FOLDER}")

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/Config.cmake.in" "${PROJECT_BINARY_DIR}/${PROJECT_NAME}Config.cmake"
  INSTALL_DESTINATION "${KR_PACKAGE_FOLDER}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/${PROJECT_NAME}Config.cmake"
              "${PROJECT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake" DESTINATION "${KR_PACKAGE_FOLDER}")
