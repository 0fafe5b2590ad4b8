# What everything of the product is compiled with, and the helper that makes a target of the product:
# no C++ runtime at run time, warnings on, sanitizers where asked for, and the path of each source
# handed to it for its contract reports.

include( "${CMAKE_CURRENT_LIST_DIR}/MorvaneModule.cmake" )

set( MORVANE_WARNINGS -Wall -Wextra -Wshadow -Wundef -Wpointer-arith -Wcast-qual
                     $<$<COMPILE_LANGUAGE:CXX>:-Wno-invalid-offsetof>
)

set( MORVANE_SANITIZE_FLAGS "" )

if( MORVANE_SANITIZE )
    set( MORVANE_SANITIZE_FLAGS -fsanitize=${MORVANE_SANITIZE} -fno-omit-frame-pointer )
    if( MORVANE_SANITIZE MATCHES "undefined" )
        list( APPEND MORVANE_SANITIZE_FLAGS -fno-sanitize-recover=undefined -fno-sanitize=vptr )
    endif()
endif()

# Reals are IEEE 754 doubles at every step. The oldest floating-point unit of x86 computes with more digits and rounds
# later; the registers of SSE 2 do not.
include( CheckCXXSourceCompiles )
check_cxx_source_compiles(
    "#if defined( __i386__ ) && !defined( __SSE2_MATH__ )\n#error\n#endif\nint main() { return 0; }" MORVANE_REALS_ARE_DOUBLES
)
if( NOT MORVANE_REALS_ARE_DOUBLES )
    add_compile_options( -msse2 -mfpmath=sse )
endif()

# Files of any length, and times after 2038.
if( CMAKE_SIZEOF_VOID_P EQUAL 4 )
    add_compile_definitions( _FILE_OFFSET_BITS=64 _TIME_BITS=64 )
endif()

function( morvane_product_target target )
    set_target_properties(
        ${target}
        PROPERTIES
            CXX_STANDARD 20
            CXX_STANDARD_REQUIRED ON
            CXX_EXTENSIONS OFF
            C_STANDARD 11
            CXX_VISIBILITY_PRESET hidden
            C_VISIBILITY_PRESET hidden
            VISIBILITY_INLINES_HIDDEN ON
            LINKER_LANGUAGE C
    )
    target_compile_options(
        ${target}
        PRIVATE ${MORVANE_WARNINGS} ${MORVANE_SANITIZE_FLAGS}
                $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
                -fno-math-errno -ffp-contract=off
    )
    target_compile_definitions(
        ${target} PRIVATE $<$<OR:$<CONFIG:Debug>,$<BOOL:${MORVANE_ASSERTIONS}>>:QV___ASSERTIONS=1>
                          $<$<NOT:$<BOOL:${MORVANE_VECTORS}>>:QV___WITHOUT_VECTORS=1>
                          $<$<BOOL:${MORVANE_HARDWARE}>:QV___HARDWARE=${MORVANE_HARDWARE}>
    )
    # CMake names the C++ run-time library wherever there are C++ sources; nothing needs it.
    target_link_options( ${target} PRIVATE -Wl,--as-needed ${MORVANE_SANITIZE_FLAGS} )
    if( MORVANE_SANITIZE )
        # The sanitizers' own run-time libraries are C++.
        set_target_properties( ${target} PROPERTIES LINKER_LANGUAGE CXX )
    endif()

    morvane_source_paths( ${target} )
endfunction()
