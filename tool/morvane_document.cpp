#include "morvane_document.h"

#include "morvane_tool.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_store_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/sys/qv_mem.h"

namespace morvane
{
using qv::Ref;

namespace
{
const uint8_t BYTE_ORDER_MARK[] = { 0xEF, 0xBB, 0xBF };

bool isLineEnd( QV_CHAR ch )
{
    return ( ch >= 0x0A && ch <= 0x0D ) || ch == 0x85 || ch == 0x2028 || ch == 0x2029;
}

// How many characters at the end of a line are its line end.
QV_INT lineEndLength( QV_STRING *line )
{
    QV_INT length = qvStringLength( line );

    if( length == 0 || !isLineEnd( qvStringCharAt( line, length - 1 ) ) )
        return 0;

    return length > 1 && qvStringCharAt( line, length - 2 ) == 0x0D && qvStringCharAt( line, length - 1 ) == 0x0A ? 2 : 1;
}

Ref< QV_STRING > withoutLineEnd( QV_STRING *line )
{
    return Ref< QV_STRING >( qvStringCreateFromLeading( line, qvStringLength( line ) - lineEndLength( line ) ) );
}

Ref< QV_STRING > lineEnd( QV_STRING *line )
{
    return Ref< QV_STRING >( qvStringCreateFromTrailing( line, lineEndLength( line ) ) );
}

// `path` with a dot behind it: what everything below it starts with.
Ref< QV_STRING > prefixOf( QV_STRING *path )
{
    Ref< QV_STRING > prefix = Ref< QV_STRING >::share( path );
    qvStringAppendChar( prefix.at(), U'.' );

    return prefix;
}
} // namespace

bool Document::parse( QV_BUFFER *bytes )
{
    Ref< QV_BUFFER > content = Ref< QV_BUFFER >::share( bytes );
    QV_INT           length  = qvBufferLength( bytes );

    byteOrderMark_ = length >= 3 && qvBufferReadBits( bytes, 0, 24 ) == 0xEFBBBF;

    if( byteOrderMark_ )
        qvBufferDelLeading( content.at(), 3 );

    const char *utf8 = static_cast< const char * >( static_cast< const void * >( qvBufferBacking( content ) ) );
    Ref< QV_STRING > text( qvStringCreateFromUtf8( utf8, qvBufferLength( content ) ) );

    lines_.reset( qvVectorCreate() );
    paths_.reset( qvVectorCreate() );
    codes_.reset( qvVectorCreate() );

    const QV_CHAR *chs   = qvStringBacking( text );
    QV_INT         count = qvStringLength( text );
    QV_INT         start = 0;

    for( QV_INT i = 0; i < count; i++ )
    {
        if( !isLineEnd( chs[i] ) && i + 1 < count )
            continue;

        if( chs[i] == 0x0D && i + 1 < count && chs[i + 1] == 0x0A )
            i++;

        Ref< QV_STRING > line( qvStringCreateFromInner( text, start, i + 1 - start ) );
        insert( this->length(), line );
        start = i + 1;
    }

    return qvBufferEquals( this->bytes(), bytes ) != QV_FALSE;
}

Ref< QV_BUFFER > Document::bytes() const
{
    Ref< QV_BUFFER > result( qvBufferCreate() );

    if( byteOrderMark_ )
        qvBufferAppendBytes( result.at(), BYTE_ORDER_MARK, sizeof( BYTE_ORDER_MARK ) );

    for( QV_INT i = 0; i < length(); i++ )
    {
        Ref< QV_STRING > line = wordAt( lines_, i );
        QV_INT           size;
        char            *utf8 = qvStringConvertToUtf8( line, QV_FALSE, &size );
        qvBufferAppendBytes( result.at(), reinterpret_cast< const uint8_t * >( utf8 ), size );
        qvMemFree( utf8 );
    }

    return result;
}

QV_INT Document::length() const
{
    return qvVectorLength( lines_ );
}

QV_INT Document::codeAt( QV_INT line ) const
{
    Ref< QV_BOXED_INT > code( qvBoxedIntFrom( qvVectorObjAt( codes_, line ) ) );
    return qvBoxedIntValue( code );
}

bool Document::canHold( QV_STRING *path, QV_STRING *value )
{
    Ref< QV_STRING > line( qv___StoreEncodeLine( path, value ) );
    QV_STRING       *readPath  = nullptr;
    QV_STRING       *readValue = nullptr;
    bool             isValue   = qv___StoreParseLine( line, &readPath, &readValue ) == QV___STORE_LINE_VALUE;
    Ref< QV_STRING > ownPath( readPath ), ownValue( readValue );

    if( !isValue || !qvStringEquals( ownPath, path ) )
        return false;

    // Line ends that are no control characters have no escape.
    return qvStringFindChar( line, 0, 0x2028 ) < 0 && qvStringFindChar( line, 0, 0x2029 ) < 0;
}

void Document::set( QV_STRING *path, QV_STRING *value )
{
    Ref< QV_STRING > canonical( qv___StoreEncodeLine( path, value ) );
    QV_INT           at = findValue( path );

    if( at < 0 )
    {
        add( lastNeighbour( path ) + 1, canonical );
        return;
    }

    // What stands in front of the value stays as it was written.
    Ref< QV_STRING > old  = wordAt( lines_, at );
    Ref< QV_STRING > line( qvStringCreateFromLeading( old, qvStringFindChar( old, 0, U'=' ) ) );
    Ref< QV_STRING > end    = lineEnd( old );
    QV_INT           equals = qvStringFindChar( canonical, 0, U'=' );
    qvStringAppendInner( line.at(), canonical, equals, qvStringLength( canonical ) - equals );
    qvStringAppend( line.at(), end );
    qvVectorSetStringAt( lines_.at(), at, line );
}

bool Document::remove( QV_STRING *path )
{
    Ref< QV_STRING > below = prefixOf( path );
    bool             found = false;

    for( QV_INT i = length(); i > 0; i-- )
    {
        Ref< QV_STRING > own = pathAt( i - 1 );

        if( !own || !( qvStringEquals( own, path ) || qvStringBeginsWith( own, below ) ) )
            continue;

        qvVectorDelAt( lines_.at(), i - 1 );
        qvVectorDelAt( paths_.at(), i - 1 );
        qvVectorDelAt( codes_.at(), i - 1 );
        found = true;
    }

    return found;
}

void Document::merge( QV_STORE *other )
{
    // All paths that the document has, each with every path above it.
    Ref< QV_DICT >       present( qvDictCreate() );
    Ref< QV_BOXED_NULL > mark( qvBoxedNullCreate() );

    for( QV_INT i = 0; i < length(); i++ )
    {
        Ref< QV_STRING > path = pathAt( i );

        if( !path )
            continue;

        qvDictSetStringKey( present.at(), path, qvBoxedNullObj( mark ) );

        for( QV_INT dot = qvStringFindChar( path, 0, U'.' ); dot >= 0; dot = qvStringFindChar( path, dot + 1, U'.' ) )
        {
            Ref< QV_STRING > above( qvStringCreateFromLeading( path, dot + 1 ) );
            qvDictSetStringKey( present.at(), above, qvBoxedNullObj( mark ) );
        }
    }

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( other ) );

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
    {
        Ref< QV_STRING > line = wordAt( lines, i );
        QV_STRING       *path = nullptr;
        qv___StoreParseLine( line, &path, nullptr );
        Ref< QV_STRING > ownPath( path );

        if( ownPath && !qvDictHasStringKey( present, ownPath ) )
            add( length(), line );
    }
}

// The path of a line, or nothing where it has none.
Ref< QV_STRING > Document::pathAt( QV_INT line ) const
{
    Ref< QV_OBJ > path( qvVectorObjAt( paths_, line ) );

    return qvObjSort( path ) == qvStringSort() ? Ref< QV_STRING >( qvStringFrom( path.give() ) ) : Ref< QV_STRING >();
}

// The last line that sets the value of a path, since that is the one that counts.
QV_INT Document::findValue( QV_STRING *path ) const
{
    for( QV_INT i = length() - 1; i >= 0; i-- )
    {
        Ref< QV_STRING > own = pathAt( i );

        if( own && codeAt( i ) == QV___STORE_LINE_VALUE && qvStringEquals( own, path ) )
            return i;
    }

    return -1;
}

// The last line that shares the most levels with a path; the last line of all where none does.
QV_INT Document::lastNeighbour( QV_STRING *path ) const
{
    Ref< QV_STRING > shared = Ref< QV_STRING >::share( path );

    for( ;; )
    {
        QV_INT dot = qvStringFindCharFromRight( shared, -1, U'.' );

        if( dot < 0 )
            return length() - 1;

        qvStringDelTrailing( shared.at(), qvStringLength( shared ) - dot );
        Ref< QV_STRING > prefix = prefixOf( shared );

        for( QV_INT i = length() - 1; i >= 0; i-- )
        {
            Ref< QV_STRING > own = pathAt( i );

            if( own && qvStringBeginsWith( own, prefix ) )
                return i;
        }
    }
}

// Inserts a line as it stands.
void Document::insert( QV_INT at, QV_STRING *line )
{
    QV_STRING          *path = nullptr;
    Ref< QV_BOXED_INT > code( qvBoxedIntCreate( qv___StoreParseLine( withoutLineEnd( line ), &path, nullptr ) ) );
    Ref< QV_STRING >    ownPath( path );

    qvVectorInsertString( lines_.at(), at, line );
    qvVectorInsertObj( codes_.at(), at, qvBoxedIntObj( code ) );

    if( ownPath )
        qvVectorInsertString( paths_.at(), at, ownPath );
    else
        qvVectorInsertNull( paths_.at(), at );
}

// Inserts a line that has no line end yet: it gets the one that the line before it has.
void Document::add( QV_INT at, QV_STRING *line )
{
    Ref< QV_STRING > end( qvStringCreate() );

    if( at > 0 )
    {
        Ref< QV_STRING > previous = wordAt( lines_, at - 1 );
        end                       = lineEnd( previous );

        if( qvStringLength( end ) == 0 )
        {
            // The file ended without a line end.
            end = lineEnd( wordAt( lines_, 0 ) );

            if( qvStringLength( end ) == 0 )
                qvStringAppendChar( end.at(), 0x0A );

            qvStringAppend( previous.at(), end );
            qvVectorSetStringAt( lines_.at(), at - 1, previous );
        }
    }
    else
    {
        qvStringAppendChar( end.at(), 0x0A );
    }

    Ref< QV_STRING > whole = Ref< QV_STRING >::share( line );
    qvStringAppend( whole.at(), end );
    insert( at, whole );
}
} // namespace morvane
