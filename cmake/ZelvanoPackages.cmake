# The Debian packages of `cpack --preset package`: one for each install component.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "ZelvanoUI")
set(CPACK_PACKAGE_CONTACT "The ZelvanoUI developers <packages@zelvano.example>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${PROJECT_BINARY_DIR}/src" "${PROJECT_BINARY_DIR}/src/mpv" "${PROJECT_BINARY_DIR}/sandbox")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Adds the dependencies that dpkg-shlibdeps does not see.
set(CPACK_PROJECT_CONFIG_FILE "${PROJECT_SOURCE_DIR}/cmake/ZelvanoPackageDepends.cmake")

set(CPACK_COMPONENTS_ALL)

# zelvano_package(<component> <package> <section> <description> [DEPENDS <package>...] [RECOMMENDS <package>...])
# DEPENDS are packages of this project, in the same version.
function(zelvano_package component package section description)
    cmake_parse_arguments(PARSE_ARGV 4 ARG "" "" "DEPENDS;RECOMMENDS")
    list(TRANSFORM ARG_DEPENDS APPEND " (= ${PROJECT_VERSION})")
    list(JOIN ARG_DEPENDS ", " depends)
    list(JOIN ARG_RECOMMENDS ", " recommends)
    string(TOUPPER ${component} upper)
    set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${recommends}" PARENT_SCOPE)
endfunction()

zelvano_package(runtime libzelvanoui libs "The libraries." RECOMMENDS qt6-image-formats-plugins)
set(sandbox_package)
if(TARGET zelvano-sandbox)
    set(sandbox_package zelvano-sandbox)
    zelvano_package(sandbox ${sandbox_package} devel
        "A recommendation service for development, on this machine only: a program and a library.")
endif()
set(mpv_package)
if(ZELVANO_WITH_MPV)
    set(mpv_package libzelvanoui-mpv)
    zelvano_package(mpv ${mpv_package} libs "The player over mpv: a library and its QML module." DEPENDS libzelvanoui)
endif()
zelvano_package(development libzelvanoui-dev libdevel "The headers, and the files for CMake and pkg-config."
    DEPENDS libzelvanoui ${mpv_package} ${sandbox_package} RECOMMENDS qt6-webengine-dev)
if(TARGET zelvano-demo)
    zelvano_package(demo zelvanoui-demo video "The demo: a host that starts its own service."
        DEPENDS libzelvanoui ${mpv_package} ${sandbox_package})
endif()
if(ZELVANO_WITH_UI)
    zelvano_package(qml qml6-module-zelvanoui libs "The QML module." DEPENDS libzelvanoui)
endif()

include(CPack)
