# Headers, library, exported target and pkg-config file. Everything finds the rest relative to itself, so an installed
# tree can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_target_property(FCURVELIB_KIND FCurveLib TYPE)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/FCurveLib)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS FCurveLib EXPORT FCurveLibTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/FCurveLib DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")

# The component Interchange: targets of its own, which nobody sees who does not ask for it.
if(TARGET FCurveInterchange)
    install(TARGETS FCurveInterchange EXPORT FCurveInterchangeTargets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    set_target_properties(FCurveInterchange PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/FCurveInterchange DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
    install(EXPORT FCurveInterchangeTargets NAMESPACE FCurveLib:: DESTINATION ${package_dir})
endif()

install(EXPORT FCurveLibTargets NAMESPACE FCurveLib:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/FCurveLibConfig.cmake.in
    ${PROJECT_BINARY_DIR}/FCurveLibConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/FCurveLibConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/FCurveLibConfig.cmake ${PROJECT_BINARY_DIR}/FCurveLibConfigVersion.cmake
    DESTINATION ${package_dir})

# A static library leaves it to its consumer to link Expat; a shared one has it linked already.
set(pc_cflags "")
if(FCURVELIB_KIND STREQUAL "STATIC_LIBRARY")
    set(pc_cflags " -DFCURVELIB_STATIC")
endif()
set(pc_libs_private "")
if(FCURVELIB_SIMD AND NOT EMSCRIPTEN)
    set(pc_libs_private "Libs.private: -lhwy\n")
endif()
foreach(dir IN ITEMS INCLUDEDIR LIBDIR)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_${dir} BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
        OUTPUT_VARIABLE pc_${dir})
endforeach()
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
    OUTPUT_VARIABLE pc_prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/FCurveLib.pc.in ${PROJECT_BINARY_DIR}/FCurveLib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/FCurveLib.pc DESTINATION ${pkgconfig_dir})

if(TARGET fcurvetool)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
        OUTPUT_VARIABLE bin_to_lib)
    set_target_properties(fcurvetool PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
    install(TARGETS fcurvetool)
    if(NOT CMAKE_CROSSCOMPILING)
        set(texts ${PROJECT_BINARY_DIR}/apps/fcurvetool)
        install(FILES ${texts}/fcurvetool.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
        install(FILES ${texts}/fcurvetool.bash RENAME fcurvetool
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
        install(FILES ${texts}/_fcurvetool DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
        install(FILES ${texts}/fcurvetool.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
    endif()
endif()
