# Fuzz programs: each source of fuzz/ defines LLVMFuzzerTestOneInput and is a program of its own. The normal build gives
# it a plain main that takes files and folders, and ctest runs it briefly over the test data; with KR_FUZZ (Clang) it is
# linked with libFuzzer instead.
file(GLOB KR_FUZZ_SOURCES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/fuzz/*.cpp")
foreach(source IN LISTS KR_FUZZ_SOURCES)
  cmake_path(GET source STEM stem)
  set(name fuzz_${stem})
  add_executable(${name} "${source}")
  kr_compile_options(${name})
  target_link_libraries(${name} PRIVATE KRAddressBookManagerSDK Threads::Threads)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
  if(KR_FUZZ)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  else()
    target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/fuzz/support/KRFuzzMain.cpp")
    kr_command_test(fuzz.${stem} ${name} --runs=2000 "${PROJECT_SOURCE_DIR}/tests/data")
  endif()
endforeach()
