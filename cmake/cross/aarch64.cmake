set( CMAKE_SYSTEM_PROCESSOR aarch64 )
set( MORVANE_TRIPLE aarch64-linux-gnu )
set( MORVANE_QEMU qemu-aarch64 )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
