# Helpers that give every module the same shape: a static library built from
# the .cpp files of its src/ folder and linked whole into the shared library,
# and one test program built from the .cpp files of its tests/ folder.

# Every public header of the project, reachable by its bare name.
add_library(ZQAHeaders INTERFACE)
target_include_directories(ZQAHeaders INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQABas/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/containers>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ZQARomCore>)

set_property(GLOBAL PROPERTY ZQA_MODULES "")

# zqa_add_module(<name> <folder> [DEPENDS <targets...>])
#
# A module's LocalInterfaces folder is private to it. What else needs those
# headers (its tests, zdb, the benchmarks, the fuzz targets, another module
# built on its internals) links <name>Internals, which gives the folder and
# the module, so that every such use is written down where it is made.
function(zqa_add_module name folder)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/src/*.cpp)
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC ZQAHeaders ${ARG_DEPENDS})
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    add_library(${name}Internals INTERFACE)
    target_include_directories(${name}Internals INTERFACE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    target_link_libraries(${name}Internals INTERFACE ${name})
  endif()
  set_property(GLOBAL APPEND PROPERTY ZQA_MODULES ${name})
endfunction()

# zqa_add_tests(<name> <folder> LIBS <targets...>)
function(zqa_add_tests name folder)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/tests/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} ZQATestSupport GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
