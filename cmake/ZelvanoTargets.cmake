# How every target of the project is compiled, and how a folder of src/ becomes an object library, and these a library.

# Headers that are made while configuring.
set(ZELVANO_GENERATED_DIR "${PROJECT_BINARY_DIR}/src/include")

if(PROJECT_IS_TOP_LEVEL)
    find_program(ZELVANO_CCACHE ccache)
    if(ZELVANO_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${ZELVANO_CCACHE}")
    endif()
endif()

# Private options: nothing of this reaches a host that links the libraries.
function(zelvano_compile_options target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON AUTOMOC ON)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
        -Wcast-align -Wunused -Wimplicit-fallthrough
        $<$<BOOL:${ZELVANO_WERROR}>:-Werror>)
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
        QT_NO_KEYWORDS QT_NO_FOREACH QT_STRICT_ITERATORS QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
    if(NOT ZELVANO_SHARED)
        target_compile_definitions(${target} PUBLIC ZELVANOCORE_STATIC_DEFINE ZELVANOUI_STATIC_DEFINE
            ZELVANOSANDBOX_STATIC_DEFINE)
    endif()
    target_compile_options(${target} PRIVATE "$<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
    target_link_options(${target} PRIVATE "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now>")
    if(ZELVANO_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${ZELVANO_SANITIZE} -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${ZELVANO_SANITIZE})
    endif()
endfunction()

# zelvano_folder(<target> <library> LINKS <targets this folder may include from>... [FILES <file>...])
#
# All sources of the calling folder, or those given, as one object library of <library>. Headers are included by
# their bare name, and only the folders linked here are on the include path: a wrong include does not compile.
function(zelvano_folder target library)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "LINKS;FILES;EXCEPT")
    if(ARG_FILES)
        set(files ${ARG_FILES})
    else()
        file(GLOB files CONFIGURE_DEPENDS *.cpp *.h)
        list(TRANSFORM ARG_EXCEPT PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
        list(REMOVE_ITEM files ${ARG_EXCEPT})
    endif()
    add_library(${target} OBJECT ${files})
    zelvano_compile_options(${target})
    target_compile_definitions(${target} PRIVATE ${library}_EXPORTS)
    target_include_directories(${target} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}" "${ZELVANO_GENERATED_DIR}")
    target_link_libraries(${target} PUBLIC ${ARG_LINKS})
endfunction()

# One library out of object libraries: it carries their code, their include paths and what they link.
# Its file is in the install component COMPONENT, runtime by default.
# LINKS reach hosts, REQUIRES are the same as pkg-config knows them; PRIVATE_LINKS reach hosts of a static build only.
function(zelvano_library target alias)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "COMPONENT" "FOLDERS;LINKS;PRIVATE_LINKS;REQUIRES")
    if(ZELVANO_SHARED)
        add_library(${target} SHARED)
    else()
        add_library(${target} STATIC)
    endif()
    add_library(ZelvanoUI::${alias} ALIAS ${target})
    zelvano_compile_options(${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${alias}
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    string(TOLOWER ${target} lower)
    generate_export_header(${target} EXPORT_FILE_NAME "${ZELVANO_GENERATED_DIR}/${lower}_export.h")
    foreach(folder IN LISTS ARG_FOLDERS)
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:${folder}>)
        target_include_directories(${target} PUBLIC
            $<BUILD_INTERFACE:$<TARGET_PROPERTY:${folder},INTERFACE_INCLUDE_DIRECTORIES>>)
    endforeach()
    target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    target_compile_features(${target} PUBLIC cxx_std_20)
    zelvano_install_library(${target} COMPONENT "${ARG_COMPONENT}" FOLDERS ${ARG_FOLDERS} REQUIRES ${ARG_REQUIRES})
endfunction()
