# How our own targets are compiled: link vrk_options; add vrk_warnings for the warnings.

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
# A debugger shows every local of a debug build. Instrumented builds run geometry over millions of triangles; -Og keeps
# that bearable.
if(VRK_SANITIZE)
    set(CMAKE_CXX_FLAGS_DEBUG "-Og -g1")
else()
    set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g")
endif()
# Not CMake's -O3, which no benchmark asks for.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_library(vrk_options INTERFACE)
target_compile_features(vrk_options INTERFACE cxx_std_20)
# The same answers on every machine: no fused multiply-add behind our back.
target_compile_options(vrk_options INTERFACE -ffp-contract=off -fPIC) # -fPIC: one precompiled header serves all
# GCC 12.2 on x86 gets "load; test what was loaded; keep it or the result" wrong: the peephole pass moves the load behind the
# test, which then reads a register that was never set. The pass runs at -O2, -O3 and -Os, under any name of the build.
target_compile_options(vrk_options INTERFACE
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-fno-peephole2>)
if(VRK_SANITIZE)
    target_compile_options(vrk_options INTERFACE -fsanitize=${VRK_SANITIZE} -fno-omit-frame-pointer)
    target_link_options(vrk_options INTERFACE -fsanitize=${VRK_SANITIZE})
    if(VRK_SANITIZE MATCHES undefined)
        target_compile_options(vrk_options INTERFACE -fno-sanitize-recover=undefined)
    endif()
endif()

add_library(vrk_warnings INTERFACE)
target_compile_options(vrk_warnings INTERFACE -Wall -Wextra $<$<BOOL:${VRK_WERROR}>:-Werror>)
if(VRK_SANITIZE)
    # Instrumented code makes GCC 12 take members of Boost's optional for uninitialised.
    target_compile_options(vrk_warnings INTERFACE -Wno-maybe-uninitialized)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Precompiled headers are cached only with these; base_dir lets clones in different folders share.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE_PROGRAM})
    add_compile_options(-fpch-preprocess)
endif()
