# QUARVELO_SANITIZE=ON builds everything (program, simulator, tests) with AddressSanitizer and
# UndefinedBehaviorSanitizer. Any undefined behaviour aborts, so a report cannot scroll past in
# a passing test; leaks are checked at exit (see scripts/lsan.supp for the third-party
# leaks that are suppressed).
option(QUARVELO_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

if(QUARVELO_SANITIZE)
  set(_quarvelo_sanitize_flags
      -fsanitize=address,undefined
      -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  add_compile_options(${_quarvelo_sanitize_flags})
  add_link_options(-fsanitize=address,undefined)
  message(STATUS "QUARVELO: AddressSanitizer and UndefinedBehaviorSanitizer on")
endif()

# QUARVELO_FUZZ=ON (clang only) instruments everything for libFuzzer's coverage, with the same
# two sanitizers, and adds the fuzz targets of fuzz/. Use a tree of its own.
option(QUARVELO_FUZZ "Build the libFuzzer targets (clang)" OFF)

if(QUARVELO_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "QUARVELO_FUZZ needs clang (CXX=clang++)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
