# GoogleTest built from the distribution's source package (/usr/src/googletest)
# for the target being built, under the names the installed package provides.
set(ORBELAN_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest sources")
if(NOT EXISTS ${ORBELAN_GTEST_SOURCE_DIR}/CMakeLists.txt)
  message(FATAL_ERROR "GoogleTest sources not found in ${ORBELAN_GTEST_SOURCE_DIR} (Debian: googletest)")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
add_subdirectory(${ORBELAN_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(lib gtest gtest_main gmock gmock_main)
  # Third-party code: its warnings are not ours to fail on.
  target_compile_options(${lib} PRIVATE -w)
  if(NOT TARGET GTest::${lib})  # older releases do not name them so themselves
    add_library(GTest::${lib} ALIAS ${lib})
  endif()
endforeach()
