# Choices of a build, and the flags that every target shares.

set(VASKDFC_WORD_SIZE 32 CACHE STRING "Word size of everything that is built: 32, the product, or 64")
set_property(CACHE VASKDFC_WORD_SIZE PROPERTY STRINGS 32 64)
set(VASKDFC_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread; none if empty")
option(VASKDFC_COVERAGE "Count which lines and branches are executed" OFF)
option(VASKDFC_FUZZ "Build the fuzzers, with both sanitizers; needs Clang" OFF)
set(VASKDFC_PLATFORM_LIBRARY vmkmgmt CACHE STRING
  "Management library to link: the simulator (vmkmgmt) or, on a real host, the path of the host's own")

set(CMAKE_C_STANDARD 99)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# The compiler's own check runs without -m32, so that a missing 32-bit toolchain ends in this sentence and no other.
add_compile_options(-m${VASKDFC_WORD_SIZE})
add_link_options(-m${VASKDFC_WORD_SIZE})
include(CheckCXXSourceCompiles)
set(CMAKE_REQUIRED_FLAGS -m${VASKDFC_WORD_SIZE})
check_cxx_source_compiles("#include <string>\nint main() { return static_cast<int>(std::string().size()); }"
  VASKDFC_TOOLCHAIN_WORKS)
unset(CMAKE_REQUIRED_FLAGS)
if(NOT VASKDFC_TOOLCHAIN_WORKS)
  message(FATAL_ERROR "The compiler cannot build ${VASKDFC_WORD_SIZE}-bit programs: install the package g++-multilib.")
endif()

# Line tables are enough for stack traces; full debug information would double the time of a build.
add_compile_options(-g1)

add_library(vaskdfc_warnings INTERFACE)
target_compile_options(vaskdfc_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Werror
  $<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>) # designated initialisers name what is not zero

if(VASKDFC_FUZZ)
  set(VASKDFC_SANITIZE address,undefined)
  add_compile_options(-fsanitize=fuzzer-no-link -O1)
endif()

# What is shipped ends at overruns of frames and of buffers of known size, has no page that is both writable and executable, and is
# bound and read-only once it is loaded. Without optimisation the C library cannot check buffers; sanitizers bring their own checks.
add_library(vaskdfc_hardening INTERFACE)
if(NOT VASKDFC_SANITIZE AND NOT VASKDFC_COVERAGE) # whose checks would count as branches
  target_compile_options(vaskdfc_hardening INTERFACE
    -fstack-protector-strong -fstack-clash-protection
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  target_link_options(vaskdfc_hardening INTERFACE
    -Wl,-z,relro,-z,now,-z,noexecstack
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()

# Tests are counted as well: of an inline function that both use, the linker keeps the test's copy.
if(VASKDFC_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

if(VASKDFC_SANITIZE)
  add_compile_options(-fsanitize=${VASKDFC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VASKDFC_SANITIZE})
endif()
