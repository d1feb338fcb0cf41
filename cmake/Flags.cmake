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
