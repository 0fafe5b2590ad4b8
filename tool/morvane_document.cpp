#include "morvane_document.h"

#include "morvane_progress.h"
#include "morvane_tool.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_store.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/sys/qv_mem.h"

namespace morvane
{
using qv::Ref;

namespace
{
const QV_INT  PROGRESS_STEP     = 64 << 10; // bytes between two looks at the clock
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

    return length > 1 && qvStringCharAt( line, length - 2 ) == 0x0D && qvStringCharAt( line, length - 1 ) == 0x0A ? 2
                                                                                                                  : 1;
}

Ref< QV_STRING > withoutLineEnd( QV_STRING *line )
{
    return Ref< QV_STRING >( qvStringCreateFromLeading( line, qvStringLength( line ) - lineEndLength( line ) ) );
}

Ref< QV_STRING > lineEnd( QV_STRING *line )
{
    return Ref< QV_STRING >( qvStringCreateFromTrailing( line, lineEndLength( line ) ) );
}

// Calls `visit` with "a" and "a.b" for the path "a.b.c", or with "a." and "a.b.", as long as it returns true.
template< class Visit >
void visitAbove( QV_STRING *path, bool withDot, const Visit &visit )
{
    for( QV_INT dot = qvStringFindChar( path, 0, U'.' ); dot >= 0; dot = qvStringFindChar( path, dot + 1, U'.' ) )
        if( !visit( Ref< QV_STRING >( qvStringCreateFromLeading( path, withDot ? dot + 1 : dot ) ) ) )
            break;
}

// True if a store has what a line with this path makes: a value or, with a dot at the end, a sub-store.
bool holds( QV_STORE *store, QV_STRING *path )
{
    Ref< QV_VECTOR > steps( qvStringSplitChar( path, U'.', -1 ) );
    Ref< QV_STORE >  level = Ref< QV_STORE >::share( store );
    QV_INT           last  = qvVectorLength( steps ) - 1;

    for( QV_INT i = 0; i < last && level; i++ )
        level.reset( qvStoreStore( level, wordAt( steps, i ) ) );

    Ref< QV_STRING > step = wordAt( steps, last );

    return level && ( qvStringLength( step ) == 0 || qvStoreHasValue( level, step ) );
}
} // namespace

Document::~Document()
{
    for( QV_INT i = 0; i < count_; i++ )
    {
        Ref< QV_STRING > text( lines_[i].text ), path( lines_[i].path );
    }

    qvMemFree( lines_ );
}

bool Document::parse( QV_BUFFER *bytes )
{
    Ref< QV_BUFFER > content = Ref< QV_BUFFER >::share( bytes );
    QV_INT           length  = qvBufferLength( bytes );

    byteOrderMark_ = length >= 3 && qvBufferReadBits( bytes, 0, 24 ) == 0xEFBBBF;

    if( byteOrderMark_ )
        qvBufferDelLeading( content.at(), 3 );

    const char      *utf8 = reinterpret_cast< const char * >( qvBufferBacking( content ) );
    Ref< QV_STRING > text( qvStringCreateFromUtf8( utf8, qvBufferLength( content ) ) );

    const QV_CHAR *chs   = qvStringBacking( text );
    QV_INT         count = qvStringLength( text );
    QV_INT         start = 0;
    QV_INT         told  = 0;

    for( QV_INT i = 0; i < count; i++ )
    {
        if( !isLineEnd( chs[i] ) && i + 1 < count )
            continue;

        if( chs[i] == 0x0D && i + 1 < count && chs[i + 1] == 0x0A )
            i++;

        Ref< QV_STRING > line( qvStringCreateFromInner( text, start, i + 1 - start ) );
        insert( last_, line );
        start = i + 1;

        // The characters stand for the bytes that they come from.
        if( QV_INT done = length / count * start; done - told >= PROGRESS_STEP )
        {
            addProgress( done - told );
            told = done;
        }
    }

    return qvBufferEquals( this->bytes(), bytes ) != QV_FALSE;
}

Ref< QV_BUFFER > Document::bytes() const
{
    Ref< QV_BUFFER > result( qvBufferCreate() );

    if( byteOrderMark_ )
        qvBufferAppendBytes( result.at(), BYTE_ORDER_MARK, sizeof( BYTE_ORDER_MARK ) );

    for( QV_INT i = first_; i != NONE; i = lines_[i].next )
    {
        QV_INT size;
        char  *utf8 = qvStringConvertToUtf8( lines_[i].text, QV_FALSE, &size );
        qvBufferAppendBytes( result.at(), reinterpret_cast< const uint8_t * >( utf8 ), size );
        qvMemFree( utf8 );
    }

    return result;
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

void Document::set( QV_VECTOR *paths, QV_VECTOR *values )
{
    findPlaces( paths );

    for( QV_INT i = 0; i < qvVectorLength( paths ); i++ )
        setValue( wordAt( paths, i ), wordAt( values, i ) );

    places_.reset();
}

void Document::setValue( QV_STRING *path, QV_STRING *value )
{
    Ref< QV_STRING > canonical( qv___StoreEncodeLine( path, value ) );
    QV_INT           at = placeOf( path );

    if( at == NONE )
    {
        QV_INT previous = lastNeighbour( path );
        setPlaces( add( previous, canonical ), previous );
        return;
    }

    // What comes before the value stays as it was written.
    QV_STRING      *&line      = lines_[at].text;
    Ref< QV_STRING > end       = lineEnd( line );
    QV_INT           oldEquals = qvStringFindChar( line, 0, U'=' );
    QV_INT           equals    = qvStringFindChar( canonical, 0, U'=' );
    qvStringDelTrailing( &line, qvStringLength( line ) - oldEquals );
    qvStringAppendTrailing( &line, canonical, qvStringLength( canonical ) - equals );
    qvStringAppend( &line, end );
}

Ref< QV_VECTOR > Document::remove( QV_VECTOR *paths )
{
    Ref< QV_DICT > found( qvDictCreate() );
    QV_INT         count = qvVectorLength( paths );

    Ref< QV_BOXED_BOOL > no( qvBoxedBoolCreate( QV_FALSE ) );
    Ref< QV_BOXED_BOOL > yes( qvBoxedBoolCreate( QV_TRUE ) );

    for( QV_INT i = 0; i < count; i++ )
        qvDictSetStringKey( found.at(), wordAt( paths, i ), qvBoxedBoolObj( no ) );

    QV_INT *link = &first_;
    last_        = NONE;

    while( *link != NONE )
    {
        Line &line    = lines_[*link];
        bool  deleted = false;

        if( line.path )
        {
            auto look = [&]( QV_STRING *path )
            {
                QV_INT idx = qvDictIndexOfStringKey( found, path );

                if( idx >= 0 )
                    qvDictSetValueAt( found.at(), idx, qvBoxedBoolObj( yes ) );

                deleted = deleted || idx >= 0;
                return true;
            };

            visitAbove( line.path, false, look );
            look( line.path );
        }

        if( deleted )
        {
            *link = line.next;
        }
        else
        {
            last_ = *link;
            link  = &line.next;
        }
    }

    Ref< QV_VECTOR > missing( qvVectorCreate() );

    for( QV_INT i = 0; i < count; i++ )
    {
        Ref< QV_STRING > path = wordAt( paths, i );
        Ref< QV_OBJ >    value( qvDictStringKey( found, path ) );

        if( value.get() != qvBoxedBoolObj( yes ) )
            qvVectorAppendString( missing.at(), path );
    }

    return missing;
}

void Document::merge( QV_VECTOR *stores )
{
    Ref< QV_STORE > all( qvStoreTryDecodeFromTextBuffer( bytes() ) );

    for( QV_INT i = 0; i < qvVectorLength( stores ); i++ )
    {
        Ref< QV_STORE >  other( qvStoreFrom( qvVectorObjAt( stores, i ) ) );
        Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( other ) );

        for( QV_INT j = 0; j < qvVectorLength( lines ); j++ )
        {
            Ref< QV_STRING > line = wordAt( lines, j );
            Ref< QV_STRING > path;
            qv___StoreParseLine( line, path.at(), nullptr );

            if( !holds( all, path ) )
                add( last_, line );
        }

        qvStoreMerge( all.at(), other );
    }
}

// The line that the index has for "a.b" or "a.", or NONE.
QV_INT Document::placeOf( QV_STRING *key ) const
{
    Ref< QV_OBJ > boxed( qvDictStringKey( places_, key ) );

    return boxed ? qvBoxedIntValue( qvBoxedIntFrom( boxed ) ) : NONE;
}

// The last of the lines that share most levels with a path; the last line of all if none shares any.
QV_INT Document::lastNeighbour( QV_STRING *path ) const
{
    QV_INT result = last_;

    visitAbove(
        path, true,
        [&]( QV_STRING *above )
        {
            QV_INT place = placeOf( above );
            result       = place == NONE ? result : place;
            return true;
        } );

    return result;
}

// Finds the lines that set the paths and their sub-stores now.
void Document::findPlaces( QV_VECTOR *paths )
{
    Ref< QV_OBJ > none( qvBoxedIntObj( qvBoxedIntCreate( NONE ) ) );
    places_.reset( qvDictCreate() );

    for( QV_INT i = 0; i < qvVectorLength( paths ); i++ )
    {
        Ref< QV_STRING > path = wordAt( paths, i );

        visitAbove(
            path, true,
            [&]( QV_STRING *above )
            {
                qvDictSetStringKey( places_.at(), above, none );
                return true;
            } );

        qvDictSetStringKey( places_.at(), path, none );
    }

    for( QV_INT i = first_; i != NONE; i = lines_[i].next )
        setPlaces( i, NONE );
}

// Enters a line for a key, if the index has the key. A new line is the last one of a sub-store only if it comes after
// the one that was.
bool Document::setPlace( QV_STRING *key, QV_INT line, QV_INT previous )
{
    QV_INT idx = qvDictIndexOfStringKey( places_, key );

    if( idx < 0 )
        return false;

    Ref< QV_BOXED_INT > old( qvBoxedIntFrom( qvDictValueAt( places_, idx ) ) );
    QV_INT              place = qvBoxedIntValue( old );

    if( previous == NONE || place == previous || place == NONE )
        qvDictSetValueAt( places_.at(), idx, qvBoxedIntObj( Ref< QV_BOXED_INT >( qvBoxedIntCreate( line ) ) ) );

    return true;
}

// Enters a line for all its keys: each of the lines in their order, or a new one after `previous`.
void Document::setPlaces( QV_INT line, QV_INT previous )
{
    QV_STRING *path = lines_[line].path;

    if( !path )
        return;

    // The index has no key below one that it doesn't have.
    visitAbove( path, true, [&]( QV_STRING *above ) { return setPlace( above, line, previous ); } );

    if( !qvStringEndsWithChar( path, U'.' ) )
        setPlace( path, line, NONE );
}

// Inserts a line, unchanged, after another one, or as the first one after NONE.
QV_INT Document::insert( QV_INT previous, QV_STRING *text )
{
    if( count_ == alloc_ )
    {
        alloc_ = alloc_ * 2 + 64;
        lines_ = static_cast< Line * >( qvMemReallocN( lines_, alloc_, sizeof( Line ) ) );
    }

    QV_STRING *path = nullptr;
    qv___StoreParseLine( withoutLineEnd( text ), &path, nullptr );

    QV_INT &link   = previous == NONE ? first_ : lines_[previous].next;
    lines_[count_] = { qv::retain( text ), path, link };
    link           = count_;

    if( last_ == previous )
        last_ = count_;

    return count_++;
}

// Inserts a line without a line end: it gets that of the line before it.
QV_INT Document::add( QV_INT previous, QV_STRING *text )
{
    Ref< QV_STRING > end( qvStringCreateFromCstr( "\n", -1 ) );

    if( previous != NONE )
    {
        Ref< QV_STRING > before = lineEnd( lines_[previous].text );

        if( qvStringLength( before ) == 0 )
        {
            // The file ended without a line end.
            before = lineEnd( lines_[first_].text );

            if( qvStringLength( before ) == 0 )
                before = std::move( end );

            qvStringAppend( &lines_[previous].text, before );
        }

        end = std::move( before );
    }

    Ref< QV_STRING > whole = Ref< QV_STRING >::share( text );
    qvStringAppend( whole.at(), end );

    return insert( previous, whole );
}
} // namespace morvane
