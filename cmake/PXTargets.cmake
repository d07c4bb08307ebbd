# What every target of the project shares: language level, warnings, the Qt version to hold to.
include_guard(GLOBAL)

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON) # see tools/check headers

include_directories("${PROJECT_SOURCE_DIR}") # a header is included as "<folder>/<name>.h"
add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${PX_WERROR}>:-Werror>)
# The files that are opened come from anywhere; a sanitizer's build, which finds more, is no release.
add_compile_options(
    "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro,-z,now>")
if(PX_QT_MAJOR EQUAL 6)
    add_compile_definitions(QT_DISABLE_DEPRECATED_BEFORE=0x060400 QT_WARN_DEPRECATED_UP_TO=0x060400)
else()
    add_compile_definitions(QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
endif()
if(PX_BUILD_FUZZERS)
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

# px_add_library(<target> SOURCES <file>... [LINK <library>...])
# One library target a folder; the headers among its files are its interface.
function(px_add_library target)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_library(${target} STATIC ${arg_SOURCES})
    list(FILTER arg_SOURCES INCLUDE REGEX "\\.h$")
    target_sources(${target} PUBLIC
        FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_SOURCES})
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_link_libraries(${target} PUBLIC ${arg_LINK})
endfunction()

# px_add_headers(<target> HEADERS <file>... [LINK <library>...])
# Headers that belong to no library, and what they need: they compile alone as well.
function(px_add_headers target)
    cmake_parse_arguments(arg "" "" "HEADERS;LINK" ${ARGN})
    if(NOT TARGET ${target})
        add_library(${target} INTERFACE)
    endif()
    target_sources(${target} INTERFACE
        FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
    target_link_libraries(${target} INTERFACE ${arg_LINK})
endfunction()

# px_add_program(<target> SOURCES <file>... [LINK <library>...])
# A program of the build tree's bin/.
function(px_add_program target)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${target} ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY "${PX_BIN_DIR}"
        UNITY_BUILD OFF) # most have one source
    target_link_libraries(${target} PRIVATE ${arg_LINK})
    if(CMAKE_BUILD_TYPE STREQUAL "Coverage")
        target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/keep_counts.cpp")
        target_link_options(${target} PRIVATE LINKER:--wrap=_exit)
    endif()
endfunction()
