# Makes of the installed components what Debian wants to have in packages. cpack runs it when each component stands in a
# folder of its own and before it packs them.

foreach( line IN LISTS CPACK_MORVANE_SETTINGS )
    string( REGEX MATCH "^([^=]+)=(.*)$" line "${line}" )
    set( ${CMAKE_MATCH_1} "${CMAKE_MATCH_2}" )
endforeach()

function( run )
    execute_process( COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY )
endfunction()

file( MAKE_DIRECTORY "${SCRATCH}" )

# The time of the changes, and so of all that is compressed: SOURCE_DATE_EPOCH, where set, makes it reproducible.
string( TIMESTAMP DATE "%a, %d %b %Y %H:%M:%S +0000" UTC )
configure_file( "${SOURCES}/cmake/debian/changelog.in" "${SCRATCH}/changelog.Debian" @ONLY )
configure_file( "${SOURCES}/cmake/debian/symbols.in" "${SCRATCH}/symbols.in" @ONLY )
configure_file( "${SOURCES}/cmake/debian/triggers" "${SCRATCH}/triggers" COPYONLY )

foreach( component IN LISTS CPACK_COMPONENTS_ALL )
    string( TOUPPER ${component} upper )
    set( package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME} )
    set( root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}" )
    set( documents "${root}/usr/share/doc/${package}" )

    file( COPY "${SOURCES}/cmake/debian/copyright" "${SCRATCH}/changelog.Debian" DESTINATION "${documents}" )
    file( REMOVE "${documents}/CHANGELOG.md" )
    configure_file( "${SOURCES}/CHANGELOG.md" "${documents}/changelog" COPYONLY )

    file( GLOB_RECURSE compressed "${root}/usr/share/man/*.[1-9]" )
    run( gzip -9n "${documents}/changelog" "${documents}/changelog.Debian" ${compressed} )

    # The archive keeps what it is linked with and no more.
    file( GLOB_RECURSE archives "${root}/usr/lib/*.a" )
    if( archives )
        run( ${OBJCOPY} --enable-deterministic-archives --strip-debug --remove-section=.comment ${archives} )
    endif()

    file( GLOB library "${root}/usr/lib/*/libmorvane-qv.so.*.*" )
    if( library )
        run( dpkg-gensymbols -q -p${package} -v${PROJECT_VERSION} "-P${SCRATCH}" "-e${library}" "-I${SCRATCH}/symbols.in"
             "-O${SCRATCH}/symbols"
        )
    endif()
endforeach()

# The mode of every file and folder, whatever the umask of the build was.
run( chmod -R u=rwX,go=rX "${CPACK_TEMPORARY_INSTALL_DIRECTORY}" )
