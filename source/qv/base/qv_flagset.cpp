#include "qv/base/qv_flagset_private.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_name.h"
#include "qv/base/qv_named_values_private.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"

#include <utility>

struct QV_FLAGSET : QV_OBJ
{
    QV_DICT   *nameToValue;           // Strings to boxed integers
    QV_STRING *bitNames[QV_INT_BITS]; // null without a name; of several names for one bit, the one entered last

    QV_STRING *nameOf( QV_INT value )
    {
        return qv::Ref< QV_STRING >::share( bitNames[qvIntBitLowest( value )] ).give();
    }

    void setNameOf( QV_BOXED_INT *value, QV_STRING *name )
    {
        qv::assign( &bitNames[qvIntBitLowest( qvBoxedIntValue( value ) )], qv::retain( name ) );
    }

    void clearNameOf( QV_INT value )
    {
        qv::release( std::exchange( bitNames[qvIntBitLowest( value )], nullptr ) );
    }
};

namespace
{
void freeFlagset( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_FLAGSET *fs = qvFlagsetFrom( thisObj );
    qv::drop( fs->nameToValue );

    for( QV_STRING *&name : fs->bitNames )
        qv::drop( name );
}

// Whether each bit's name has that bit.
[[maybe_unused]] bool isSoundFlagset( QV_FLAGSET *fs )
{
    bool all = true;

    for( QV_INT bit = 0; bit < QV_INT_BITS && all; bit++ )
        all = !fs->bitNames[bit] || qvFlagsetFlag( fs, fs->bitNames[bit] ) == qvIntBitSet( 0, bit );

    return all;
}

// Whether constant names stand in the order of their bits, of which each has one.
[[maybe_unused]] bool areInOrder( std::span< const qv::NamedFlag > names )
{
    for( size_t i = 0; i < names.size(); i++ )
        if( qvIntBitCount( names[i].value ) != 1 || ( i > 0 && names[i - 1].value >= names[i].value ) )
            return false;

    return true;
}

// The bits that have names.
QV_INT bitsOf( std::span< const qv::NamedFlag > names )
{
    QV_INT bits = 0;

    for( const qv::NamedFlag &flag : names )
        bits |= flag.value;

    return bits;
}

// The flags that the pieces of a text between vertical bars name: by `valueOf( name )`, which returns 0 for any other
// text, or by a number, of which the bits in `named` count.
template< class ValueOf >
QV_INT parsePieces( QV_STRING *text, QV_INT named, ValueOf valueOf )
{
    QV_INT               result = 0;
    qv::Ref< QV_VECTOR > pieces( qvStringSplitChar( text, U'|', -1 ) );

    for( QV_INT i = 0; i < qvVectorLength( pieces ); i++ )
    {
        qv::Ref< QV_STRING > piece( qvStringFrom( qvVectorObjAt( pieces, i ) ) );
        qvStringTrim( piece.at() );

        QV_INT number;

        if( QV_INT value = valueOf( piece ) )
            result |= value;
        else if( qv::scansAsInt( piece, -1, &number ) )
            result |= number & named;
    }

    return result;
}
} // namespace

QV___FAMILY( Flagset, QV_FLAGSET, freeFlagset, nullptr, nullptr )

QV_FLAGSET *qvFlagsetCreate( void )
{
    QV_FLAGSET *fs  = qv::create< QV_FLAGSET >( qvFlagsetSort() );
    fs->nameToValue = qvDictCreate();

    for( QV_STRING *&name : fs->bitNames )
        name = nullptr;

    return fs;
}

QV_FLAGSET *qvFlagsetCreateFrom( QV_FLAGSET *source )
{
    QV_CHECK( source );

    QV_FLAGSET *fs  = qv::create< QV_FLAGSET >( qvFlagsetSort() );
    fs->nameToValue = qv::retain( source->nameToValue );

    for( QV_INT bit = 0; bit < QV_INT_BITS; bit++ )
        fs->bitNames[bit] = qv::Ref< QV_STRING >::share( source->bitNames[bit] ).give();

    return fs;
}

QV_VECTOR *qvFlagsetFlagsVector( QV_FLAGSET *fs )
{
    QV_CHECK( fs );
    return qvDictKeysVector( fs->nameToValue );
}

QV_INT qvFlagsetFlag( QV_FLAGSET *fs, QV_STRING *name )
{
    QV_CHECK( fs );
    QV_CHECK( name );

    return qv::valueOfName( fs, name, 0 );
}

QV_BOOL qvFlagsetHasFlag( QV_FLAGSET *fs, QV_STRING *name )
{
    QV_CHECK( fs );
    QV_CHECK( name );

    return qvDictHasStringKey( fs->nameToValue, name );
}

void qvFlagsetSetFlag( QV_FLAGSET **fs, QV_STRING *name, QV_INT value )
{
    QV_CHECK( fs );
    QV_CHECK( *fs );
    QV_CHECK( name );
    QV_CHECK( qvNameUpperCaseOk( name, QV_TRUE ) );
    QV_CHECK( value && qvIntBitHighest( value ) == qvIntBitLowest( value ) );

    qv::enterName( fs, qvFlagsetCreateFrom, name, value );
    QV_ASSERT( isSoundFlagset( *fs ) );
}

void qvFlagsetDelFlag( QV_FLAGSET **fs, QV_STRING *name )
{
    QV_CHECK( fs );
    QV_CHECK( *fs );
    QV_CHECK( name );
    QV_CHECK( qvNameUpperCaseOk( name, QV_TRUE ) );

    qv::removeName( fs, qvFlagsetCreateFrom, name );
    QV_ASSERT( isSoundFlagset( *fs ) );
}

QV_STRING *qvFlagsetGenerate( QV_FLAGSET *fs, QV_INT flags )
{
    qv::checkRun();
    QV_CHECK( fs );

    qv::Ref< QV_STRING > result( qvStringCreate() );

    for( QV_INT bit = 0; bit < QV_INT_BITS; bit++ )
    {
        if( !qvIntBitIsSet( flags, bit ) )
            continue;

        QV_STRING *name = fs->bitNames[bit];
        QV_CHECK( name );
        qvStringDelimitedAppendCharDelimiter( result.at(), name, U'|' );
    }

    return result.give();
}

QV_INT qvFlagsetParse( QV_FLAGSET *fs, QV_STRING *flags )
{
    QV_CHECK( fs );
    QV_CHECK( flags );

    QV_INT named = 0;

    for( QV_INT bit = 0; bit < QV_INT_BITS; bit++ )
        if( fs->bitNames[bit] )
            named = qvIntBitSet( named, bit );

    return parsePieces( flags, named, [fs]( QV_STRING *name ) { return qvFlagsetFlag( fs, name ); } );
}

/* Constant names ------------------------------------------------------------------------------------------------- */

QV_STRING *qv::generateFlags( std::span< const NamedFlag > names, QV_INT flags )
{
    checkRun();
    QV_ASSERT( areInOrder( names ) && !( flags & ~bitsOf( names ) ) );
    Ref< QV_STRING > result( qvStringCreate() );

    for( const NamedFlag &flag : names )
        if( flags & flag.value )
            qvStringDelimitedAppendCharDelimiter( result.at(), asString( flag.name, -1 ), U'|' );

    return result.give();
}

QV_INT qv::parseFlags( std::span< const NamedFlag > names, QV_STRING *flags )
{
    auto valueOf = [names]( QV_STRING *name )
    {
        for( const NamedFlag &flag : names )
            if( qvStringEqualsCstr( name, flag.name, -1 ) )
                return flag.value;

        return QV_INT( 0 );
    };

    return parsePieces( flags, bitsOf( names ), valueOf );
}

/* The forms with text from outside ------------------------------------------------------------------------------- */

QV_INT qvFlagsetFlagCstr( QV_FLAGSET *fs, const char *cstr, QV_INT length )
{
    return qvFlagsetFlag( fs, qv::asString( cstr, length ) );
}

QV_BOOL qvFlagsetHasFlagCstr( QV_FLAGSET *fs, const char *cstr, QV_INT length )
{
    return qvFlagsetHasFlag( fs, qv::asString( cstr, length ) );
}

void qvFlagsetSetFlagCstr( QV_FLAGSET **fs, const char *cstr, QV_INT length, QV_INT value )
{
    qvFlagsetSetFlag( fs, qv::asString( cstr, length ), value );
}

void qvFlagsetDelFlagCstr( QV_FLAGSET **fs, const char *cstr, QV_INT length )
{
    qvFlagsetDelFlag( fs, qv::asString( cstr, length ) );
}

QV_INT qvFlagsetFlagWcstr( QV_FLAGSET *fs, const wchar_t *wcstr, QV_INT length )
{
    return qvFlagsetFlag( fs, qv::asString( wcstr, length ) );
}

QV_BOOL qvFlagsetHasFlagWcstr( QV_FLAGSET *fs, const wchar_t *wcstr, QV_INT length )
{
    return qvFlagsetHasFlag( fs, qv::asString( wcstr, length ) );
}

void qvFlagsetSetFlagWcstr( QV_FLAGSET **fs, const wchar_t *wcstr, QV_INT length, QV_INT value )
{
    qvFlagsetSetFlag( fs, qv::asString( wcstr, length ), value );
}

void qvFlagsetDelFlagWcstr( QV_FLAGSET **fs, const wchar_t *wcstr, QV_INT length )
{
    qvFlagsetDelFlag( fs, qv::asString( wcstr, length ) );
}
