# Installs the public headers, the shared library, a CMake package usable as
# find_package(ZQARomCore) with the imported target ZQARomCore::ZBXZQARomCore,
# and a pkg-config file.
include(CMakePackageConfigHelpers)

set(ZQA_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/ZQARomCore)
set(ZQA_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZQARomCore)

file(GLOB zqa_public_headers
  ${PROJECT_SOURCE_DIR}/ZQABas/*.m/PublicInterfaces/*.h
  ${PROJECT_SOURCE_DIR}/containers/*.h
  ${PROJECT_SOURCE_DIR}/ZQARom/PublicInterfaces/*.h)
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
