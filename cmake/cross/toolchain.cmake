# Builds for another processor with the cross compilers of Debian, and runs what is built under qemu's user emulation.
# Included by the toolchain file of a processor, which sets MORVANE_TRIPLE and MORVANE_QEMU.

set( CMAKE_SYSTEM_NAME Linux )
set( CMAKE_C_COMPILER "${MORVANE_TRIPLE}-gcc" )
set( CMAKE_CXX_COMPILER "${MORVANE_TRIPLE}-g++" )
set( CMAKE_CROSSCOMPILING_EMULATOR "${MORVANE_QEMU}" -L "/usr/${MORVANE_TRIPLE}" )

set( CMAKE_FIND_ROOT_PATH "/usr/${MORVANE_TRIPLE}" )
set( CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER )
set( CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY )
set( CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY )
set( CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY )
