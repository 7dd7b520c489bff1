# Helpers that give every module the same shape: a static library built from
# the .cpp files of its src/ folder and linked whole into the shared library,
# and one test program built from the .cpp files of its tests/ folder.

# Every public header of the project, reachable by its bare name: what an
# application of the shared library sees, layer by layer from the bottom.
# Only the shared library links it; a module sees its own headers and those
# of the modules it depends on (see the layers in the top-level CMakeLists).
add_library(ZQAHeaders INTERFACE)
target_include_directories(ZQAHeaders INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQABas/ZQABasCoreUtils.m/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/containers>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQABas/ZQABasUtl.m/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQABas/ZQABasSpawn.m/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQACls/ZQACls.m/PublicInterfaces>
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/ZQARomCore>)

set_property(GLOBAL PROPERTY ZQA_MODULES "")

# Part of the default build: every header of a layer compiled on its own.
add_custom_target(ZQAHeaderCheck ALL)

# zqa_public_headers(<target> <PUBLIC|INTERFACE> <folder>)
# Makes the headers of <folder> the target's header set: reachable by their
# bare names from the target and from what links it, and each compiled alone
# with nothing on its include path but the target's own headers and those of
# the targets it links. A header that reaches into a higher layer, or that
# does not include what it uses, fails the build.
function(zqa_public_headers target scope folder)
  file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
  target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS ${folder} FILES ${headers})
  set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
  add_dependencies(ZQAHeaderCheck ${target}_verify_interface_header_sets)
endfunction()

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
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
  # Its exported headers: its own PublicInterfaces folder, or the one that
  # its family of modules shares (ZQARom's).
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/PublicInterfaces)
    zqa_public_headers(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/PublicInterfaces)
  elseif(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/PublicInterfaces)
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/PublicInterfaces>)
  endif()
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    add_library(${name}Internals INTERFACE)
    target_include_directories(${name}Internals INTERFACE ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/LocalInterfaces)
    target_link_libraries(${name}Internals INTERFACE ${name})
  endif()
  set_property(GLOBAL APPEND PROPERTY ZQA_MODULES ${name})
endfunction()

# zqa_add_tests(<name> <folder> [NO_TEST_SUPPORT] LIBS <targets...>)
# NO_TEST_SUPPORT leaves out zqa_TestDir and its kin, which stand above the
# containers: the tests of the lower layers see only those layers.
function(zqa_add_tests name folder)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "NO_TEST_SUPPORT" "" "LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/tests/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest_main)
  if(NOT ARG_NO_TEST_SUPPORT)
    target_link_libraries(${name} PRIVATE ZQATestSupport)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
