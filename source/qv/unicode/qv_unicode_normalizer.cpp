#include "qv/unicode/qv_unicode_normalizer.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_vectors_private.h"
#include "qv/unicode/qv_unicode_normalizer_private.h"
#include "qv/unicode/qv_unicode_normalizer_stages_private.h"

#include <algorithm>

namespace
{
using namespace qv::normalizer;

// The state at the start of a text, with nothing readable.
void reset( QV_UNICODE_NORMALIZER *norm )
{
    norm->highSurrogate = 0;
    norm->first         = 0;
    norm->readable      = 0;
    norm->pending       = 0;
    norm->length        = 0;
    norm->starter       = 0;
    norm->lastCccv      = 255;
    norm->pendingCccv   = 0;
    norm->unordered     = false;
}

void init( QV_UNICODE_NORMALIZER *norm, QV_INT normalForm )
{
    norm->normalForm = normalForm;
    norm->chars      = nullptr;
    norm->capacity   = 0;
    norm->isLent     = false;
    reset( norm );
}

void writeAndWatch( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    writeChars( norm, chs, count );
    watch( norm );
}

void freeUnicodeNormalizer( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    freeArray( qvUnicodeNormalizerFrom( thisObj ) );
}
} // namespace

QV___FAMILY( UnicodeNormalizer, QV_UNICODE_NORMALIZER, freeUnicodeNormalizer, nullptr, nullptr )

QV_UNICODE_NORMALIZER *qvUnicodeNormalizerCreate( QV_INT normalForm )
{
    QV_CHECK( QV_UNICODE_NORMAL_FORM_OK( normalForm ) );

    QV_UNICODE_NORMALIZER *norm = qv::create< QV_UNICODE_NORMALIZER >( qvUnicodeNormalizerSort() );
    init( norm, normalForm );

    return norm;
}

/* Writing -------------------------------------------------------------------------------------------------------- */

void qvUnicodeNormalizerWriteChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
{
    QV_CHECK( norm );
    writeChar( norm, ch );
    watch( norm );
}

void qvUnicodeNormalizerWriteChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( norm );
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chs || chsLength == 0 );

    writeAndWatch( norm, chs, chsLength );
}

void qvUnicodeNormalizerWrite( QV_UNICODE_NORMALIZER *norm, QV_STRING *src )
{
    QV_CHECK( norm );
    QV_CHECK( src );

    writeAndWatch( norm, qv::chars( src ), src->length );
}

void qvUnicodeNormalizerWriteInner( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= qvStringLength( src ) );

    writeAndWatch( norm, qv::chars( src ) + offset, count );
}

void qvUnicodeNormalizerWriteOuter( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= qvStringLength( src ) );

    writeAndWatch( norm, qv::chars( src ), offset );
    writeAndWatch( norm, qv::chars( src ) + offset + count, src->length - offset - count );
}

void qvUnicodeNormalizerWriteLeading( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count )
{
    qvUnicodeNormalizerWriteInner( norm, src, 0, count );
}

void qvUnicodeNormalizerWriteTrailing( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( count >= 0 );

    qvUnicodeNormalizerWriteInner( norm, src, src->length - count, count );
}

void qvUnicodeNormalizerFlush( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );

    moveOn( norm, norm->length );
    norm->highSurrogate = 0;
    norm->readable      = norm->length;
    norm->starter       = 0;
    norm->lastCccv      = 255;
    norm->pendingCccv   = 0;
    watch( norm );
}

void qvUnicodeNormalizerClear( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );

    freeArray( norm );
    reset( norm );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

namespace
{
// The number of readable characters that a read with a limit takes. -1 means no limit.
QV_INT readableUpTo( QV_UNICODE_NORMALIZER *norm, QV_INT limit )
{
    QV_INT count = norm->readable - norm->first;

    return limit == -1 || limit > count ? count : limit;
}

// Removes the first readable characters.
void removeReadable( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    norm->first += count;

    if( norm->first == norm->length )
        toFront( norm );

    watch( norm );
}
} // namespace

QV_INT qvUnicodeNormalizerReadable( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );
    return readableUpTo( norm, -1 );
}

QV_INT qvUnicodeNormalizerRead( QV_UNICODE_NORMALIZER *norm, QV_STRING **string, QV_INT maxLen )
{
    QV_CHECK( norm );
    QV_CHECK( string );
    QV_CHECK( *string );
    QV_CHECK( maxLen == -1 || maxLen >= 0 );

    QV_INT count = readableUpTo( norm, maxLen );

    if( count > 0 )
    {
        qvStringAppendChars( string, norm->chars + norm->first, count );
        removeReadable( norm, count );
    }

    return count;
}

QV_INT qvUnicodeNormalizerReadChars( QV_UNICODE_NORMALIZER *norm, QV_CHAR *dest, QV_INT destLen )
{
    QV_CHECK( norm );
    QV_CHECK( destLen >= 0 );
    QV_CHECK( dest || destLen == 0 );

    QV_INT count = readableUpTo( norm, destLen );

    if( count > 0 )
    {
        qvMemCopyN( dest, norm->chars + norm->first, count, sizeof( QV_CHAR ) );
        removeReadable( norm, count );
    }

    return count;
}

/* Whole texts ---------------------------------------------------------------------------------------------------- */

namespace
{
// Writes a whole text, of which check() has told the run.
void writeWhole( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT length, Run run )
{
    // The run that the check has covered is not checked again.
    if( run.previous >= 0 && combiningClass( chs[0] ) == 0 )
        pass( norm, chs, run );
    else
        run.starter = 0;

    writeAndWatch( norm, chs + run.starter, length - run.starter );
    qvUnicodeNormalizerFlush( norm );
}

// With vectors of 64 bytes the form of so many characters is checked at once.
const QV_INT FEW_CHECKED = 32;

// Whether check() tells that a text of at most FEW_CHECKED characters is in the form, which takes a third of the time.
inline bool areFewNormal( const QV_CHAR *chs, QV_INT count, QV_INT form, qv::vectors::FewChecked *checked )
{
    bool holds =
        qv::areOrdered64( chs, count, SIMPLE[form], inertBits + form * 768, markClasses + form * 256, checked );

    // A mark that the tables do not tell counts as a starter there, so it is compared with both of its neighbours.
    auto classAt = [=]( QV_INT i )
    {
        return form <= QV_UNICODE_NORMAL_FORM_NFKC ? composedQuickCheck( chs[i], form & 1 )
                                                   : decomposeFully( chs[i], form & 1 );
    };

    for( uint32_t left = checked->left; holds && left != 0; left &= left - 1 )
    {
        QV_INT   i     = __builtin_ctz( left );
        uint32_t value = classAt( i );

        if( value != 0 )
        {
            uint32_t after = i + 1 < count ? classAt( i + 1 ) : 0;
            holds = value < LOOK_CLOSER && ( i == 0 || classAt( i - 1 ) <= value ) && ( after == 0 || after >= value );
        }
    }

    QV_ASSERT( holds == ( check( chs, count, form ).length == count ) );

    return holds;
}

QV_STRING *createFrom( const QV_CHAR *chs, QV_INT length )
{
    QV_STRING *result = qv::newString( length, nullptr, QV_STRING_FSPACE );
    qv::copyChars( qv::chars( result ), chs, length );

    return result;
}

// True if a text has become what it becomes without vectors.
[[maybe_unused]] bool isWrittenInOrder( const QV_CHAR *chs, QV_INT length, QV_INT form, QV_STRING *written )
{
    QV_CHAR room[FEW_ROOM];
    QV_INT  count = writeInOrder( chs, length, form, room );

    return count == written->length && std::equal( room, room + count, qv::chars( written ) );
}

// Decomposes at most FEW_CHECKED characters, all below 0x10000. Those without a bit in `left` are starters that stay. Null
// where a character is no starter, takes ordering or is Hangul, where the first that it becomes is not below 0x10000 as
// well, and where the result is longer than FEW_CHECKED.
[[gnu::noinline]] QV_STRING *decomposeFew( const QV_CHAR *chs, QV_INT length, QV_INT form, uint32_t left )
{
    qv::vectors::Replacement all[FEW_CHECKED];
    QV_INT                   replacements = 0;
    QV_INT                   count        = length;

    for( ; left != 0; left &= left - 1 )
    {
        QV_INT   i     = __builtin_ctz( left );
        uint32_t value = decomposeFully( chs[i], form & 1 );

        if( value == 0 )
            continue;

        if( value <= LOOK_CLOSER )
            return nullptr;

        Decomposition full = fullDecomposition( value );
        count += full.length - 1;

        if( !full.ordered || count > FEW_CHECKED || ( full.chars[0] & 0xFF0000 ) )
            return nullptr;

        all[replacements++] = { i, full.length, full.chars };
    }

    static_assert( qv::MOST_OPEN >= FEW_CHECKED );
    QV_STRING *result = qv::newOpenString();
    qv::replaceFew64( chs, length, all, replacements, qv::openChars( result ) );
    qv::closeOpen( result, count );
    QV_ASSERT( isWrittenInOrder( chs, length, form, result ) );

    return result;
}

// Few characters that take ordering go through the stages of a normalizer that is no object of the library, in an array on
// the stack: so many more places than the longest decompositions are more than any step asks for.
[[gnu::noinline]] QV_STRING *normalizeFewByStages( const QV_CHAR *chs, QV_INT length, QV_INT normalForm, Run run )
{
    QV_UNICODE_NORMALIZER norm;
    QV_CHAR               room[2 * FEW_ROOM];

    static_cast< QV_OBJ & >( norm ) = QV___STATIC_HEADER( QV___OBJ_TYPE_OBJECT );
    init( &norm, normalForm );
    norm.chars    = room;
    norm.capacity = 2 * FEW_ROOM;
    norm.isLent   = true;
    writeWhole( &norm, chs, length, run );
    QV_ASSERT( norm.isLent );

    QV_STRING *result = norm.length == 0 ? qvStringCreate() : createFrom( norm.chars, norm.length );
    freeArray( &norm );

    return result;
}

// A text of few characters is written on the stack, so that nothing is allocated but the new String.
QV_STRING *normalizeFew( const QV_CHAR *chs, QV_INT length, QV_INT normalForm, Run run )
{
    QV_CHAR room[FEW_ROOM];
    QV_INT  count = writeInOrder( chs, length, normalForm, room );

    return count < 0 ? normalizeFewByStages( chs, length, normalForm, run ) : createFrom( room, count );
}

// All others go through the stages into the block of the new String.
[[gnu::noinline]] QV_STRING *normalizeByStages( const QV_CHAR *chs, QV_INT length, QV_INT normalForm, Run run )
{
    qv::Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( normalForm ) );

    // Leaves the free places of a String at both ends.
    reserve( norm, QV_STRING_FSPACE + length + LONGEST_DECOMPOSITION + QV_STRING_BSPACE );
    norm->first = norm->readable = norm->pending = norm->length = QV_STRING_FSPACE;
    writeWhole( norm, chs, length, run );

    if( norm->length == norm->first )
        return qvStringCreate();

    // The array becomes the block of the String.
    QV_INT   size  = norm->length + QV_STRING_BSPACE;
    QV_CHAR *block = static_cast< QV_CHAR * >( qvMemReallocN( norm->chars, size, sizeof( QV_CHAR ) ) );
    norm->chars    = nullptr;

    return qv::createStringUse( block, norm->length - QV_STRING_FSPACE, QV_STRING_FSPACE, QV_STRING_BSPACE );
}

[[gnu::noinline]] QV_STRING *normalizeChanging( const QV_CHAR *chs, QV_INT length, QV_INT normalForm, Run run )
{
    return length <= FEW ? normalizeFew( chs, length, normalForm, run )
                         : normalizeByStages( chs, length, normalForm, run );
}
} // namespace

QV_STRING *qv::normalize( QV_STRING *qvs, QV_INT normalForm )
{
    const QV_CHAR  *chs    = qv::chars( qvs );
    QV_INT          length = qvs->length;
    normalizer::Run run    = { 0, 0, -1 };

    if( length > 0 && length <= FEW_CHECKED && vectors::has64() )
    {
        vectors::FewChecked checked;

        if( areFewNormal( chs, length, normalForm, &checked ) )
            return nullptr;

        if( normalForm > QV_UNICODE_NORMAL_FORM_NFKC && checked.marks == 0 && !checked.isWide )
            if( QV_STRING *result = decomposeFew( chs, length, normalForm, checked.left ) )
                return result;
    }
    else
    {
        run = normalizer::check( chs, length, normalForm );

        if( run.length == length )
            return nullptr;
    }

    return normalizeChanging( chs, length, normalForm, run );
}
