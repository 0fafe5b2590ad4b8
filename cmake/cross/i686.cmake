set( CMAKE_SYSTEM_PROCESSOR i686 )
set( MORVANE_TRIPLE i686-linux-gnu )

# The processor and the kernel of x86-64 run it themselves; qemu 7.2 hangs in copies of a process of 32 bits.
set( MORVANE_EMULATOR "/usr/${MORVANE_TRIPLE}/lib/ld-linux.so.2" --library-path "/usr/${MORVANE_TRIPLE}/lib" )

include( "${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake" )
