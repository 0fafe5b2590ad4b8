set( CMAKE_SYSTEM_PROCESSOR s390x )
set( MORVANE_TRIPLE s390x-linux-gnu )
set( MORVANE_QEMU qemu-s390x )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
