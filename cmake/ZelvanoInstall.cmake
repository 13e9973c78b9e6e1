# Installs the libraries and programs, and the files by which hosts find them. The components are runtime, development,
# sandbox, demo, qml: the QML module, in ZELVANO_INSTALL_QMLDIR, and mpv: a library and its QML module.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZELVANO_INSTALL_HEADERDIR "${CMAKE_INSTALL_INCLUDEDIR}/ZelvanoUI")
set(ZELVANO_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/ZelvanoUI")
set(ZELVANO_INSTALL_QMLDIR "${CMAKE_INSTALL_LIBDIR}/qt6/qml")

# The target, installed to `destination` below the prefix, finds the libraries even after the prefix has moved.
function(zelvano_install_rpath target destination)
    file(RELATIVE_PATH to_libraries "/prefix/${destination}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    string(REGEX REPLACE "/$" "" rpath "$ORIGIN/${to_libraries}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${rpath}")
endfunction()

function(zelvano_install_program target component)
    zelvano_install_rpath(${target} "${CMAKE_INSTALL_BINDIR}")
    if(ZELVANO_INSTALL)
        install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${component})
    endif()
endfunction()

# zelvano_install_library(<library> COMPONENT <component> REQUIRES <pkg-config module>...)
#
# Installs the library, its public headers, its exported target and its pkg-config file.
function(zelvano_install_library target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "COMPONENT" "REQUIRES")
    zelvano_install_rpath(${target} "${CMAKE_INSTALL_LIBDIR}")
    if(NOT ZELVANO_INSTALL)
        return()
    endif()
    zelvano_install_exported(${target} COMPONENT ${ARG_COMPONENT} ${target})
    install(EXPORT ${target} NAMESPACE ZelvanoUI:: FILE ${target}Targets.cmake
        DESTINATION "${ZELVANO_INSTALL_CMAKEDIR}" COMPONENT development)
    if(ZELVANO_SHARED)
        zelvano_install_pkgconfig(${target} ${ARG_REQUIRES})
    endif()
endfunction()

# zelvano_install_exported(<library> [COMPONENT <component>] <target>...)
#
# Adds targets to the export of <library>: the library, and in a static build the objects of its resources. A shared
# library belongs to the component, by default runtime.
function(zelvano_install_exported library)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "COMPONENT" "")
    if(NOT ARG_COMPONENT)
        set(ARG_COMPONENT runtime)
    endif()
    if(ZELVANO_INSTALL AND ARG_UNPARSED_ARGUMENTS)
        install(TARGETS ${ARG_UNPARSED_ARGUMENTS} EXPORT ${library}
            LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${ARG_COMPONENT} NAMELINK_COMPONENT development
            ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
            OBJECTS DESTINATION "${CMAKE_INSTALL_LIBDIR}/ZelvanoUI" COMPONENT development
            FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
    endif()
endfunction()

# zelvano_install_qml_module(<plugin> <folder> <component> <types>)
#
# Installs a QML module, the plugin and what describes it, from `folder` below the build's qml/ to the same one below
# ZELVANO_INSTALL_QMLDIR.
function(zelvano_install_qml_module plugin folder component types)
    zelvano_install_rpath(${plugin} "${ZELVANO_INSTALL_QMLDIR}/${folder}")
    if(ZELVANO_INSTALL)
        install(TARGETS ${plugin}
            LIBRARY DESTINATION "${ZELVANO_INSTALL_QMLDIR}/${folder}" COMPONENT ${component}
            ARCHIVE DESTINATION "${ZELVANO_INSTALL_QMLDIR}/${folder}" COMPONENT ${component})
        set(built "${PROJECT_BINARY_DIR}/qml/${folder}")
        install(FILES "${built}/qmldir" "${built}/${types}"
            DESTINATION "${ZELVANO_INSTALL_QMLDIR}/${folder}" COMPONENT ${component})
    endif()
endfunction()

# zelvano-core.pc and so on, for shared libraries only: pkg-config cannot name the object files of resources.
function(zelvano_install_pkgconfig target)
    set(library ${target})
    get_target_property(component ${target} EXPORT_NAME)
    string(TOLOWER "zelvano-${component}" name)
    list(JOIN ARGN " " requires)
    file(RELATIVE_PATH to_prefix "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
    string(REGEX REPLACE "/$" "" to_prefix "${to_prefix}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/zelvano.pc.in" "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc" @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${name}.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endfunction()

# Installs the version header and the files of find_package(ZelvanoUI). While the major version is 0, a minor version
# may break hosts.
function(zelvano_install_package)
    install(FILES "${ZELVANO_GENERATED_DIR}/ZelvanoUI/zelvano_version.h"
        DESTINATION "${ZELVANO_INSTALL_HEADERDIR}" COMPONENT development)
    configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelvanoUIConfig.cmake.in"
        "${CMAKE_CURRENT_BINARY_DIR}/ZelvanoUIConfig.cmake"
        INSTALL_DESTINATION "${ZELVANO_INSTALL_CMAKEDIR}" PATH_VARS ZELVANO_INSTALL_QMLDIR
        NO_CHECK_REQUIRED_COMPONENTS_MACRO)
    write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/ZelvanoUIConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/ZelvanoUIConfig.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/ZelvanoUIConfigVersion.cmake"
        DESTINATION "${ZELVANO_INSTALL_CMAKEDIR}" COMPONENT development)
endfunction()
