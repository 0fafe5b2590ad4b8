#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string_stack_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_vectors_private.h"

using qv::asString;

// The forms of insertion. Those in which all end, and the most frequent ones, are in qv_string.cpp.

/* At an index ---------------------------------------------------------------------------------------------------- */

void qvStringInsert( QV_STRING **dest, QV_INT idx, QV_STRING *src )
{
    QV_CHECK( src );
    qvStringInsertInner( dest, idx, src, 0, src->length );
}

void qvStringInsertLeading( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count )
{
    qvStringInsertInner( dest, idx, src, 0, count );
}

void qvStringInsertTrailing( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count )
{
    QV_CHECK( src );
    QV_CHECK( count >= 0 );
    QV_CHECK( count <= src->length );

    qvStringInsertInner( dest, idx, src, src->length - count, count );
}

void qvStringInsertOuter( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *dest )->length, "idx <= (*dest)->length" );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    // Held across both insertions, a String that goes into itself is read as it was.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( *dest == src ? src : nullptr );
    qvStringInsertInner( dest, idx, src, offset + count, src->length - offset - count );
    qvStringInsertInner( dest, idx, src, 0, offset );
}

void qvStringInsertChar( QV_STRING **dest, QV_INT idx, QV_CHAR ch )
{
    qvStringInsertChars( dest, idx, &ch, 1 );
}

void qvStringInsertCstr( QV_STRING **dest, QV_INT idx, const char *text, QV_INT length )
{
    qvStringInsert( dest, idx, qv::SoughtString( text, length ) );
}

void qvStringInsertWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *text, QV_INT length )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromWcstr( text, length ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertObj( QV_STRING **dest, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( obj );

    qv::Ref< QV_STRING > src( qvObjToString( obj ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormat( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    qvStringInsertFormatArgList( dest, idx, fmt, &argList );
    va_end( argList );
}

void qvStringInsertFormatArgList( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatArgList( fmt, argList ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormatCstr( QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvStringInsertFormatCstrArgList( dest, idx, fmt, fmtLength, &argList );
    va_end( argList );
}

void qvStringInsertFormatCstrArgList(
    QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatCstrArgList( fmt, fmtLength, argList ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormatWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvStringInsertFormatWcstrArgList( dest, idx, fmt, fmtLength, &argList );
    va_end( argList );
}

void qvStringInsertFormatWcstrArgList(
    QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, argList ) );
    qvStringInsert( dest, idx, src );
}

/* At the ends ---------------------------------------------------------------------------------------------------- */

// What follows the first parameter of a form, given in brackets.
#define LIST( ... ) , __VA_ARGS__

// A row is a form at the start and at the end: how it inserts, the two names, the other parameters and what goes on to
// the insertion.
#define AT_ENDS( insert, prepend, append, PARAMETERS, ... )                                                            \
    void prepend( QV_STRING **dest LIST PARAMETERS )                                                                   \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
        insert( dest, 0, __VA_ARGS__ );                                                                                \
    }                                                                                                                  \
                                                                                                                       \
    void append( QV_STRING **dest LIST PARAMETERS )                                                                    \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
        insert( dest, ( *dest )->length, __VA_ARGS__ );                                                                \
    }

// The same with arguments that follow the parameter `last`.
#define AT_ENDS_MORE( insert, prepend, append, PARAMETERS, last, ... )                                                 \
    void prepend( QV_STRING **dest LIST PARAMETERS )                                                                   \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        insert( dest, 0, __VA_ARGS__, &argList );                                                                      \
        va_end( argList );                                                                                             \
    }                                                                                                                  \
                                                                                                                       \
    void append( QV_STRING **dest LIST PARAMETERS )                                                                    \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, last );                                                                                     \
        insert( dest, ( *dest )->length, __VA_ARGS__, &argList );                                                      \
        va_end( argList );                                                                                             \
    }

// clang-format off
AT_ENDS( qvStringInsertLeading, qvStringPrependLeading, qvStringAppendLeading,
         ( QV_STRING *src, QV_INT count ), src, count )
AT_ENDS( qvStringInsertTrailing, qvStringPrependTrailing, qvStringAppendTrailing,
         ( QV_STRING *src, QV_INT count ), src, count )
AT_ENDS( qvStringInsertInner, qvStringPrependInner, qvStringAppendInner,
         ( QV_STRING *src, QV_INT offset, QV_INT count ), src, offset, count )
AT_ENDS( qvStringInsertOuter, qvStringPrependOuter, qvStringAppendOuter,
         ( QV_STRING *src, QV_INT offset, QV_INT count ), src, offset, count )
AT_ENDS( qvStringInsertCstr, qvStringPrependCstr, qvStringAppendCstr,
         ( const char *text, QV_INT length ), text, length )
AT_ENDS( qvStringInsertWcstr, qvStringPrependWcstr, qvStringAppendWcstr,
         ( const wchar_t *text, QV_INT length ), text, length )
AT_ENDS( qvStringInsertObj, qvStringPrependObj, qvStringAppendObj, ( QV_OBJ *obj ), obj )
AT_ENDS( qvStringInsertFormatArgList, qvStringPrependFormatArgList, qvStringAppendFormatArgList,
         ( QV_STRING *fmt, va_list *argList ), fmt, argList )
AT_ENDS( qvStringInsertFormatCstrArgList, qvStringPrependFormatCstrArgList, qvStringAppendFormatCstrArgList,
         ( const char *fmt, QV_INT fmtLength, va_list *argList ), fmt, fmtLength, argList )
AT_ENDS( qvStringInsertFormatWcstrArgList, qvStringPrependFormatWcstrArgList, qvStringAppendFormatWcstrArgList,
         ( const wchar_t *fmt, QV_INT fmtLength, va_list *argList ), fmt, fmtLength, argList )
AT_ENDS_MORE( qvStringInsertFormatArgList, qvStringPrependFormat, qvStringAppendFormat,
              ( QV_STRING *fmt, ... ), fmt, fmt )
AT_ENDS_MORE( qvStringInsertFormatCstrArgList, qvStringPrependFormatCstr, qvStringAppendFormatCstr,
              ( const char *fmt, QV_INT fmtLength, ... ), fmtLength, fmt, fmtLength )
AT_ENDS_MORE( qvStringInsertFormatWcstrArgList, qvStringPrependFormatWcstr, qvStringAppendFormatWcstr,
              ( const wchar_t *fmt, QV_INT fmtLength, ... ), fmtLength, fmt, fmtLength )
// clang-format on

#undef AT_ENDS
#undef AT_ENDS_MORE

void qvStringPrependChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    qvStringInsertChars( dest, 0, chs, chsLength );
}

void qvStringAppendChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );

    QV_STRING *own = *dest;

    // Places that are free after some text, of a String that nobody else holds. Nothing moves, so that the characters may
    // be its own. They are looked at when it is known that there can be as many.
    if( __builtin_expect( chs && chsLength > 0 && own->length > 0 && !qv::isShared( own ), 1 )
        && ( chsLength <= own->bspace || own->stretch( chsLength ) ) && qv::allCharsOk( chs, chsLength ) )
        qv::copyChars( own->takeBack( chsLength ), chs, chsLength );
    else
        qvStringInsertChars( dest, own->length, chs, chsLength );
}

void qvStringPrepend( QV_STRING **dest, QV_STRING *src )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    qvStringInsert( dest, 0, src );
}

void qvStringPrependChar( QV_STRING **dest, QV_CHAR ch )
{
    qvStringPrependChars( dest, &ch, 1 );
}

/* Delimited ------------------------------------------------------------------------------------------------------ */

namespace
{
// Holds what `*dest` is now if that is one of the texts to add, so that the text is read as it was.
qv::Ref< QV_STRING > heldIfAdded( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    return qv::Ref< QV_STRING >::share( *dest == src || *dest == delimiter ? *dest : nullptr );
}
} // namespace

void qvStringDelimitedAppend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( delimiter );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, delimiter );

    if( ( *dest )->length > 0 )
        qvStringAppend( dest, delimiter );

    qvStringAppend( dest, src );
}

void qvStringDelimitedPrepend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( delimiter );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, delimiter );

    if( ( *dest )->length > 0 )
        qvStringPrepend( dest, delimiter );

    qvStringPrepend( dest, src );
}

void qvStringDelimitedAppendCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, nullptr );

    if( ( *dest )->length > 0 )
        qvStringAppendChar( dest, delimiter );

    qvStringAppend( dest, src );
}

void qvStringDelimitedPrependCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, nullptr );

    if( ( *dest )->length > 0 )
        qvStringPrependChar( dest, delimiter );

    qvStringPrepend( dest, src );
}

// A row is a form of the two texts, with their parameters: what is no String yet becomes one for the call.
#define DELIMITED( append, prepend, PARAMETERS, SOURCE, DELIMITER )                                                    \
    void append( QV_STRING **dest LIST PARAMETERS )                                                                    \
    {                                                                                                                  \
        qv::Ref< QV_STRING > source = SOURCE, separator = DELIMITER;                                                   \
        qvStringDelimitedAppend( dest, source, separator );                                                            \
    }                                                                                                                  \
                                                                                                                       \
    void prepend( QV_STRING **dest LIST PARAMETERS )                                                                   \
    {                                                                                                                  \
        qv::Ref< QV_STRING > source = SOURCE, separator = DELIMITER;                                                   \
        qvStringDelimitedPrepend( dest, source, separator );                                                           \
    }

// clang-format off
DELIMITED( qvStringDelimitedAppendCstr, qvStringDelimitedPrependCstr,
           ( const char *src, QV_INT srcLength, const char *delimiter, QV_INT delimiterLength ),
           asString( src, srcLength ), asString( delimiter, delimiterLength ) )
DELIMITED( qvStringDelimitedAppendCstrSource, qvStringDelimitedPrependCstrSource,
           ( const char *src, QV_INT srcLength, QV_STRING *delimiter ),
           asString( src, srcLength ), asString( delimiter ) )
DELIMITED( qvStringDelimitedAppendCstrDelimiter, qvStringDelimitedPrependCstrDelimiter,
           ( QV_STRING *src, const char *delimiter, QV_INT delimiterLength ),
           asString( src ), asString( delimiter, delimiterLength ) )
DELIMITED( qvStringDelimitedAppendWcstr, qvStringDelimitedPrependWcstr,
           ( const wchar_t *src, QV_INT srcLength, const wchar_t *delimiter, QV_INT delimiterLength ),
           asString( src, srcLength ), asString( delimiter, delimiterLength ) )
DELIMITED( qvStringDelimitedAppendWcstrSource, qvStringDelimitedPrependWcstrSource,
           ( const wchar_t *src, QV_INT srcLength, QV_STRING *delimiter ),
           asString( src, srcLength ), asString( delimiter ) )
DELIMITED( qvStringDelimitedAppendWcstrDelimiter, qvStringDelimitedPrependWcstrDelimiter,
           ( QV_STRING *src, const wchar_t *delimiter, QV_INT delimiterLength ),
           asString( src ), asString( delimiter, delimiterLength ) )
// clang-format on

#undef DELIMITED
#undef LIST
