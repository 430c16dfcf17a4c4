# 32-bit x86 build on an x86_64 host with g++-multilib.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
# Hosts that cannot execute 32-bit programs run them through an emulator (qemu-i386).
if(QUORIN_I386_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QUORIN_I386_EMULATOR})
endif()

# The target's own libraries (JPEG, PNG, zlib), unpacked by scripts/setup.sh since they do not
# always install beside the 64-bit ones; searched there as on a multiarch i386 system.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
if(NOT QUORIN_I386_ROOT)
  set(QUORIN_I386_ROOT ${CMAKE_CURRENT_LIST_DIR}/../build/cache/i386-libs/root)
endif()
get_filename_component(QUORIN_I386_ROOT ${QUORIN_I386_ROOT} ABSOLUTE)
if(IS_DIRECTORY ${QUORIN_I386_ROOT})
  if(NOT QUORIN_I386_ROOT IN_LIST CMAKE_FIND_ROOT_PATH)
    list(APPEND CMAKE_FIND_ROOT_PATH ${QUORIN_I386_ROOT})
  endif()
  # The multiarch header folder a native i386 compiler would search (jconfig.h).
  set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES ${QUORIN_I386_ROOT}/usr/include/i386-linux-gnu)
  set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${QUORIN_I386_ROOT}/usr/include/i386-linux-gnu)
endif()
