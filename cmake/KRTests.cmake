# Tests: one program for each folder of tests/ that holds sources, every test of it known to ctest by its own name; and
# the Python tests of the command-line host.
find_package(GTest REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBPLIST REQUIRED IMPORTED_TARGET libplist-2.0)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
include(GoogleTest)

# The main function shared by all of them, and the precompiled header: built once, used by each program.
add_library(kr_test_main STATIC tests/support/KRTestMain.cpp)
kr_compile_options(kr_test_main)
# Where things are stands in a header, not on every command line: objects of two trees are then alike to a compiler cache.
configure_file(tests/support/KRTestPaths.h.in "${PROJECT_BINARY_DIR}/generated/tests/support/KRTestPaths.h" @ONLY)
target_include_directories(kr_test_main PUBLIC "${PROJECT_BINARY_DIR}/generated")
target_link_libraries(kr_test_main PUBLIC GTest::gmock GTest::gtest PkgConfig::LIBPLIST ICU::i18n ICU::uc Threads::Threads)
target_precompile_headers(
  kr_test_main PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <atomic> <functional> <map> <memory> <random> <set>
  <string> <string_view> <thread> <unordered_map> <utility> <vector>)

# What a folder's tests link: the engine, or the library that is enough for them, so that a lower layer's tests can be
# built while an upper one is being changed.
set(KR_TESTED_platform KRPlatform)
# The sources of the program that have tests of their own.
set(KR_TESTED_SOURCES_app
    app/ContactColumns.cpp
    app/DisplayText.cpp
    app/FixChoice.cpp
    app/FixEffect.cpp
    app/FixKeys.cpp
    app/FixScreen.cpp
    app/FixSession.cpp
    app/FixStep.cpp
    app/HandleNames.cpp
    app/Interrupt.cpp
    app/IssueNames.cpp
    app/KeyInput.cpp
    app/NameWords.cpp
    app/Output.cpp
    app/PersonRows.cpp
    app/PersonText.cpp
    app/ProgressBar.cpp
    app/RowDiff.cpp
    app/Terminal.cpp
    app/Unsaved.cpp)

file(GLOB KR_TEST_FOLDERS CONFIGURE_DEPENDS LIST_DIRECTORIES true RELATIVE "${PROJECT_SOURCE_DIR}/tests"
     "${PROJECT_SOURCE_DIR}/tests/*")
foreach(folder IN LISTS KR_TEST_FOLDERS)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/${folder}/*.cpp")
  if(NOT sources OR folder MATCHES "^(data|support)$")
    continue()
  endif()
  if(folder STREQUAL "desktop")
    # These talk to the real service through the plug-in, and so exist only with it. They pass the suites of all
    # stores: that of the stores themselves, and those of the handles.
    if(NOT KR_HAS_DESKTOP_PLUGIN)
      continue()
    endif()
    file(GLOB on_books CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/handles/*OnBooksTest.cpp"
         "${PROJECT_SOURCE_DIR}/tests/handles/KRMergeLosesNothingTest.cpp")
    list(APPEND sources ${on_books} "${PROJECT_SOURCE_DIR}/tests/contacts/stores/KRBookStoreTest.cpp")
  endif()
  if(folder STREQUAL "handles")
    list(APPEND sources "${PROJECT_SOURCE_DIR}/tests/contacts/stores/StoreKinds.cpp")
  endif()
  add_executable(tests_${folder} ${sources} ${KR_TESTED_SOURCES_${folder}})
  kr_compile_options(tests_${folder})
  # The macros of GoogleTest guard their own else; GCC does not see the guard.
  target_compile_options(tests_${folder} PRIVATE -Wno-dangling-else)
  set(tested KRAddressBookManagerSDK)
  if(DEFINED KR_TESTED_${folder})
    set(tested ${KR_TESTED_${folder}})
  endif()
  target_link_libraries(tests_${folder} PRIVATE ${tested} kr_test_main)
  target_precompile_headers(tests_${folder} REUSE_FROM kr_test_main)
  gtest_discover_tests(tests_${folder} WORKING_DIRECTORY "${PROJECT_BINARY_DIR}" DISCOVERY_TIMEOUT 120
                       PROPERTIES TIMEOUT 300)
endforeach()
if(TARGET tests_desktop)
  # Python's bindings come with the system, and so belong to the system's Python.
  find_program(KR_SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)
  target_compile_definitions(tests_desktop PRIVATE "KR_SYSTEM_PYTHON=\"${KR_SYSTEM_PYTHON}\"")
endif()

# kr_command_test(<name> <command>...): a test that runs a command in a home folder and a language of its own.
function(kr_command_test name)
  set(home "${PROJECT_BINARY_DIR}/test-homes/${name}")
  file(MAKE_DIRECTORY "${home}")
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(
    ${name}
    PROPERTIES
      TIMEOUT 600
      ENVIRONMENT
      "HOME=${home};XDG_CONFIG_HOME=${home}/config;XDG_DATA_HOME=${home}/data;XDG_CACHE_HOME=${home}/cache;\
XDG_STATE_HOME=${home}/state;LANG=en_US.UTF-8;PYTHONDONTWRITEBYTECODE=1"
      ENVIRONMENT_MODIFICATION "KRCONTACTS_HOME=unset:;LC_ALL=unset:;LC_MESSAGES=unset:;LANGUAGE=unset:;\
DBUS_SESSION_BUS_ADDRESS=unset:;XDG_RUNTIME_DIR=unset:")
endfunction()

if(TARGET krcontacts)
  file(GLOB scripts CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/app/test_*.py")
  foreach(script IN LISTS scripts)
    cmake_path(GET script STEM stem)
    kr_command_test(app.${stem} "${Python3_EXECUTABLE}" "${script}" "$<TARGET_FILE:krcontacts>")
  endforeach()
endif()

# The example host is built as a stranger would: against an installed copy, in a build of its own.
if(EXISTS "${PROJECT_SOURCE_DIR}/examples/host/CMakeLists.txt")
  kr_command_test(
    examples.host "${CMAKE_COMMAND}" "-DBUILD=${PROJECT_BINARY_DIR}" "-DSOURCE=${PROJECT_SOURCE_DIR}/examples/host"
    "-DINPUT=${PROJECT_SOURCE_DIR}/examples/address-book.vcf" "-DGENERATOR=${CMAKE_GENERATOR}"
    "-DCOMPILER=${CMAKE_CXX_COMPILER}" "-DSANITIZE=${KR_SANITIZE}" -P "${CMAKE_CURRENT_LIST_DIR}/BuildInstalledHost.cmake")
endif()
