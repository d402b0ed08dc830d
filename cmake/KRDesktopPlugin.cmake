# The plug-in for the desktop's own address books: a module that is loaded when it is first needed, so that neither the
# library nor its hosts depend on what it links. It is built where libebook's development package is; the library knows
# whether it was.
option(KR_DESKTOP_PLUGIN "Build the plug-in for the desktop's address books where libebook is there" ON)

set(KR_PLUGIN_FOLDER "${CMAKE_INSTALL_LIBDIR}/${PROJECT_NAME}")
set(KR_HAS_DESKTOP_PLUGIN 0)
if(KR_DESKTOP_PLUGIN)
  find_package(PkgConfig QUIET)
  if(PkgConfig_FOUND)
    pkg_check_modules(EBOOK QUIET IMPORTED_TARGET libebook-1.2>=3.34)
  endif()
  if(EBOOK_FOUND)
    set(KR_HAS_DESKTOP_PLUGIN 1)
  else()
    message(STATUS "libebook not found: without the desktop's address books")
  endif()
endif()

target_link_libraries(KRMacAddressBookSDK PRIVATE ${CMAKE_DL_LIBS})
set_property(
  SOURCE contacts/stores/KRDesktopModule.cpp
  APPEND
  PROPERTY COMPILE_DEFINITIONS "KR_HAS_DESKTOP_PLUGIN=${KR_HAS_DESKTOP_PLUGIN}" "KR_PLUGIN_FOLDER=\"${KR_PLUGIN_FOLDER}\""
           "KR_PLUGIN_FULL_FOLDER=\"${CMAKE_INSTALL_FULL_LIBDIR}/${PROJECT_NAME}\"")

if(KR_HAS_DESKTOP_PLUGIN)
  file(GLOB sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/contacts/stores/desktop/*.cpp")
  add_library(krdesktopbooks MODULE ${sources})
  kr_compile_options(krdesktopbooks)
  target_include_directories(krdesktopbooks PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(krdesktopbooks PRIVATE PkgConfig::EBOOK Threads::Threads)
  set_target_properties(
    krdesktopbooks PROPERTIES PREFIX "" CXX_VISIBILITY_PRESET hidden
                              LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/plugins")
  # Whoever builds a program finds the plug-in beside it.
  add_dependencies(KRMacAddressBookSDK krdesktopbooks)
  install(TARGETS krdesktopbooks LIBRARY DESTINATION "${KR_PLUGIN_FOLDER}")
endif()
