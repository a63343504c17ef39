# The 32-bit x86 target, built on an x86-64 host with the multilib compilers
# (Debian: g++-multilib). Everything, the tests and their doubles included, is
# compiled and linked with -m32; GoogleTest comes from its packaged sources
# (ORBELAN_GTEST_FROM_SOURCE), as the installed one is 64-bit only.
set(CMAKE_C_FLAGS_INIT "-m32")
set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(ORBELAN_GTEST_FROM_SOURCE ON CACHE BOOL "Build GoogleTest from its packaged sources")
