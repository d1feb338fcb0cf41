# What FCurveLib decides for a whole build tree, and therefore only when the tree is its own.

get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(NOT CMAKE_BUILD_TYPE AND NOT multi_config)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(FCURVELIB_CCACHE ccache DOC "Compiler cache, used when found")
    mark_as_advanced(FCURVELIB_CCACHE)
    if(FCURVELIB_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${FCURVELIB_CCACHE})
    endif()
endif()
