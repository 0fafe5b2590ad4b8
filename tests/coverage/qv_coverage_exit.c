/** @file
    Part of the tests in builds that count which lines of the library run: _exit() writes the counts down first. */

extern void qv___CoverageWrite( void );
extern void __real__exit( int status );
void        __wrap__exit( int status );

void __wrap__exit( int status )
{
    qv___CoverageWrite();
    __real__exit( status );
}
