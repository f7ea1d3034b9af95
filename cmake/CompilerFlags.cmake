# Flags shared by everything that is compiled in this project: an interface target that our targets link privately,
# so that the flags never leak into the projects that use the library.
add_library(lumo25d_flags INTERFACE)

# A fused multiply-add rounds once where the error analysis of the predicates counts two roundings: contraction
# would change the sign of near-degenerate determinants from one compiler to the next.
target_compile_options(lumo25d_flags INTERFACE -ffp-contract=off)

# Failed conditions print the source file: keep that independent of where the sources were checked out.
target_compile_options(lumo25d_flags INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

# Warnings are for us; who builds our sources as a part of another project need not see them.
if(PROJECT_IS_TOP_LEVEL OR LUMO25D_WARNINGS_AS_ERRORS)
    target_compile_options(lumo25d_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
        -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wformat=2)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU") # Clang's means double to long double too, as the tests' references do it
        target_compile_options(lumo25d_flags INTERFACE -Wdouble-promotion)
    endif()
endif()
if(CMAKE_UNITY_BUILD) # a source that is included is taken for a header, and names of several sources meet
    target_compile_options(lumo25d_flags INTERFACE -Wno-shadow
        $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(LUMO25D_WARNINGS_AS_ERRORS)
    target_compile_options(lumo25d_flags INTERFACE -Werror)
endif()

if(LUMO25D_SANITIZE)
    target_compile_options(lumo25d_flags INTERFACE -fsanitize=${LUMO25D_SANITIZE} -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(lumo25d_flags INTERFACE -fsanitize=${LUMO25D_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC's analysis doesn't see through the instrumentation and warns about the standard library's own code.
        target_compile_options(lumo25d_flags INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()
