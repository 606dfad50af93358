# Language level, warnings and instrumentation, the same for every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2)
if(VEL_WERROR)
    add_compile_options(-Werror)
endif()

# At -O3, GCC 12 warns wrongly that the sum of two strings copies onto itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    add_compile_options($<$<CONFIG:Release>:-Wno-restrict>)
endif()

if(VEL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()

# Several threads of a program update the same counters. Without atomic updates some
# counts are lost, and a report with more branches taken than reached fails.
set(VEL_COVERAGE_FLAGS --coverage -fprofile-update=atomic)
if(VEL_COVERAGE)
    add_compile_options(${VEL_COVERAGE_FLAGS} -O0)
    add_link_options(--coverage)
endif()

# Every include is written from the root of the tree.
include_directories(${CMAKE_SOURCE_DIR})

# With ccache, compiling the same text again takes almost no time.
find_program(VEL_CCACHE ccache)
if(VEL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VEL_CCACHE})
endif()
