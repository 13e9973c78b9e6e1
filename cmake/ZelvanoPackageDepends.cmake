# cpack reads this file before it makes the packages. It adds the dependencies that dpkg-shlibdeps does not see.
cmake_minimum_required(VERSION 3.25)
cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH source)
cmake_path(GET CPACK_PACKAGE_DIRECTORY PARENT_PATH build)

macro(zelvano_add_depends component)
    foreach(package ${ARGN})
        if(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS)
            string(APPEND CPACK_DEBIAN_${component}_PACKAGE_DEPENDS ", ")
        endif()
        string(APPEND CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${package}")
    endforeach()
endmacro()

# Adds the packages of the QML modules that the folder imports.
macro(zelvano_add_qml_depends component folder)
    execute_process(COMMAND "${source}/cmake/qml-depends.sh" "${folder}"
        OUTPUT_VARIABLE packages OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "\n" ";" packages "${packages}")
    zelvano_add_depends(${component} ${packages})
endmacro()

zelvano_add_qml_depends(RUNTIME "${source}/resources/ZelvanoUIResources.bundle")
if("demo" IN_LIST CPACK_COMPONENTS_ALL)
    zelvano_add_qml_depends(DEMO "${source}/demo")
endif()
if("qml" IN_LIST CPACK_COMPONENTS_ALL)
    zelvano_add_qml_depends(QML "${build}/qml/ZelvanoUI")
endif()
if("mpv" IN_LIST CPACK_COMPONENTS_ALL)
    zelvano_add_qml_depends(MPV "${build}/qml/ZelvanoUI/Mpv")
endif()
# find_package(ZelvanoUI) needs these.
zelvano_add_depends(DEVELOPMENT qt6-base-dev qt6-declarative-dev qt6-multimedia-dev)
