# What an installation holds: the library, the public headers, the executable, a CMake package and a .pc file. Both
# work wherever the prefix is moved to. Components: runtime is what programs need, tools the executable with its manual,
# doc the texts and examples, development all the rest.

include( CMakePackageConfigHelpers )

set( MORVANE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/morvane" )
set( MORVANE_ZSH_FOLDER $<IF:$<BOOL:${MORVANE_PACKAGES}>,vendor-completions,site-functions> )

set( CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development )

install(
    TARGETS morvane-qv
    EXPORT morvane-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
)
install( TARGETS morvane EXPORT morvane-tool-targets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools )
if( MORVANE_STATIC )
    install( TARGETS morvane-qv-static EXPORT morvane-static-targets ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" )
    install( EXPORT morvane-static-targets NAMESPACE morvane:: DESTINATION "${MORVANE_PACKAGE_DIR}" )
endif()
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/source/qv"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    FILES_MATCHING
    PATTERN "*.h"
    PATTERN "*.hpp"
    PATTERN "*_private.h" EXCLUDE
)

# What gdb prints objects with; it finds that by the whole path of the library.
if( MORVANE_PACKAGES )
    set( MORVANE_GDB_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}" )
else()
    set( MORVANE_GDB_LIBDIR "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}" )
endif()
install(
    FILES "${PROJECT_SOURCE_DIR}/share/gdb/libmorvane-qv-gdb.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load/${MORVANE_GDB_LIBDIR}"
    RENAME "libmorvane-qv.so.${PROJECT_VERSION}-gdb.py"
    COMPONENT runtime
)
install( DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc )

if( MORVANE_PRINTED )
    install( DIRECTORY "${MORVANE_PRINTED}/man1" DESTINATION "${CMAKE_INSTALL_MANDIR}" COMPONENT tools )
    install(
        FILES "${MORVANE_PRINTED}/bash/morvane"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
        COMPONENT tools
    )
    install(
        FILES "${MORVANE_PRINTED}/zsh/_morvane"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/${MORVANE_ZSH_FOLDER}"
        COMPONENT tools
    )
endif()

install( EXPORT morvane-targets NAMESPACE morvane:: DESTINATION "${MORVANE_PACKAGE_DIR}" )
install( EXPORT morvane-tool-targets NAMESPACE morvane:: DESTINATION "${MORVANE_PACKAGE_DIR}" )
configure_package_config_file(
    cmake/morvane-config.cmake.in "${PROJECT_BINARY_DIR}/morvane-config.cmake"
    INSTALL_DESTINATION "${MORVANE_PACKAGE_DIR}"
    PATH_VARS CMAKE_INSTALL_BINDIR
)
write_basic_package_version_file( "${PROJECT_BINARY_DIR}/morvane-config-version.cmake" COMPATIBILITY SameMajorVersion )
install(
    FILES "${PROJECT_BINARY_DIR}/morvane-config.cmake" "${PROJECT_BINARY_DIR}/morvane-config-version.cmake"
          "${PROJECT_SOURCE_DIR}/cmake/MorvaneModule.cmake" "${PROJECT_SOURCE_DIR}/cmake/morvane-module.map"
    DESTINATION "${MORVANE_PACKAGE_DIR}"
)

# The way from the .pc file up to the prefix.
file( RELATIVE_PATH MORVANE_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/" )
string( REGEX REPLACE "/$" "" MORVANE_PC_PREFIX "${MORVANE_PC_PREFIX}" )
configure_file( cmake/morvane-qv.pc.in "${PROJECT_BINARY_DIR}/morvane-qv.pc" @ONLY )
install( FILES "${PROJECT_BINARY_DIR}/morvane-qv.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" )

# Of a checkout the texts are at hand. Its documentation is in build/docs, if that has been built.
if( MORVANE_PACKAGES )
    install(
        FILES README.md docs/ARCHITECTURE.md docs/PERFORMANCE.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc
    )
    install(
        DIRECTORY docs/manual DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT doc OPTIONAL
        FILES_MATCHING PATTERN "*.md"
    )
    install(
        DIRECTORY "${PROJECT_SOURCE_DIR}/build/docs/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/html" COMPONENT doc OPTIONAL
    )
    include( "${CMAKE_CURRENT_LIST_DIR}/MorvanePackages.cmake" )
endif()
