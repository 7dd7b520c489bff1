# Helpers that give every module the same shape: a static library of its
# src/ files, linked whole into the shared library, and one test program.

# Every public header of the project, reachable by its bare name.
add_library(ZQAHeaders INTERFACE)
target_include_directories(ZQAHeaders INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQABas/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/containers>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ZQARomCore>)

set_property(GLOBAL PROPERTY ZQA_MODULES "")

# zqa_add_module(<name> SOURCES <files...> [DEPENDS <targets...>])
function(zqa_add_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ZQAHeaders ${ARG_DEPENDS})
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/LocalInterfaces)
    target_include_directories(${name} PUBLIC
      $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/LocalInterfaces>)
  endif()
  set_property(GLOBAL APPEND PROPERTY ZQA_MODULES ${name})
endfunction()

# zqa_add_tests(<name> SOURCES <files...> LIBS <targets...>)
function(zqa_add_tests name)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} ZQATestSupport GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
