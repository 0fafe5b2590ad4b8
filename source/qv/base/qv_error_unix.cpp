#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/sys/qv_abort.h"

#include <errno.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

namespace
{
const pthread_key_t NO_KEY = ~pthread_key_t( 0 );

// A thread's last failure. What runs at the end of a thread is the C library's free() alone, so that nothing of this
// library is called when it may be unloaded already.
pthread_key_t failureKey = NO_KEY;
} // namespace

void qv___ErrorStartup( void )
{
    if( pthread_key_create( &failureKey, free ) )
        qv___Abort( "failed to create TLS key", QV___SOURCE, __LINE__, nullptr );
}

void qv___ErrorShutdown( void )
{
    qv::setLastFailure( nullptr );
    pthread_key_delete( failureKey );
    failureKey = NO_KEY;
}

qv::Failure *qv::lastFailure()
{
    return failureKey == NO_KEY ? nullptr : static_cast< Failure * >( pthread_getspecific( failureKey ) );
}

void qv::setLastFailure( Failure *failure )
{
    Failure *old = lastFailure();

    if( failure == old )
        return;

    // Without a place for it the failure is lost, not the memory.
    qvMemFree( failureKey == NO_KEY || pthread_setspecific( failureKey, failure ) ? failure : old );
}

QV_INT qv::codeOfSystem( int error )
{
    switch( error )
    {
    case ENOENT:
        return QV_ERROR_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
        return QV_ERROR_NO_PERMISSION;
    case EEXIST:
        return QV_ERROR_EXISTS;
    case EISDIR:
        return QV_ERROR_IS_DIRECTORY;
    case ENOTDIR:
        return QV_ERROR_NOT_DIRECTORY;
    case ENOTEMPTY:
        return QV_ERROR_NOT_EMPTY;
    case ENAMETOOLONG:
    case ELOOP:
    case EILSEQ:
        return QV_ERROR_BAD_NAME;
    case ENOSPC:
    case EDQUOT:
        return QV_ERROR_NO_SPACE;
    case EFBIG:
    case EOVERFLOW:
        return QV_ERROR_TOO_LONG;
    case EMFILE:
    case ENFILE:
    case ENOMEM:
        return QV_ERROR_NO_RESOURCES;
    case EBUSY:
    case ETXTBSY:
        return QV_ERROR_BUSY;
    case EIO:
    case EPIPE:
        return QV_ERROR_INPUT_OUTPUT;
    default:
        return QV_ERROR_SYSTEM;
    }
}

const char *qv::wordsOfSystem( int error )
{
    const char *words = strerrordesc_np( error );
    return words ? words : "an error that the operating system has no words for";
}
