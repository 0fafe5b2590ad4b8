set( CMAKE_SYSTEM_PROCESSOR aarch64 )
set( MORVANE_TRIPLE aarch64-linux-gnu )
set( MORVANE_EMULATOR qemu-aarch64 -L "/usr/${MORVANE_TRIPLE}" )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
