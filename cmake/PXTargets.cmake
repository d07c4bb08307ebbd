# What every target of the project shares: language level, warnings, the Qt version to hold to.
include_guard(GLOBAL)

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(px_options INTERFACE)
target_compile_features(px_options INTERFACE cxx_std_17)
target_compile_options(px_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${PX_WERROR}>:-Werror>)
# The files that are opened come from anywhere; a sanitizer's build, which finds more, is no release.
target_compile_options(px_options INTERFACE
    $<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2;-fstack-protector-strong>)
target_link_options(px_options INTERFACE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now>)
if(PX_QT_MAJOR EQUAL 6)
    target_compile_definitions(px_options INTERFACE QT_DISABLE_DEPRECATED_BEFORE=0x060400)
else()
    target_compile_definitions(px_options INTERFACE QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
endif()
if(PX_BUILD_FUZZERS)
    target_compile_options(px_options INTERFACE -fsanitize=fuzzer-no-link,address,undefined)
    target_link_options(px_options INTERFACE -fsanitize=address,undefined)
endif()

function(px_configure_target target)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        AUTOMOC ON
        POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(${target} PRIVATE px_options)
endfunction()

# px_add_library(<target> SOURCES <file>... [LINK <library>...])
# One library target a folder; its headers are included as "<folder>/<name>.h".
function(px_add_library target)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_library(${target} STATIC ${arg_SOURCES})
    px_configure_target(${target})
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
    target_link_libraries(${target} PUBLIC ${arg_LINK})
endfunction()

# px_add_program(<target> SOURCES <file>... [LINK <library>...])
# A program of the build tree's bin/.
function(px_add_program target)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${target} ${arg_SOURCES})
    px_configure_target(${target})
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PX_BIN_DIR}")
    target_link_libraries(${target} PRIVATE ${arg_LINK})
endfunction()
