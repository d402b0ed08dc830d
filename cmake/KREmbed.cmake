# kr_embed_resources(<variable> <folder> PATTERNS <pattern>...)
#
# Sets <variable> to a generated source that holds the files of <folder> that match; platform/KREmbeddedResources.h
# gives them back. A program finds its texts and images in itself: nothing is looked up beside it at run time.
set(KR_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/EmbedFiles.cmake")

function(kr_embed_resources variable folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "PATTERNS")
  set(patterns)
  foreach(pattern IN LISTS arg_PATTERNS)
    list(APPEND patterns "${folder}/${pattern}")
  endforeach()
  file(GLOB files CONFIGURE_DEPENDS RELATIVE "${folder}" ${patterns})
  list(SORT files COMPARE STRING)
  list(TRANSFORM files PREPEND "${folder}/" OUTPUT_VARIABLE paths)

  set(output "${PROJECT_BINARY_DIR}/generated/KREmbeddedResources.cpp")
  # The list goes through a file: the generated source also depends on which files there are, not only on their bytes.
  set(list "${PROJECT_BINARY_DIR}/generated/KREmbeddedResources.txt")
  list(JOIN files "\n" lines)
  file(CONFIGURE OUTPUT "${list}" CONTENT "@lines@" @ONLY)
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${folder}" "-DLIST=${list}" "-DOUTPUT=${output}" -P "${KR_EMBED_SCRIPT}"
    DEPENDS ${paths} "${list}" "${KR_EMBED_SCRIPT}"
    COMMENT "Embedding resources"
    VERBATIM)
  set(${variable} "${output}" PARENT_SCOPE)
endfunction()
