/* Runs a command with its standard output in a file, and prints the most memory that it held, in KiB: of the command
   alone, which it wouldn't be if a large process started it. Arguments: the file, the command. */

#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main( int argc, char **argv )
{
    struct rusage usage;
    int           status = -1;
    pid_t         child  = argc > 2 ? fork() : -1;

    if( child == 0 )
    {
        int out = open( argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0600 );
        dup2( out, STDOUT_FILENO );
        execvp( argv[2], argv + 2 );
        _exit( 127 );
    }

    if( child < 0 || wait4( child, &status, 0, &usage ) != child || status != 0 )
        return 1;

    printf( "%ld\n", usage.ru_maxrss );
    return 0;
}
