# Builds for another processor with the cross compilers of Debian. Included by the toolchain file of a processor, which sets
# MORVANE_TRIPLE, and in MORVANE_EMULATOR the command that runs what is built.

set( CMAKE_SYSTEM_NAME Linux )
set( CMAKE_C_COMPILER "${MORVANE_TRIPLE}-gcc" )
set( CMAKE_CXX_COMPILER "${MORVANE_TRIPLE}-g++" )
set( CMAKE_CROSSCOMPILING_EMULATOR ${MORVANE_EMULATOR} )

set( CMAKE_FIND_ROOT_PATH "/usr/${MORVANE_TRIPLE}" )
set( CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER )
set( CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY )
set( CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY )
set( CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY )
