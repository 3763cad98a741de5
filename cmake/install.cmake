# What `cmake --install` puts into a prefix: the client library with its headers, a CMake package
# (ZelManager::client) and a pkg-config file; the platform and service libraries; zel_device with
# the default configuration and its schema; a systemd user unit for `zel_device serve`. Programs
# join with zel_install_program. Test, bench and fuzz targets are never installed.
include(CMakePackageConfigHelpers)

set(ZEL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zel_manager)
set(ZEL_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZelManager)

# The client library and the platform libraries its headers use: exported with the package.
set(zel_client_modules ipc hilog access_token utils)
list(TRANSFORM zel_client_modules PREPEND tarvo_ OUTPUT_VARIABLE zel_client_platform)
install(TARGETS zel_manager_client ${zel_client_platform} EXPORT ZelManagerTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# One folder of headers: they include each other by file name, a client writes <zel_manager/...>.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/zel_manager/interfaces/include/
    DESTINATION ${ZEL_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")
foreach(module ${zel_client_modules})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/platform/${module}/include/
        DESTINATION ${ZEL_INCLUDE_DIR} FILES_MATCHING PATTERN "*.h")
endforeach()

# The rest of the platform (the service and zel_device link it all) and the service library.
get_property(zel_platform GLOBAL PROPERTY ZEL_PLATFORM_LIBRARIES)
list(REMOVE_ITEM zel_platform ${zel_client_platform})
install(TARGETS ${zel_platform} zel_manager_service LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/zel_manager/etc/zel_manager_config.xml
              ${PROJECT_SOURCE_DIR}/zel_manager/etc/zel_manager_config.xsd
    DESTINATION ${ZEL_DATA_DIR})

# CMake package.
install(EXPORT ZelManagerTargets NAMESPACE ZelManager:: DESTINATION ${ZEL_PACKAGE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ZelManagerConfig.cmake.in
    ${CMAKE_BINARY_DIR}/install/ZelManagerConfig.cmake INSTALL_DESTINATION ${ZEL_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/install/ZelManagerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/install/ZelManagerConfig.cmake
              ${CMAKE_BINARY_DIR}/install/ZelManagerConfigVersion.cmake
    DESTINATION ${ZEL_PACKAGE_DIR})

# pkg-config: the prefix is found from the file's own place, so the prefix can move.
file(RELATIVE_PATH ZEL_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ZEL_PC_TO_PREFIX "${ZEL_PC_TO_PREFIX}")
list(TRANSFORM zel_client_platform PREPEND -l OUTPUT_VARIABLE zel_pc_platform)
list(JOIN zel_pc_platform " " ZEL_PC_PLATFORM)
configure_file(${CMAKE_CURRENT_LIST_DIR}/zel_manager.pc.in ${CMAKE_BINARY_DIR}/install/zel_manager.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/install/zel_manager.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The systemd user unit names zel_device by its full path, so it is written for the prefix the
# install goes to, which is only known then.
install(CODE "
    set(ZEL_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    configure_file(\"${CMAKE_CURRENT_LIST_DIR}/zel_device.service.in\"
        \"${CMAKE_BINARY_DIR}/install/zel_device.service\" @ONLY)")
install(FILES ${CMAKE_BINARY_DIR}/install/zel_device.service DESTINATION lib/systemd/user)
