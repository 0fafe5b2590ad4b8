#ifndef QV_STREAM_PRIVATE_H
#define QV_STREAM_PRIVATE_H

#include "qv/base/qv_error_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

/* What the sinks and sources of bytes, characters and lines have in common: the closure, the flags that nothing clears,
   and the rules by which they are set. The families add their callbacks and state their contracts. */

namespace qv
{
/** The common part of the sinks. */
struct AnySink : QV_OBJ
{
    QV_BOOL ( *flushFunc )( QV_OBJ *closure );
    QV_OBJ       *closure; // or null
    StreamFailure failure;
    QV_BOOL       error;
};

/** The common part of the sources. */
struct AnySource : QV_OBJ
{
    QV_OBJ       *closure; // or null
    StreamFailure failure;
    QV_BOOL       end;
    QV_BOOL       error;
};

/** A new sink or source. The size that it declares is without what is kept for failures. */
template< class Stream >
Stream *createStream( QV_SORT *sort, QV_OBJ *closure )
{
    const QV_INT extra = sizeof( StreamFailure );

    Stream *stream  = static_cast< Stream * >( createWithRoom( sizeof( Stream ) - extra, extra, sort ) );
    stream->closure = Ref< QV_OBJ >::share( closure ).give();
    stream->failure = nullptr;
    stream->error   = QV_FALSE;

    return stream;
}

/** Releases the closure and forgets the failure. */
template< class Stream >
void endStream( Stream *stream )
{
    drop( stream->closure );
    qvMemFree( stream->failure );
}

/** True unless the stream has failed: then the failure is told again, by each call that fails because of it. */
template< class Stream >
QV_BOOL stillGood( const Stream *stream )
{
    if( __builtin_expect( !stream->error, 1 ) )
        return QV_TRUE;

    tellFailure( stream->failure );
    return QV_FALSE;
}

/** A new sink without the callbacks of its family. It retains the closure. */
template< class Sink >
Sink *createSink( QV_SORT *sort, QV_BOOL ( *flushFunc )( QV_OBJ *closure ), QV_OBJ *closure )
{
    Sink *sink      = createStream< Sink >( sort, closure );
    sink->flushFunc = flushFunc;

    return sink;
}

/** Sets the error flag if a callback has failed, which has set the last error then. Returns the result of the callback.
    */
inline QV_BOOL noteResult( AnySink *sink, QV_BOOL ok )
{
    if( __builtin_expect( ok, 1 ) )
        return QV_TRUE;

    sink->error = QV_TRUE;
    keepFailure( &sink->failure );
    return QV_FALSE;
}

/** Calls the flush callback unless the sink has failed. */
inline QV_BOOL flushSink( AnySink *sink )
{
    return stillGood( sink ) ? noteResult( sink, sink->flushFunc( sink->closure ) ) : QV_FALSE;
}

/** Ends a sink: flushes it a last time and releases the closure. */
inline void endSink( AnySink *sink )
{
    if( !sink->error )
        flushSink( sink );

    endStream( sink );
}

/** Writes a range that lies inside the Buffer or String. An empty one does not reach the callback. */
template< class Sink, class Data >
QV_BOOL writeRange( Sink *sink, Data *data, QV_INT offset, QV_INT count )
{
    if( !stillGood( sink ) )
        return QV_FALSE;

    return count == 0 ? QV_TRUE : noteResult( sink, sink->writeFunc( sink->closure, data, offset, count ) );
}

/** Writes what comes before `offset` and what comes from `tailOffset` on, up to `length`. */
template< class Sink, class Data >
QV_BOOL writeAround( Sink *sink, Data *data, QV_INT offset, QV_INT tailOffset, QV_INT length )
{
    return writeRange( sink, data, 0, offset ) && writeRange( sink, data, tailOffset, length - tailOffset );
}

/** The flush callback of a sink that keeps nothing back. */
inline QV_BOOL flushNothing( QV_OBJ * )
{
    return QV_TRUE;
}

/** A new source without the callbacks of its family. It retains the closure. */
template< class Source >
Source *createSource( QV_SORT *sort, QV_OBJ *closure )
{
    Source *source = createStream< Source >( sort, closure );
    source->end    = QV_FALSE;

    return source;
}

/** True if a read of `maxCount` items has nothing to do. */
inline bool isIdle( const AnySource *source, QV_INT maxCount )
{
    return maxCount == 0 || ( source->end && ( stillGood( source ), true ) );
}

/** The limit for a callback: a caller's -1 means no limit. */
inline QV_INT limitOf( QV_INT maxCount )
{
    return maxCount == -1 ? QV_INT_MAX : maxCount;
}

/** Sets the flags after a callback that had a limit of `limit` items and delivered `count`: fewer than the limit mean
    the end of the data. A callback that fails has set the last error. Returns `count`. */
inline QV_INT noteCount( AnySource *source, QV_BOOL ok, QV_INT count, QV_INT limit )
{
    if( !ok || count < limit )
        source->end = QV_TRUE;

    if( __builtin_expect( !ok, 0 ) )
    {
        source->error = QV_TRUE;
        keepFailure( &source->failure );
    }

    return count;
}
} // namespace qv

#endif
