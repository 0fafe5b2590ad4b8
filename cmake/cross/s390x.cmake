set( CMAKE_SYSTEM_PROCESSOR s390x )
set( MORVANE_TRIPLE s390x-linux-gnu )
set( MORVANE_EMULATOR qemu-s390x -L "/usr/${MORVANE_TRIPLE}" )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
