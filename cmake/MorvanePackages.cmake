# The Debian packages, one for each component of the installation; cpack makes them of a build that has MORVANE_PACKAGES.
# The library and the executable are stripped, and their symbols stand in packages of their own beside them.

set( MORVANE_MAINTAINER "The morvane maintainers <maintainers@morvane.example>" CACHE STRING "Who answers for packages" )
set( MORVANE_PACKAGE_RELEASE 1 CACHE STRING "What counts the packages of one version" )
set( MORVANE_PACKAGE_SCRATCH "${PROJECT_BINARY_DIR}/debian" )
set( MORVANE_PACKAGE_VERSION "${PROJECT_VERSION}-${MORVANE_PACKAGE_RELEASE}" )

set( CPACK_GENERATOR DEB )
set( CPACK_PACKAGE_NAME morvane )
set( CPACK_PACKAGE_VERSION "${PROJECT_VERSION}" )
set( CPACK_PACKAGE_CONTACT "${MORVANE_MAINTAINER}" )
set( CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake" ) # the default: not printed
set( CPACK_PACKAGING_INSTALL_PREFIX /usr )
set( CPACK_OUTPUT_FILE_PREFIX "${PROJECT_BINARY_DIR}/../packages" )
set( CPACK_COMPONENTS_ALL runtime development tools doc )
set( CPACK_COMPONENTS_GROUPING IGNORE )
set( CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
     OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
)

set( CPACK_DEB_COMPONENT_INSTALL ON )
set( CPACK_DEBIAN_FILE_NAME DEB-DEFAULT )
set( CPACK_DEBIAN_COMPRESSION_TYPE xz )
set( CPACK_DEBIAN_PACKAGE_RELEASE "${MORVANE_PACKAGE_RELEASE}" )
set( CPACK_DEBIAN_PACKAGE_SOURCE morvane )
set( CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON )

# What all packages of the product say of it.
string(
    CONCAT MORVANE_ABOUT
    "morvane is a platform-independent system base with a plain C interface:\n"
    "reference-counted objects, text, containers, streams, files, character sets,\n"
    "Unicode data and configuration documents, with no dependency but the C\n"
    "library.\n.\n"
)

# morvane_package( COMPONENT NAME SECTION SUMMARY TEXT )
macro( morvane_package component name section summary text )
    set( CPACK_DEBIAN_${component}_PACKAGE_NAME ${name} )
    set( CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section} )
    set( CPACK_DEBIAN_${component}_DESCRIPTION "platform-independent system base - ${summary}\n${MORVANE_ABOUT}${text}" )
endmacro()

morvane_package(
    RUNTIME libmorvane-qv${PROJECT_VERSION_MAJOR} libs "shared library"
    "This package has what programs need."
)
morvane_package(
    DEVELOPMENT libmorvane-qv-dev libdevel "files for development"
    "This package has the headers, the static library, and files for CMake and\npkg-config."
)
morvane_package(
    TOOLS morvane utils "tools"
    "This package has the tools for documents, text, times and modules."
)
morvane_package(
    DOC libmorvane-qv-doc doc "documentation"
    "This package has texts about the library, its manual and examples."
)

set( CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON )
set( CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON )
set( CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON )
set( CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=" )
set( CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
     "${MORVANE_PACKAGE_SCRATCH}/symbols;${MORVANE_PACKAGE_SCRATCH}/triggers"
)
set( CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON )
set( CPACK_DEBIAN_TOOLS_DEBUGINFO_PACKAGE ON )
set( CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}" )
set( CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
     "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${MORVANE_PACKAGE_VERSION})"
)
set( CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${MORVANE_PACKAGE_VERSION})" )
set( CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libmorvane-qv-doc" )
set( CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all )

# What the two scripts need, and what the stage is made with.
set( CPACK_MORVANE_SETTINGS
     "SOURCES=${PROJECT_SOURCE_DIR}" "SCRATCH=${MORVANE_PACKAGE_SCRATCH}" "VERSION=${PROJECT_VERSION}"
     "OBJCOPY=${CMAKE_OBJCOPY}" "MORVANE_MAINTAINER=${MORVANE_MAINTAINER}"
     "MORVANE_PACKAGE_VERSION=${MORVANE_PACKAGE_VERSION}" "PROJECT_VERSION=${PROJECT_VERSION}"
     "PROJECT_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}"
)
set( CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/MorvanePackagesStage.cmake" )
set( CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/MorvanePackagesFinish.cmake" )

include( CPack )
