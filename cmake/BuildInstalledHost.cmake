# Installs the build into a fresh folder, builds the example host against that copy alone, and runs it over INPUT.
# It must succeed and print something.
#
#   cmake -DBUILD= -DSOURCE= -DINPUT= -DGENERATOR= -DCOMPILER= [-DSANITIZE=] -P BuildInstalledHost.cmake
set(prefix "${BUILD}/installed")
set(host "${BUILD}/installed-host")
file(REMOVE_RECURSE "${prefix}" "${host}")

set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=${SANITIZE} -fno-sanitize-recover=all")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}"
                OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${host}" -G "${GENERATOR}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
          "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=${flags}" -DCMAKE_BUILD_TYPE=Release
          -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON "-DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${host}/bin"
          COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${host}" COMMAND_ERROR_IS_FATAL ANY)

file(GLOB programs "${host}/bin/*")
list(LENGTH programs count)
if(NOT count EQUAL 1)
  message(FATAL_ERROR "examples/host must make exactly one program; it made ${count}: ${programs}")
endif()
execute_process(COMMAND ${programs} "${INPUT}" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(output STREQUAL "")
  message(FATAL_ERROR "The example host printed nothing for ${INPUT}")
endif()
message(STATUS "The example host printed:\n${output}")
