#include "qv/io/qv_file.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_error.h"
#include "qv/base/qv_error_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_file_private.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_stream_private.h"
#include "qv/runtime/qv_ref.h"

/* Streams -------------------------------------------------------------------------------------------------------- */

namespace
{
// Lets failures of a source or sink tell the name of its file.
void nameSource( QV_OBJ *source, QV_STRING *fn )
{
    qv::nameStream( &static_cast< qv::AnySource * >( source )->failure, fn );
}

void nameSink( QV_OBJ *sink, QV_STRING *fn )
{
    qv::nameStream( &static_cast< qv::AnySink * >( sink )->failure, fn );
}
} // namespace

QV_BYTE_SOURCE *qvFileOpenByteSource( QV_STRING *fn )
{
    QV_CHECK( fn );

    QV_BYTE_SOURCE *source = qv___FileOpenByteSource( fn );

    if( source )
        nameSource( qvByteSourceObj( source ), fn );

    return source;
}

// A layered open checks all of its arguments first: a call that breaks the contract does not touch the file.
QV_CHAR_SOURCE *qvFileOpenCharSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags )
{
    QV_CHECK( fn );
    QV_CHECK( QV_CHARSET_OK( charset ) );

    qv::Ref< QV_BYTE_SOURCE > bytes( qv___FileOpenByteSource( fn ) );

    if( !bytes )
        return nullptr;

    QV_CHAR_SOURCE *chars = qvCharsetCreateCharSource( bytes, charset, charsetFlags );
    nameSource( qvCharSourceObj( chars ), fn );

    return chars;
}

QV_LINE_SOURCE *qvFileOpenLineSource( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags )
{
    qv::Ref< QV_CHAR_SOURCE > chars( qvFileOpenCharSource( fn, charset, charsetFlags ) );

    if( !chars )
        return nullptr;

    qv::Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreate( chars, nlfFlags ) );
    return qvNlfLineSourceLineSource( lines );
}

QV_BYTE_SINK *qvFileOpenByteSink( QV_STRING *fn )
{
    QV_CHECK( fn );

    QV_BYTE_SINK *sink = qv___FileOpenByteSink( fn );

    if( sink )
        nameSink( qvByteSinkObj( sink ), fn );

    return sink;
}

QV_CHAR_SINK *qvFileOpenCharSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags )
{
    QV_CHECK( fn );
    QV_CHECK( QV_CHARSET_OK( charset ) );

    qv::Ref< QV_BYTE_SINK > bytes( qv___FileOpenByteSink( fn ) );

    if( !bytes )
        return nullptr;

    QV_CHAR_SINK *chars = qvCharsetCreateCharSink( bytes, charset, charsetFlags );
    nameSink( qvCharSinkObj( chars ), fn );

    return chars;
}

QV_LINE_SINK *qvFileOpenLineSink( QV_STRING *fn, QV_INT charset, QV_INT charsetFlags, QV_INT nlfFlags )
{
    qv::Ref< QV_CHAR_SINK > chars( qvFileOpenCharSink( fn, charset, charsetFlags ) );

    if( !chars )
        return nullptr;

    qv::Ref< QV_NLF_LINE_SINK > lines( qvNlfLineSinkCreate( chars, nlfFlags ) );
    return qvNlfLineSinkLineSink( lines );
}

/* Whole files ---------------------------------------------------------------------------------------------------- */

QV_BUFFER *qvFileReadBuffer( QV_STRING *fn, QV_INT maxBytes )
{
    QV_CHECK( fn );
    QV_CHECK( maxBytes >= -1 );

    return qv___FileReadBuffer( fn, maxBytes );
}

QV_BOOL qvFileWriteBuffer( QV_STRING *fn, QV_BUFFER *buf )
{
    QV_CHECK( fn );
    QV_CHECK( buf );

    return qv___FileWriteBuffer( fn, buf );
}

/* Files and directories ------------------------------------------------------------------------------------------ */

QV_BOOL qvFileExists( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileExists( fn );
}

QV_INT qvFileSize( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileSize( fn );
}

QV_BOOL qvFileIsDirectory( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileIsDirectory( fn );
}

QV_BOOL qvFileDelete( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileDelete( fn );
}

QV_BOOL qvFileRename( QV_STRING *fn, QV_STRING *newFn )
{
    QV_CHECK( fn );
    QV_CHECK( newFn );

    return qv___FileRename( fn, newFn );
}

QV_BOOL qvFileCreateDirectory( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileCreateDirectory( fn );
}

QV_BOOL qvFileDeleteDirectory( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileDeleteDirectory( fn );
}

QV_BOOL qvFileDeleteDirectoryRecursive( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileDeleteDirectoryRecursive( fn );
}

QV_VECTOR *qvDirectoryContent( QV_STRING *path, QV_BOOL skipDirectories, QV_STRING *suffix )
{
    QV_CHECK( path );
    return qv___DirectoryContent( path, skipDirectories, suffix );
}

/* The text of paths ---------------------------------------------------------------------------------------------- */

QV_STRING *qvFileDirName( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileDirName( fn );
}

QV_STRING *qvFileBaseName( QV_STRING *fn )
{
    QV_CHECK( fn );
    return qv___FileBaseName( fn );
}

QV_STRING *qvFileExtensionName( QV_STRING *fn )
{
    QV_CHECK( fn );

    qv::Ref< QV_STRING > base( qvFileBaseName( fn ) );
    QV_INT               dot = qvStringFindCharFromRight( base, -1, U'.' );

    return dot < 0 ? qvStringCreate() : qvStringCreateFromInner( base, dot, qvStringLength( base ) - dot );
}

QV_CHAR qvFilePathDelimiter( void )
{
    return qv___FilePathDelimiter();
}

void qvFilePathAppendDelimiter( QV_STRING **pn )
{
    QV_CHECK( pn );
    QV_CHECK( *pn );

    if( !qvStringEndsWithChar( *pn, qvFilePathDelimiter() ) )
        qvStringAppendChar( pn, qvFilePathDelimiter() );
}

QV_BOOL qvPathIsRelative( QV_STRING *pn )
{
    QV_CHECK( pn );
    return qv___PathIsRelative( pn );
}

/* The process ---------------------------------------------------------------------------------------------------- */

QV_STRING *qvCurrentDirectory( void )
{
    return qv___CurrentDirectory();
}

QV_STRING *qvGetExecutablePath( void )
{
    return qv___GetExecutablePath();
}
