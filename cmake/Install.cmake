# Install rules: the shared library, the public headers, the CMake package and the pkg-config file.
#
# GMP and the threads library are private to the shared library, so a consumer has to find neither.
include(CMakePackageConfigHelpers)

set(lumo25d_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Lumo25D)

install(TARGETS lumo25d EXPORT Lumo25DTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Lumo25D_Runtime NAMELINK_COMPONENT Lumo25D_Development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Lumo25D_Development
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Lumo25D_Runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lumo25d
    COMPONENT Lumo25D_Development FILES_MATCHING PATTERN "*.h")

# ---- the CMake package: find_package(Lumo25D) gives Lumo25D::lumo25d --------------------------------------------
install(EXPORT Lumo25DTargets NAMESPACE Lumo25D:: DESTINATION ${lumo25d_package_dir}
    COMPONENT Lumo25D_Development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/Lumo25DConfig.cmake.in
    ${PROJECT_BINARY_DIR}/Lumo25DConfig.cmake
    INSTALL_DESTINATION ${lumo25d_package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Lumo25DConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/Lumo25DConfig.cmake ${PROJECT_BINARY_DIR}/Lumo25DConfigVersion.cmake
    DESTINATION ${lumo25d_package_dir} COMPONENT Lumo25D_Development)

# ---- pkg-config -------------------------------------------------------------------------------------------------
# With the library directory below the prefix, the prefix is told relative to the .pc file, so that an installed tree
# can be moved; each of the directories may also have been given as an absolute path.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(lumo25d_pc_prefix "${CMAKE_INSTALL_PREFIX}")
    set(lumo25d_pc_libdir "${CMAKE_INSTALL_LIBDIR}")
else()
    file(RELATIVE_PATH lumo25d_up "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(REGEX REPLACE "/$" "" lumo25d_up "${lumo25d_up}")
    set(lumo25d_pc_prefix "\${pcfiledir}/${lumo25d_up}")
    set(lumo25d_pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(lumo25d_pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}/lumo25d")
else()
    set(lumo25d_pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}/lumo25d")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/lumo25d.pc.in ${PROJECT_BINARY_DIR}/lumo25d.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lumo25d.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT Lumo25D_Development)
