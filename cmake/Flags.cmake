# FCurveLibFlags: what every target of ours is compiled with. It is linked privately, so that neither an including
# project nor a consumer of the installed library sees any of it.
add_library(FCurveLibFlags INTERFACE)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    # -ffp-contract=off: a multiplication and an addition that fuse on one machine and not on another would give
    # curves different bits there.
    target_compile_options(FCurveLibFlags INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off
        $<$<BOOL:${FCURVELIB_WERROR}>:-Werror>)
endif()

if(EMSCRIPTEN)
    target_compile_options(FCurveLibFlags INTERFACE "SHELL:-include ${CMAKE_CURRENT_LIST_DIR}/EmscriptenCharconv.h")
endif()

if(FCURVELIB_SANITIZE)
    list(JOIN FCURVELIB_SANITIZE "," sanitizers)
    target_compile_options(FCurveLibFlags INTERFACE
        -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_definitions(FCurveLibFlags INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(FCurveLibFlags INTERFACE -fsanitize=${sanitizers})
endif()

if(FCURVELIB_COVERAGE)
    target_compile_options(FCurveLibFlags INTERFACE --coverage)
    target_link_options(FCurveLibFlags INTERFACE --coverage)
endif()

# fcurvelib_optimise_less(TARGET CONFIG...): in these configurations, for what runs for seconds in tests and would take
# longer to optimise: -O1 in Release, -O0 in Debug, which the trees of sanitizers are.
function(fcurvelib_optimise_less target)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        if(Release IN_LIST ARGN)
            target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
        endif()
        if(Debug IN_LIST ARGN)
            target_compile_options(${target} PRIVATE $<$<CONFIG:Debug>:-O0>)
        endif()
    endif()
endfunction()

# fcurvelib_unite(TARGET COUNT [ALWAYS]): where FCURVELIB_UNITY is on, or always, the sources of a folder are compiled
# COUNT at a time, which spares reading the same headers again. Names in unnamed namespaces differ within a folder.
function(fcurvelib_unite target count)
    if(NOT FCURVELIB_UNITY AND NOT ALWAYS IN_LIST ARGN)
        return()
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # takes the sources for headers
        target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endif()
    get_target_property(sources ${target} SOURCES)
    get_target_property(target_folder ${target} SOURCE_DIR)
    foreach(source IN LISTS sources)
        get_filename_component(source ${source} ABSOLUTE BASE_DIR ${target_folder})
        file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${source})
        get_filename_component(folder ${folder} DIRECTORY)
        string(MAKE_C_IDENTIFIER ${folder} folder)
        if(NOT DEFINED sources_of_${folder})
            set(sources_of_${folder} 0)
        endif()
        math(EXPR unit "${sources_of_${folder}} / ${count}")
        math(EXPR sources_of_${folder} "${sources_of_${folder}} + 1")
        set_source_files_properties(${source} TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP ${folder}_${unit})
    endforeach()
endfunction()
