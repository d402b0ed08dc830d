# kr_library(<name> FOLDERS <folder>... [SOURCES <file>...] [PUBLIC_LINKS <target>...] [PRIVATE_LINKS <target>...])
#
# A static library of every source in the given folders (not in their subfolders) and of the generated ones in SOURCES.
# Sources are found by looking, so a new class needs no list edited. A library without any source is an interface
# library that passes its public links on.
function(kr_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;SOURCES;PUBLIC_LINKS;PRIVATE_LINKS")
  set(sources ${arg_SOURCES})
  foreach(folder IN LISTS arg_FOLDERS)
    file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
    list(APPEND sources ${found})
  endforeach()

  if(sources)
    add_library(${name} STATIC ${sources})
    kr_compile_options(${name})
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC_LINKS} PRIVATE ${arg_PRIVATE_LINKS})
    set(scope PUBLIC)
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_PUBLIC_LINKS} ${arg_PRIVATE_LINKS})
    set(scope INTERFACE)
  endif()
  target_compile_features(${name} ${scope} cxx_std_20)
  target_include_directories(
    ${name} ${scope} "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/${PROJECT_NAME}>")
  add_library(${PROJECT_NAME}::${name} ALIAS ${name})
  set_property(GLOBAL APPEND PROPERTY KR_LIBRARIES ${name})
  set_property(GLOBAL APPEND PROPERTY KR_HEADER_FOLDERS ${arg_FOLDERS})
endfunction()
