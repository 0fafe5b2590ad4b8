# Writes what the executable prints to be installed: pages of the manual, one for itself and one for each of the tools that
# it lists, and what completes its words. Variables: MORVANE, the command that runs it; OUTPUT, the folder.

function( print_to file )
    execute_process( COMMAND ${MORVANE} ${ARGN} OUTPUT_FILE "${OUTPUT}/${file}" COMMAND_ERROR_IS_FATAL ANY )
endfunction()

file( REMOVE_RECURSE "${OUTPUT}/man1" )
file( MAKE_DIRECTORY "${OUTPUT}/man1" "${OUTPUT}/bash" "${OUTPUT}/zsh" )

execute_process( COMMAND ${MORVANE} help OUTPUT_VARIABLE list COMMAND_ERROR_IS_FATAL ANY )
string( REGEX MATCHALL "\n  [a-z]+" tools "${list}" )

foreach( tool IN LISTS tools )
    string( STRIP "${tool}" tool )
    print_to( "man1/morvane-${tool}.1" manual ${tool} )
endforeach()

print_to( man1/morvane.1 manual )
print_to( bash/morvane completion bash )
print_to( zsh/_morvane completion zsh )
