# Install rules of the library: the shared object, the public headers, a CMake
# package (config, version and exported target) and a pkg-config file.
# Included from src/CMakeLists.txt once the target oraclecloudsdkwrapper exists.
include(CMakePackageConfigHelpers)

set(OCW_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/OracleCloudSDKWrapper)

# The consumer of the installed package links the library without rebuilding
# it, so the C++ level of the public headers travels with the target.
target_compile_features(oraclecloudsdkwrapper INTERFACE cxx_std_17)
set_target_properties(oraclecloudsdkwrapper PROPERTIES EXPORT_NAME oraclecloudsdkwrapper)

install(TARGETS oraclecloudsdkwrapper
  EXPORT OracleCloudSDKWrapperTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/oraclecloud
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(EXPORT OracleCloudSDKWrapperTargets
  NAMESPACE OracleCloudSDKWrapper::
  DESTINATION ${OCW_CMAKE_PACKAGE_DIR})

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/OracleCloudSDKWrapperConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cmake/OracleCloudSDKWrapperConfig.cmake
  INSTALL_DESTINATION ${OCW_CMAKE_PACKAGE_DIR}
  PATH_VARS CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/cmake/OracleCloudSDKWrapperConfigVersion.cmake
  VERSION ${PROJECT_VERSION}
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/cmake/OracleCloudSDKWrapperConfig.cmake
  ${PROJECT_BINARY_DIR}/cmake/OracleCloudSDKWrapperConfigVersion.cmake
  DESTINATION ${OCW_CMAKE_PACKAGE_DIR})

# The .pc file locates its prefix from its own place (${pcfiledir}), so the
# tree stays usable wherever "cmake --install --prefix" puts it.
# Absolute install directories (set by hand) are written as they are.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(OCW_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(OCW_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(OCW_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
  file(RELATIVE_PATH _to_prefix "/ocw-prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/ocw-prefix")
  string(REGEX REPLACE "/$" "" _to_prefix "${_to_prefix}")
  set(OCW_PC_PREFIX "\${pcfiledir}/${_to_prefix}")
  set(OCW_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(OCW_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/oraclecloudsdkwrapper.pc.in
  ${PROJECT_BINARY_DIR}/cmake/oraclecloudsdkwrapper.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cmake/oraclecloudsdkwrapper.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
