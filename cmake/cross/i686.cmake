set( CMAKE_SYSTEM_PROCESSOR i686 )
set( MORVANE_TRIPLE i686-linux-gnu )
set( MORVANE_QEMU qemu-i386 )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
