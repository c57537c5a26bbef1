# What `cmake --install` puts in place: the shared and static libraries, the
# public headers, vantaro.pc and the CMake package giving vantaro::vantaro
# (the shared library) and vantaro::vantaro_static.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Both archives carry the plain name once installed: libvantaro.so, libvantaro.a.
set_target_properties(vantaro_static PROPERTIES OUTPUT_NAME vantaro)
target_include_directories(vantaro INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(vantaro_static INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
# The archive holds C++ objects: a C consumer links the C++ runtime through it.
find_package(Threads REQUIRED)
target_link_libraries(vantaro_static INTERFACE Threads::Threads $<$<LINK_LANGUAGE:C>:stdc++> m)

install(TARGETS vantaro vantaro_static EXPORT vantaroTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vantaro DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(EXPORT vantaroTargets NAMESPACE vantaro:: FILE vantaroTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vantaro)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vantaroConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/vantaroConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vantaro)
# One major version is one ABI: the soname follows it.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vantaroConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vantaroConfig.cmake ${PROJECT_BINARY_DIR}/vantaroConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vantaro)

# The .pc file names its prefix relative to itself (libdir may be multiarch).
file(RELATIVE_PATH VANTARO_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/vantaro.pc.in ${PROJECT_BINARY_DIR}/vantaro.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vantaro.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
