# What all targets of the project share: language level, visibility, warnings, sanitizers, ccache, and the helpers
# that declare a room's objects, a library, a test and a benchmark.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Libraries show what their export macros mark, and nothing else.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    string(REPLACE "-O2" "-O3" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
endif()

find_program(ZEMTAR_CCACHE ccache)
if(ZEMTAR_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ZEMTAR_CCACHE}")
endif()

# Programs and tests find the libraries beside them, in the build tree and when installed.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

add_library(zemtar_options INTERFACE)
target_compile_options(zemtar_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual
    # Results must be the same on every machine: no fused multiply-add behind the source's back.
    -ffp-contract=off
    # NOTE: g++ 12 warns falsely of overlaps in `"text" + std::string` (GCC bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
if(ZEMTAR_WERROR)
    target_compile_options(zemtar_options INTERFACE -Werror)
endif()
if(ZEMTAR_SANITIZE)
    # Instrumented code of std::function and std::regex makes g++ see uninitialised reads that are none.
    target_compile_options(zemtar_options INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -g1 -O1
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(zemtar_options INTERFACE -fsanitize=address,undefined)
    if(ZEMTAR_BUILD_FUZZ AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(zemtar_options INTERFACE -fsanitize=fuzzer-no-link)
        target_link_options(zemtar_options INTERFACE -fsanitize=fuzzer-no-link)
    endif()
endif()

if(ZEMTAR_SANITIZE_THREADS)
    target_compile_options(zemtar_options INTERFACE
        -fsanitize=thread -g1 -O1 $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(zemtar_options INTERFACE -fsanitize=thread)
endif()

# zemtar_objects(NAME SOURCES ... LIBS ...): one room as an object library that knows only what LIBS give it.
function(zemtar_objects name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_library(${name} OBJECT ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "${ZEMTAR_SOURCE_ROOT}")
    target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE zemtar_options)
endfunction()

# zemtar_library(NAME SOURCES ... LIBS ... PRIVATE ...): a shared library that carries the project's version and
# passes on the language level. LIBS belong to its interface.
function(zemtar_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;PRIVATE" ${ARGN})
    add_library(${name} SHARED ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE ${ARG_PRIVATE} zemtar_options)
endfunction()

# zemtar_static_twin(NAME LIBS ... PRIVATE ...): NAME_static, the same rooms as an archive. Tests and benchmarks that
# name NAME get it, and so reach what the shared library hides.
function(zemtar_static_twin name)
    cmake_parse_arguments(ARG "" "" "LIBS;PRIVATE" ${ARGN})
    add_library(${name}_static STATIC EXCLUDE_FROM_ALL)
    zemtar_use_static_twins(ARG_LIBS)
    target_link_libraries(${name}_static PUBLIC ${ARG_LIBS} PRIVATE ${ARG_PRIVATE} zemtar_options)
endfunction()

# zemtar_use_static_twins(LIST): in the list, the static twin instead of each library that has one.
function(zemtar_use_static_twins list)
    set(twins "")
    foreach(library ${${list}})
        if(TARGET ${library}_static)
            set(library ${library}_static)
        endif()
        list(APPEND twins ${library})
    endforeach()
    set(${list} ${twins} PARENT_SCOPE)
endfunction()

# zemtar_add_test(NAME SOURCES ... LIBS ... [LABELS ...] [WINDOWED]): a GoogleTest program; ctest runs it as one
# test. A WINDOWED one opens real windows, on a display of its own where the machine has none.
function(zemtar_add_test name)
    cmake_parse_arguments(ARG "WINDOWED" "" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    zemtar_use_static_twins(ARG_LIBS)
    target_include_directories(${name} PRIVATE "${ZEMTAR_SOURCE_ROOT}")
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gmock GTest::gtest GTest::gtest_main zemtar_options)
    target_compile_definitions(${name} PRIVATE
        ZEMTAR_SOURCE_DIR="${PROJECT_SOURCE_DIR}" ZEMTAR_BINARY_DIR="${CMAKE_BINARY_DIR}")
    set(platform "QT_QPA_PLATFORM=offscreen")
    set(launcher "")
    set(leaks "")
    if(ARG_WINDOWED)
        set(launcher "${PROJECT_SOURCE_DIR}/tests/support/with_display.sh")
        # Graphics drivers are unloaded before leaks are looked for; theirs could not be told from ours.
        set(leaks ";ASAN_OPTIONS=detect_leaks=0")
        if(APPLE)
            set(platform "QT_QPA_PLATFORM=cocoa")
        else()
            set(platform "QT_QPA_PLATFORM=xcb")
        endif()
    endif()
    add_test(NAME ${name} COMMAND ${launcher} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "${platform};LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp;\
TSAN_OPTIONS=ignore_noninstrumented_modules=1:suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp${leaks}"
        TIMEOUT 1800 LABELS "${ARG_LABELS}")
endfunction()

# zemtar_add_bench(NAME SOURCES ... LIBS ...): a Google Benchmark program.
function(zemtar_add_bench name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    zemtar_use_static_twins(ARG_LIBS)
    target_include_directories(${name} PRIVATE "${ZEMTAR_SOURCE_ROOT}")
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} benchmark::benchmark zemtar_options)
    target_compile_definitions(${name} PRIVATE ZEMTAR_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
endfunction()
