# Compile options of all targets. A folder of src/ becomes an object library, and object libraries become a library.

# The public headers, and the headers that the configure step writes.
set(ZELVANO_HEADER_DIR "${PROJECT_SOURCE_DIR}/include")
set(ZELVANO_GENERATED_DIR "${PROJECT_BINARY_DIR}/include")

if(PROJECT_IS_TOP_LEVEL)
    find_program(ZELVANO_CCACHE ccache)
    if(ZELVANO_CCACHE)
        # Builds with the same options share objects, and precompiled headers are cached.
        set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}"
            CCACHE_SLOPPINESS=pch_defines,time_macros "${ZELVANO_CCACHE}")
    endif()
endif()

# All options are PRIVATE, so that none reaches a host.
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
            ZELVANOMPV_STATIC_DEFINE ZELVANOSANDBOX_STATIC_DEFINE)
    endif()
    target_compile_options(${target} PRIVATE "$<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
    target_link_options(${target} PRIVATE "$<$<CONFIG:Release>:-Wl,-z,relro,-z,now>")
    if(ZELVANO_SANITIZE)
        # The check of vptr opens a pipe. A process without descriptors, as in tst_SessionStop, fails it always.
        target_compile_options(${target} PRIVATE
            -fsanitize=${ZELVANO_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${ZELVANO_SANITIZE})
    endif()
endfunction()

# With ZELVANO_UNITY compiles the target as one file.
function(zelvano_unity target)
    if(ZELVANO_UNITY)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
        # gcc takes all but the unity file for headers, whose types must not depend on an anonymous namespace.
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
endfunction()

# zelvano_folder(<target> <library> [KIND <OBJECT or STATIC>] [HEADERS <public header>...]
#                LINKS <targets this folder may include from>... [PRIVATE_LINKS <targets only this folder may include
#                from>...] [EXCEPT <file>...])
#
# Builds all sources of the calling folder but EXCEPT as one library of KIND, OBJECT by default; <library> takes its
# objects. HEADERS are its headers in include/ZelvanoUI. Only the linked folders are on the include path, so that a wrong
# include of a private header does not compile. A wrong include of a public header fails the configure step.
function(zelvano_folder target library)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "KIND" "HEADERS;LINKS;PRIVATE_LINKS;EXCEPT")
    if(NOT ARG_KIND)
        set(ARG_KIND OBJECT)
    endif()
    file(GLOB files CONFIGURE_DEPENDS *.cpp *.h)
    list(TRANSFORM ARG_EXCEPT PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    list(REMOVE_ITEM files ${ARG_EXCEPT})
    list(TRANSFORM ARG_HEADERS PREPEND "${ZELVANO_HEADER_DIR}/ZelvanoUI/" OUTPUT_VARIABLE headers)
    add_library(${target} ${ARG_KIND} ${files} ${headers})
    zelvano_compile_options(${target})
    zelvano_unity(${target})
    target_compile_definitions(${target} PRIVATE ${library}_EXPORTS)
    target_include_directories(${target} PUBLIC
        "${CMAKE_CURRENT_SOURCE_DIR}" "${ZELVANO_HEADER_DIR}" "${ZELVANO_GENERATED_DIR}")
    target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})

    set(allowed ${ARG_HEADERS})
    foreach(link IN LISTS ARG_LINKS ARG_PRIVATE_LINKS)
        if(link MATCHES "^zelvano_")
            get_target_property(reachable ${link} ZELVANO_REACHABLE_HEADERS)
            list(APPEND allowed ${reachable})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES allowed)
    set_target_properties(${target} PROPERTIES
        ZELVANO_HEADERS "${headers}" ZELVANO_REACHABLE_HEADERS "${allowed}")
    zelvano_check_includes(${target} "${allowed}" ${files} ${headers})
endfunction()

# Fails if a file includes a public header that is not in `allowed`.
function(zelvano_check_includes target allowed)
    foreach(file IN LISTS ARGN)
        file(STRINGS "${file}" includes REGEX "^#include <ZelvanoUI/")
        foreach(include IN LISTS includes)
            string(REGEX REPLACE "^#include <ZelvanoUI/(.*)>.*" "\\1" name "${include}")
            if(NOT name IN_LIST allowed AND NOT name MATCHES "^zelvano[a-z]*_(export|version)\\.h$")
                message(FATAL_ERROR "${file} includes ${name}: ${target} links no folder that has it")
            endif()
        endforeach()
    endforeach()
endfunction()

# Fails if a header in include/ZelvanoUI belongs to no folder.
function(zelvano_check_headers_registered)
    if(NOT ZELVANO_WITH_UI OR NOT ZELVANO_WITH_MPV OR NOT ZELVANO_WITH_SANDBOX)
        return()
    endif()
    file(GLOB on_disk CONFIGURE_DEPENDS "${ZELVANO_HEADER_DIR}/ZelvanoUI/*.h")
    get_property(registered GLOBAL PROPERTY ZELVANO_PUBLIC_HEADERS)
    list(REMOVE_ITEM on_disk ${registered})
    if(on_disk)
        message(FATAL_ERROR "These public headers belong to no folder: ${on_disk}")
    endif()
endfunction()

# Builds one library from object libraries and their public headers. COMPONENT is its install component, by default
# runtime. LINKS reach hosts, and REQUIRES are their pkg-config names. PRIVATE_LINKS reach hosts of a static build only.
# <target>Internals adds the private headers, for the project's own programs.
function(zelvano_library target alias)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "COMPONENT" "FOLDERS;LINKS;PRIVATE_LINKS;REQUIRES")
    if(NOT ARG_COMPONENT)
        set(ARG_COMPONENT runtime)
    endif()
    if(ZELVANO_SHARED)
        add_library(${target} SHARED)
    else()
        add_library(${target} STATIC)
    endif()
    add_library(ZelvanoUI::${alias} ALIAS ${target})
    zelvano_compile_options(${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${alias} AUTOMOC OFF VERIFY_INTERFACE_HEADER_SETS ON
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    string(TOLOWER ${target} lower)
    set(export_header "${ZELVANO_GENERATED_DIR}/ZelvanoUI/${lower}_export.h")
    generate_export_header(${target} EXPORT_FILE_NAME "${export_header}")
    add_library(${target}Internals INTERFACE)
    target_link_libraries(${target}Internals INTERFACE ${target})
    set(headers)
    foreach(folder IN LISTS ARG_FOLDERS)
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:${folder}>)
        target_include_directories(${target}Internals INTERFACE
            $<TARGET_PROPERTY:${folder},INTERFACE_INCLUDE_DIRECTORIES>)
        get_target_property(folder_headers ${folder} ZELVANO_HEADERS)
        list(APPEND headers ${folder_headers})
    endforeach()
    set_property(GLOBAL APPEND PROPERTY ZELVANO_PUBLIC_HEADERS ${headers})
    target_sources(${target} PUBLIC FILE_SET HEADERS
        BASE_DIRS "${ZELVANO_HEADER_DIR}" "${ZELVANO_GENERATED_DIR}" FILES ${headers} "${export_header}")
    target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    target_compile_features(${target} PUBLIC cxx_std_20)
    zelvano_install_library(${target} COMPONENT ${ARG_COMPONENT} REQUIRES ${ARG_REQUIRES})
endfunction()
