# The benchmark: built with everything else so that it keeps compiling, run by hand.
file(GLOB KR_BENCH_SOURCES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/bench/*.cpp")
if(KR_BENCH_SOURCES AND NOT KR_FUZZ)
  find_package(benchmark REQUIRED)
  add_executable(kr_bench ${KR_BENCH_SOURCES})
  kr_compile_options(kr_bench)
  # A source of bench/ may have a main function of its own; the library's is taken only where none has.
  target_link_libraries(kr_bench PRIVATE KRAddressBookManagerSDK benchmark::benchmark benchmark::benchmark_main)
  target_compile_definitions(kr_bench PRIVATE "KR_SOURCE_DIR=\"${PROJECT_SOURCE_DIR}\"")
endif()

# Our side of bench/compare; built when that is run.
if(TARGET krcontacts AND NOT KR_FUZZ)
  set(KR_COMPARED_SOURCES ${KR_APP_SOURCES})
  list(FILTER KR_COMPARED_SOURCES EXCLUDE REGEX "/main\\.cpp$")
  add_executable(kr_compare EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/bench/compare/ours.cpp" ${KR_COMPARED_SOURCES})
  kr_compile_options(kr_compare)
  target_link_libraries(kr_compare PRIVATE KRAddressBookManagerSDK CLI11::CLI11 nlohmann_json::nlohmann_json
                                           Threads::Threads)
endif()

# The steps of bench/growth; built when that is run.
if(NOT KR_FUZZ)
  add_executable(kr_growth EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/bench/growth/steps.cpp")
  kr_compile_options(kr_growth)
  target_link_libraries(kr_growth PRIVATE KRAddressBookManagerSDK nlohmann_json::nlohmann_json)
endif()
