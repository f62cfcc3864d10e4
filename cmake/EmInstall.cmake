# What `cmake --install` puts where. Component "sdk" alone is enough to compile a host.
include(CMakePackageConfigHelpers)

# With the prefix /usr it is /etc, outside of the prefix; emhost looks there too.
set(EM_CONFIGURATION_DIR ${CMAKE_INSTALL_SYSCONFDIR}/em_status)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(EM_CONFIGURATION_DIR ${CMAKE_INSTALL_FULL_SYSCONFDIR}/em_status)
endif()
set(EM_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/EmStatus)
set(EM_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS EM_STATUS LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT module)
if(EM_HOST)
  install(TARGETS emhost RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT host)
  install(FILES etc/bash-completion/emhost DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT host)
endif()
install(FILES etc/EM_STATUS.ini DESTINATION ${EM_CONFIGURATION_DIR} COMPONENT configuration)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc FILES_MATCHING PATTERN "*.md")
install(FILES README.md CONTRIBUTING.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(FILES etc/EM_STATUS_simu.ini.example DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT doc)
install(FILES etc/icinga2/emhost.conf DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/icinga2 COMPONENT doc)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)

# The SDK: headers, find_package(EmStatus), and emstatus.pc.
install(DIRECTORY sdk/emstatus DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT sdk FILES_MATCHING PATTERN "*.h")
install(TARGETS em_sdk EXPORT EmStatusTargets)
install(EXPORT EmStatusTargets NAMESPACE EmStatus:: DESTINATION ${EM_PACKAGE_DIR} COMPONENT sdk)

set(EM_MODULE_FILE ${CMAKE_INSTALL_LIBDIR}/libEM_STATUS.so)
configure_package_config_file(
  cmake/EmStatusConfig.cmake.in ${PROJECT_BINARY_DIR}/EmStatusConfig.cmake
  INSTALL_DESTINATION ${EM_PACKAGE_DIR}
  PATH_VARS EM_MODULE_FILE)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/EmStatusConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/EmStatusConfig.cmake ${PROJECT_BINARY_DIR}/EmStatusConfigVersion.cmake
  DESTINATION ${EM_PACKAGE_DIR} COMPONENT sdk)

# Relative to where the file itself lies, so that an installation can be moved.
file(RELATIVE_PATH EM_PREFIX_FROM_PKGCONFIG /${EM_PKGCONFIG_DIR} /)
string(REGEX REPLACE "/$" "" EM_PREFIX_FROM_PKGCONFIG ${EM_PREFIX_FROM_PKGCONFIG})
configure_file(cmake/emstatus.pc.in ${PROJECT_BINARY_DIR}/emstatus.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/emstatus.pc DESTINATION ${EM_PKGCONFIG_DIR} COMPONENT sdk)
