# Installs the public headers, the shared library, a CMake package usable as
# find_package(ZQARomCore) with the imported target ZQARomCore::ZBXZQARomCore,
# and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZQA_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/ZQARomCore)
set(ZQA_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZQARomCore)

# The headers an application includes: those of ZQARom/PublicInterfaces,
# the containers it needs to use what they answer (a table's field map is
# walked with an omi_BtreeIterator; the class version map is a cow_Map),
# and the support and container headers that these include, directly or
# through each other. A public header that includes anything else (a
# module's private header) stops the configuration.
file(GLOB zqa_support_folders LIST_DIRECTORIES true ${PROJECT_SOURCE_DIR}/ZQABas/*.m/PublicInterfaces)
set(zqa_header_folders
  ${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces
  ${PROJECT_SOURCE_DIR}/ZQACls/ZQACls.m/PublicInterfaces
  ${zqa_support_folders}
  ${PROJECT_SOURCE_DIR}/containers)
file(GLOB zqa_pending ${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces/*.h ${PROJECT_SOURCE_DIR}/ZQACls/ZQACls.m/PublicInterfaces/*.h)
list(APPEND zqa_pending ${PROJECT_SOURCE_DIR}/containers/omi_BtreeIterator.h ${PROJECT_SOURCE_DIR}/containers/cow_Map.h)
set(zqa_public_headers "")
while(zqa_pending)
  list(POP_FRONT zqa_pending zqa_header)
  if(zqa_header IN_LIST zqa_public_headers)
    continue()
  endif()
  list(APPEND zqa_public_headers ${zqa_header})
  file(STRINGS ${zqa_header} zqa_includes REGEX "^#include \"[^\"]+\"")
  foreach(zqa_include ${zqa_includes})
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" zqa_name "${zqa_include}")
    set(zqa_found "")
    foreach(zqa_folder ${zqa_header_folders})
      if(NOT zqa_found AND EXISTS ${zqa_folder}/${zqa_name})
        set(zqa_found ${zqa_folder}/${zqa_name})
      endif()
    endforeach()
    if(NOT zqa_found)
      message(FATAL_ERROR "${zqa_header} includes ${zqa_name}, which is not a public header")
    endif()
    list(APPEND zqa_pending ${zqa_found})
  endforeach()
endwhile()
# An edited public header may include others: the list is made again.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${zqa_public_headers})
install(FILES ${zqa_public_headers} DESTINATION ${ZQA_INSTALL_INCLUDEDIR})

install(TARGETS ZBXZQARomCore ZQAHeaders EXPORT ZQARomCoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT ZQARomCoreTargets NAMESPACE ZQARomCore:: DESTINATION ${ZQA_INSTALL_CMAKEDIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZQARomCoreConfig.cmake.in
  ${PROJECT_BINARY_DIR}/ZQARomCoreConfig.cmake INSTALL_DESTINATION ${ZQA_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZQARomCoreConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZQARomCoreConfig.cmake ${PROJECT_BINARY_DIR}/ZQARomCoreConfigVersion.cmake
  DESTINATION ${ZQA_INSTALL_CMAKEDIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/ZQARomCore.pc.in ${PROJECT_BINARY_DIR}/ZQARomCore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ZQARomCore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
