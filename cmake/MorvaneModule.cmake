# morvane_add_module( NAME SOURCE... [DEPENDS NAME...] )
#
# Builds libmorvane-NAME.so, a module of the product, from sources in C11 or C++20 (or later, where CMAKE_C_STANDARD or
# CMAKE_CXX_STANDARD says so). The target is morvane-NAME. NAME is 1 to 32 of a to z, digits and at most one underscore;
# it begins with a letter and ends with none but a letter or a digit.
#
#   find_package( morvane 4 REQUIRED )
#   morvane_add_module( greeter greeter.c )
#   morvane_add_module( host host.c DEPENDS greeter )
#
# A module is linked with those that it DEPENDS on, so that it can call what they export, and QV_MODULE_DEFINE() names
# them in its record, so that they are loaded before it. They are modules of the project that have been added before, or
# lie in the folder of installed ones, MORVANE_MODULE_DIR: installed modules go there too, where programs that use this
# installation find them.
#
#   install( TARGETS morvane-greeter morvane-host LIBRARY DESTINATION "${MORVANE_MODULE_DIR}" )
#
# The file exports the module object and what its sources mark with QV_API, or variables with QV_API_DATA, all of which has
# C linkage; it may leave no name undefined. The sources are compiled with QV_MODULE_NAME, which qv/qv_extend.h needs, and each with the path that
# its contract reports bear.

# Says that a source is a part of a family: its contract reports bear the path of the family's main source.
function( morvane_source_part part family )
    set_property( SOURCE "${part}" PROPERTY MORVANE_FAMILY "${family}.cpp" )
    if( NOT EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${part}" OR NOT EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${family}.cpp" )
        message( FATAL_ERROR "morvane_source_part: no ${part}, or no ${family}.cpp" )
    endif()
endfunction()

# Hands the path of each source, from the project's folder and without its ending, to the source; the family's path to
# a source that is a part of one.
function( morvane_source_paths target )
    get_target_property( sources ${target} SOURCES )
    get_target_property( directory ${target} SOURCE_DIR )
    foreach( source IN LISTS sources )
        if( source MATCHES "\\.(c|cc|cpp|cxx)$" )
            get_property( family SOURCE "${source}" PROPERTY MORVANE_FAMILY )
            if( NOT family )
                set( family "${source}" )
            endif()
            get_filename_component( absolute "${family}" ABSOLUTE BASE_DIR "${directory}" )
            file( RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${absolute}" )
            string( REGEX REPLACE "\\.[a-z]+$" "" relative "${relative}" )
            set_property(
                SOURCE "${source}"
                APPEND
                PROPERTY COMPILE_DEFINITIONS "QV___SOURCE=\"${relative}\""
            )
        endif()
    endforeach()
endfunction()

function( morvane_add_module name )
    string( LENGTH "${name}" length )
    if( NOT name MATCHES "^[a-z][a-z0-9]*(_[a-z0-9]+)?$" OR length GREATER 32 )
        message( FATAL_ERROR "morvane_add_module: ${name} cannot be the name of a module" )
    endif()
    cmake_parse_arguments( PARSE_ARGV 1 module "" "" "DEPENDS" )
    if( NOT module_UNPARSED_ARGUMENTS )
        message( FATAL_ERROR "morvane_add_module: ${name} has no sources" )
    endif()

    set( target morvane-${name} )
    set( map "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/morvane-module.map" )
    add_library( ${target} SHARED ${module_UNPARSED_ARGUMENTS} ) # not MODULE: others may be linked with it
    set_target_properties(
        ${target}
        PROPERTIES
            PREFIX lib
            SUFFIX .so
            C_VISIBILITY_PRESET hidden
            CXX_VISIBILITY_PRESET hidden
            VISIBILITY_INLINES_HIDDEN ON
            C_STANDARD_REQUIRED ON
            CXX_STANDARD_REQUIRED ON
    )
    if( NOT CMAKE_C_STANDARD )
        set_target_properties( ${target} PROPERTIES C_STANDARD 11 )
    endif()
    if( NOT CMAKE_CXX_STANDARD )
        set_target_properties( ${target} PROPERTIES CXX_STANDARD 20 )
    endif()
    target_compile_definitions( ${target} PRIVATE QV_MODULE_NAME=${name} )
    target_compile_options( ${target} PRIVATE -U${name} ) # compilers define a few such names, as linux
    morvane_source_paths( ${target} )

    # What templates of C++ headers bring along is visible whatever the compiler is told; only C names get out.
    target_link_options(
        ${target} PRIVATE "LINKER:--version-script=${map}" "LINKER:--exclude-libs,ALL" "LINKER:--as-needed"
    )
    if( NOT MORVANE_SANITIZE )
        target_link_options( ${target} PRIVATE "LINKER:-z,defs" )
    endif()
    set_property( TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}" )
    target_link_libraries( ${target} PRIVATE morvane::qv )

    foreach( other IN LISTS module_DEPENDS )
        if( TARGET morvane-${other} )
            target_link_libraries( ${target} PRIVATE morvane-${other} )
        elseif( MORVANE_MODULE_DIR AND EXISTS "${MORVANE_MODULE_DIR}/libmorvane-${other}.so" )
            target_link_libraries( ${target} PRIVATE "${MORVANE_MODULE_DIR}/libmorvane-${other}.so" )
        else()
            message( FATAL_ERROR "morvane_add_module: ${name} depends on ${other}, which is not there" )
        endif()
        # The loader finds it where this module is, too.
        set_property( TARGET ${target} APPEND PROPERTY BUILD_RPATH "\$ORIGIN" )
        set_property( TARGET ${target} APPEND PROPERTY INSTALL_RPATH "\$ORIGIN" )
    endforeach()
    string( REPLACE ";" " " deps "${module_DEPENDS}" )
    target_compile_definitions( ${target} PRIVATE "QV_MODULE_DEPS=\"${deps}\"" )
endfunction()
