# What an installation holds: the library, the public headers, the executable, a CMake package and a .pc file. Both
# work wherever the prefix is moved to.

include( CMakePackageConfigHelpers )

set( MORVANE_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/morvane" )

install(
    TARGETS morvane-qv morvane
    EXPORT morvane-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
)
install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/source/qv"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    FILES_MATCHING
    PATTERN "*.h"
    PATTERN "*.hpp"
    PATTERN "*_private.h" EXCLUDE
)

# What gdb prints objects with; it finds that by the whole path of the library.
set( MORVANE_GDB_LIBDIR "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}" CACHE STRING
                        "The folder of the library when it is used, where that is not the one it is installed into"
)
install(
    FILES "${PROJECT_SOURCE_DIR}/share/gdb/libmorvane-qv-gdb.py"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load/${MORVANE_GDB_LIBDIR}"
    RENAME "libmorvane-qv.so.${PROJECT_VERSION}-gdb.py"
)

if( MORVANE_PRINTED )
    install( DIRECTORY "${MORVANE_PRINTED}/man1" DESTINATION "${CMAKE_INSTALL_MANDIR}" )
    install( FILES "${MORVANE_PRINTED}/bash/morvane" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" )
    install( FILES "${MORVANE_PRINTED}/zsh/_morvane" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" )
endif()

install( EXPORT morvane-targets NAMESPACE morvane:: DESTINATION "${MORVANE_PACKAGE_DIR}" )
configure_package_config_file(
    cmake/morvane-config.cmake.in "${PROJECT_BINARY_DIR}/morvane-config.cmake"
    INSTALL_DESTINATION "${MORVANE_PACKAGE_DIR}"
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
