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
