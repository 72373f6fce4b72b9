# Compiler flags shared by every target of the project.
# Default builds target baseline x86-64 / arm64 so that binaries run on other people's machines.
add_library(tarvo_compile_options INTERFACE)
target_compile_options(tarvo_compile_options INTERFACE -Wall -Wextra -Wpedantic)
# A local that hides another local is a bug waiting; members and parameters of the same name
# are the house style. gcc says that with -Wshadow=local; clang has no such level, and its
# -Wshadow also flags constructor parameters named after fields, so it gets the narrower check.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(tarvo_compile_options INTERFACE -Wshadow)
else()
  target_compile_options(tarvo_compile_options INTERFACE -Wshadow=local)
endif()
# No code here relies on floating-point traps; without them the compiler may if-convert and
# vectorise selects such as clamps. Results stay IEEE (no reassociation, no fast-math).
target_compile_options(tarvo_compile_options INTERFACE -fno-trapping-math)
if(TARVO_WERROR)
  target_compile_options(tarvo_compile_options INTERFACE -Werror)
endif()

# Fuzzing instruments every library for coverage and runs it under AddressSanitizer and
# UndefinedBehaviorSanitizer; the other programs of such a build link the sanitizers' runtime,
# which answers the coverage hooks, so the tests can run from the same build.
if(TARVO_BUILD_FUZZERS)
  if(NOT TARVO_SANITIZE)
    set(TARVO_SANITIZE "address,undefined")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(TARVO_SANITIZE)
  message(STATUS "Sanitizers: ${TARVO_SANITIZE}")
  add_compile_options(-fsanitize=${TARVO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g)
  add_link_options(-fsanitize=${TARVO_SANITIZE})
endif()

# Collects the sources of one library below src/ so that adding a file needs no list edit.
function(tarvo_add_library target srcdir)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${srcdir}/*.cpp" "${srcdir}/*.h")
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC ${srcdir})
  target_link_libraries(${target} PRIVATE tarvo_compile_options)
endfunction()

# One GoogleTest binary per library; every case is registered with CTest.
function(tarvo_add_test_suite target testdir)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${testdir}/*.cpp" "${testdir}/*.h")
  add_executable(${target} ${sources})
  target_include_directories(${target} PRIVATE ${testdir})
  target_link_libraries(${target} PRIVATE ${ARGN} tarvo_testing tarvo_compile_options GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600)
endfunction()
