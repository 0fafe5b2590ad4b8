#include <qv/qv.h>

int main( void )
{
    qvRuntimeStartup( 0, NULL, NULL, NULL, NULL );
    qvRuntimeShutdown();
    return 0;
}
