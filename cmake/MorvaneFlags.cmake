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
    )
    # CMake names the C++ run-time library wherever there are C++ sources; nothing needs it.
    target_link_options( ${target} PRIVATE -Wl,--as-needed ${MORVANE_SANITIZE_FLAGS} )
    if( MORVANE_SANITIZE )
        # The sanitizers' own run-time libraries are C++.
        set_target_properties( ${target} PROPERTIES LINKER_LANGUAGE CXX )
    endif()

    morvane_source_paths( ${target} )
endfunction()
