# How tests are added: programs, what they need, and how CTest runs them.
include_guard(GLOBAL)
find_package(Qt${PX_QT_MAJOR} REQUIRED COMPONENTS Test Network)
# Qt 6 defines each target's own folders here too, for QFINDTESTDATA, which no test uses; no two targets
# could share precompiled headers then.
set_property(TARGET Qt${PX_QT_MAJOR}::Test PROPERTY INTERFACE_COMPILE_DEFINITIONS QT_TESTLIB_LIB)

# The tests' own install tree: a program in tests/bin finds core, texts and settings as the viewer
# does.
set(PX_TEST_DIR "${PROJECT_BINARY_DIR}/tests")
file(MAKE_DIRECTORY "${PX_TEST_DIR}/bin" "${PX_TEST_DIR}/config")
foreach(link languages settings bin/PXSignatureCoreV10.so)
    file(CREATE_LINK "${PROJECT_BINARY_DIR}/${link}" "${PX_TEST_DIR}/${link}" SYMBOLIC)
endforeach()

# px_add_moc(<target> <source>...)
# The moc step of those sources that say Q_OBJECT, without one more target that looks for them beside
# each of so many; "x.cpp" includes what comes of it as "x.moc".
set(CMAKE_AUTOMOC OFF)
function(px_add_moc target)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_moc")
    file(MAKE_DIRECTORY "${folder}")
    target_include_directories(${target} PRIVATE "${folder}")
    foreach(source IN LISTS ARGN)
        file(STRINGS "${source}" found REGEX Q_OBJECT LIMIT_COUNT 1)
        get_filename_component(name "${source}" NAME_WE)
        set(generated "${folder}/${name}.moc")
        if(source MATCHES "\\.h$")
            set(generated "${folder}/moc_${name}.cpp")
        endif()
        get_target_property(known ${target} SOURCES)
        if(found AND NOT generated IN_LIST known)
            qt_generate_moc("${source}" "${generated}" TARGET ${target})
            target_sources(${target} PRIVATE "${generated}")
        endif()
    endforeach()
endfunction()

# px_add_precompiled_headers(<kind> <library>...)
# The toolkit's test headers, compiled once for all tests that have the kind's libraries.
function(px_add_precompiled_headers kind)
    file(CONFIGURE OUTPUT "${PX_TEST_DIR}/precompiled.cpp" CONTENT "int main() {}\n")
    add_executable(px_precompiled_${kind} "${PX_TEST_DIR}/precompiled.cpp")
    target_precompile_headers(px_precompiled_${kind} PRIVATE <QTest>)
    target_link_libraries(px_precompiled_${kind} PRIVATE ${ARGN})
endfunction()

# px_kind_of(<variable> <library>...): the kind of precompiled headers for these libraries, if there is one.
function(px_kind_of variable)
    set(kind "")
    if(ARGN MATCHES Network)
    elseif(pxapp IN_LIST ARGN)
        set(kind window)
    elseif(NOT ARGN MATCHES "Widgets|Gui")
        set(kind core)
    endif()
    set(${variable} "${kind}" PARENT_SCOPE)
endfunction()

# px_add_together(<variable> <test> SOURCES <file>... LINK <library>...)
# The test's first source becomes part of one that holds all of the folder and the same libraries, and is
# compiled once for their programs: each starts at a main of its own. The variable tells what to link with.
# No two tests of a folder define one name, therefore.
function(px_add_together variable test)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}" "${CMAKE_CURRENT_SOURCE_DIR}")
    string(MAKE_C_IDENTIFIER "${folder}_${arg_LINK}" together)
    set(${variable} ${together} PARENT_SCOPE)
    if(NOT TARGET ${together})
        add_library(${together} OBJECT "${PX_TEST_DIR}/${together}.cpp")
        target_link_libraries(${together} PUBLIC ${arg_LINK} Qt${PX_QT_MAJOR}::Test)
        px_kind_of(kind ${arg_LINK})
        target_precompile_headers(${together} REUSE_FROM px_precompiled_${kind})
        # What is no main file warns of that linkage; and it goes into programs, for which the headers are.
        target_compile_options(${together} PRIVATE -Wno-subobject-linkage -fPIE)
        file(GENERATE OUTPUT "${PX_TEST_DIR}/${together}.cpp"
            CONTENT "$<JOIN:$<TARGET_PROPERTY:${together},PX_TESTS>,\n>\n")
    endif()
    px_add_moc(${together} ${arg_SOURCES})
    list(GET arg_SOURCES 0 source)
    get_filename_component(path "${source}" ABSOLUTE)
    set_property(TARGET ${together} APPEND PROPERTY PX_TESTS
        "#define main main_of_${test}" "#include \"${path}\"" "#undef main")
endfunction()

# px_test_folder(<variable>): the folder below tests/ that is being configured, whose tests bear its
# name as a label. The target check_<folder> builds and runs them alone.
function(px_test_folder variable)
    file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}/tests" "${CMAKE_CURRENT_SOURCE_DIR}")
    string(REGEX REPLACE "/.*" "" folder "${folder}")
    if(NOT TARGET check_${folder})
        add_custom_target(check_${folder} USES_TERMINAL
            WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
            COMMAND "${CMAKE_CTEST_COMMAND}" --output-on-failure -j 4 -L "^${folder}$")
    endif()
    set(${variable} ${folder} PARENT_SCOPE)
endfunction()

# px_add_probe(<name> SOURCES <file>... [LINK <library>...])
# A program that tests start, and copy into install trees of their own.
function(px_add_probe name)
    px_add_program(${name} ${ARGN})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PX_TEST_DIR}/bin")
endfunction()

# px_add_core(<kind> SOURCES <file>... [LINK <library>...])
# A signature core that tests put in the place of the default one: core_<kind>, in cores/<kind>.
function(px_add_core kind)
    cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
    add_library(core_${kind} MODULE ${arg_SOURCES})
    set_target_properties(core_${kind} PROPERTIES
        PREFIX ""
        OUTPUT_NAME PXSignatureCoreV10
        CXX_VISIBILITY_PRESET hidden
        LIBRARY_OUTPUT_DIRECTORY "${PX_TEST_DIR}/cores/${kind}")
    target_link_libraries(core_${kind} PRIVATE ${arg_LINK})
    px_add_moc(core_${kind} ${arg_SOURCES})
endfunction()

# px_run_test(<name> <program> [ARGUMENTS <argument>...] [SECTION <CN|TW|EN>] [GUI] [TIMEOUT <seconds>])
# CTest runs the program, which speaks the section's language (EN unless said) and tells what fails; run
# by hand it tells all. GUI: it gets an X server of its own. Such tests come first: they are the quickest
# to tell that something is wrong.
function(px_run_test name program)
    cmake_parse_arguments(arg "GUI" "TIMEOUT;SECTION" "ARGUMENTS;SOURCES;LINK" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 600)
    endif()
    if(NOT arg_SECTION)
        set(arg_SECTION EN)
    endif()
    set(display "")
    if(arg_GUI)
        set(display "${PROJECT_SOURCE_DIR}/tools/with-xvfb")
    endif()
    add_test(NAME ${name} COMMAND ${display} $<TARGET_FILE:${program}> -silent ${arg_ARGUMENTS})
    # The user's own settings must not decide what a test sees, and no test needs OpenGL, whose
    # drivers leak.
    set(suppressions "suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0")
    set(environment
        "LSAN_OPTIONS=${suppressions}"
        QT_XCB_GL_INTEGRATION=none
        QT_LOGGING_RULES=
        LC_ALL=C.UTF-8
        LANGUAGE=
        TZ=UTC
        "XDG_CONFIG_HOME=${PX_TEST_DIR}/config"
        "PX_CONFIG_PATH=${PROJECT_BINARY_DIR}/settings/${arg_SECTION}"
        PX_EXPECTED_SECTION=${arg_SECTION})
    px_test_folder(folder)
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT}
        COST 1000
        LABELS ${folder}
        ENVIRONMENT "${environment}")
endfunction()

# px_add_test(<name> SOURCES <file>... [LINK <library>...] [GUI] [TIMEOUT <seconds>])
# A Qt Test program that CTest runs.
function(px_add_test name)
    cmake_parse_arguments(arg "GUI" "TIMEOUT" "SOURCES;LINK" ${ARGN})
    px_kind_of(kind ${arg_LINK})
    list(GET arg_SOURCES 0 source)
    # What replaces functions of libraries does so for one program alone.
    file(STRINGS "${source}" replaced REGEX "__(wrap|libc)_|operator new\\(|dlsym\\(" LIMIT_COUNT 1)
    if(PX_TESTS_TOGETHER AND kind AND NOT replaced)
        px_add_together(together ${name} SOURCES ${arg_SOURCES} LINK ${arg_LINK})
        list(POP_FRONT arg_SOURCES)
        px_add_probe(${name} SOURCES ${arg_SOURCES} LINK ${together})
        string(LENGTH "main_of_${name}" length)
        target_link_options(${name} PRIVATE LINKER:--defsym=main=_Z${length}main_of_${name}iPPc)
    else()
        px_add_probe(${name} SOURCES ${arg_SOURCES} LINK ${arg_LINK} Qt${PX_QT_MAJOR}::Test)
        px_add_moc(${name} ${arg_SOURCES})
        if(kind)
            target_precompile_headers(${name} REUSE_FROM px_precompiled_${kind})
        endif()
    endif()
    add_dependencies(${name} PXSignatureCoreV10)
    px_run_test(${name} ${name} ${ARGN})
    px_test_folder(folder)
    add_dependencies(check_${folder} ${name})
endfunction()
