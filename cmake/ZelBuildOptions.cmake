# Compiler settings of this project's own targets. They are linked privately, so that nothing of them reaches a
# user of the installed library.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

add_library(zel_build_options INTERFACE)
target_compile_features(zel_build_options INTERFACE cxx_std_20)
target_compile_options(
    zel_build_options
    INTERFACE
        -Wall
        -Wextra
        -Wshadow
        -Wconversion
        -Woverloaded-virtual
        $<$<BOOL:${ZEL_WARNINGS_AS_ERRORS}>:-Werror>
        # Error frames and log lines name source files relative to the source tree.
        "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/="
)
target_compile_definitions(
    zel_build_options
    INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_FOREACH QT_MESSAGELOGCONTEXT
              # libstdc++'s cheap bounds and contract checks, in debug builds only.
              $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>
)
if(ZEL_SANITIZE)
    target_compile_options(
        zel_build_options
        INTERFACE -fsanitize=${ZEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
                  # Instrumented code misleads GCC's look for uninitialized values.
                  $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
    )
    target_link_options(zel_build_options INTERFACE -fsanitize=${ZEL_SANITIZE})
endif()

# What the library, its static twin and the tools may include; see docs/architecture.md.
add_library(zel_headers INTERFACE)
target_include_directories(zel_headers INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/algo/src")
