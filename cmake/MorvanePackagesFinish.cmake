# Gives the packages what cpack has no word for: the field that tells which may stand side by side, the size after
# stripping, and a library that tells the loader by its trigger alone, without scripts. Those of symbols find their
# copyright and changes in the package that they belong to.

foreach( line IN LISTS CPACK_MORVANE_SETTINGS )
    string( REGEX MATCH "^([^=]+)=(.*)$" line "${line}" )
    set( ${CMAKE_MATCH_1} "${CMAKE_MATCH_2}" )
endforeach()

set( unpacked "${SCRATCH}/unpacked" )

foreach( file IN LISTS CPACK_PACKAGE_FILES )
    file( REMOVE_RECURSE "${unpacked}" )
    execute_process( COMMAND dpkg-deb -R "${file}" "${unpacked}" COMMAND_ERROR_IS_FATAL ANY )
    file( REMOVE "${unpacked}/DEBIAN/postinst" "${unpacked}/DEBIAN/postrm" )

    file( READ "${unpacked}/DEBIAN/control" control )
    string( REGEX REPLACE "\n(Package-Type:[^\n]*|\n*$)" "" control "${control}" )
    if( file MATCHES "-dbgsym_|/libmorvane-qv([0-9]+|-dev)_" )
        string( APPEND control "\nMulti-Arch: same\n" )
    else()
        string( APPEND control "\nMulti-Arch: foreign\n" )
    endif()

    if( file MATCHES "([^/]+)-dbgsym_" )
        file( MAKE_DIRECTORY "${unpacked}/usr/share/doc" )
        file( CREATE_LINK "${CMAKE_MATCH_1}" "${unpacked}/usr/share/doc/${CMAKE_MATCH_1}-dbgsym" SYMBOLIC )
        execute_process(
            COMMAND sh -c "find usr -type f -exec md5sum {} + >DEBIAN/md5sums" WORKING_DIRECTORY "${unpacked}"
                    COMMAND_ERROR_IS_FATAL ANY
        )
    endif()

    execute_process(
        COMMAND du -sk --apparent-size --exclude=DEBIAN "${unpacked}" OUTPUT_VARIABLE size COMMAND_ERROR_IS_FATAL ANY
    )
    string( REGEX MATCH "^[0-9]+" size "${size}" )
    string( REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${size}" control "${control}" )
    file( WRITE "${unpacked}/DEBIAN/control" "${control}" )
    execute_process( COMMAND chmod -R u=rwX,go=rX "${unpacked}" COMMAND_ERROR_IS_FATAL ANY )
    execute_process(
        COMMAND dpkg-deb -Zxz --root-owner-group -b "${unpacked}" "${file}" COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET
    )
endforeach()
