# QUORIN_SANITIZE=ON instruments the bridge, the stand-in and the tests with AddressSanitizer and
# UndefinedBehaviorSanitizer (64-bit only; scripts/sanitize.sh builds and runs it).
option(QUORIN_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(QUORIN_SANITIZE)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_SIZEOF_VOID_P EQUAL 4)
    # gcc links the shared ASan runtime into every instrumented library, so the bridge still links
    # with --no-undefined and all of them share the runtime the test executable loads before the JVM.
    message(FATAL_ERROR "QUORIN_SANITIZE needs gcc and a 64-bit target")
  endif()
  # A finding of UBSan stops the process, so it fails its test instead of scrolling past.
  set(QUORIN_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_compile_options(${QUORIN_SANITIZE_FLAGS})
  add_link_options(${QUORIN_SANITIZE_FLAGS})
endif()
