# The installed CMake package (find_package(SetApi CONFIG)) and the pkg-config file.
include(CMakePackageConfigHelpers)

add_library(SetApi INTERFACE)
add_library(SetApi::SetApi ALIAS SetApi)
target_link_libraries(SetApi INTERFACE setapi)
install(TARGETS SetApi EXPORT SetApiTargets)

set(SETAPI_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/SetApi)
install(EXPORT SetApiTargets NAMESPACE SetApi:: DESTINATION ${SETAPI_CMAKE_DIR})
configure_package_config_file(cmake/SetApiConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/SetApiConfig.cmake
  INSTALL_DESTINATION ${SETAPI_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/SetApiConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/SetApiConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/SetApiConfigVersion.cmake
        DESTINATION ${SETAPI_CMAKE_DIR})

configure_file(cmake/setapi.pc.in ${CMAKE_CURRENT_BINARY_DIR}/setapi.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/setapi.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
