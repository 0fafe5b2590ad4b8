#include "qv_functions.h"

#include "qv_test_utf8.h"

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>

using qv::Ref;
using qv::obj;
using namespace qv::test;

namespace
{
// What makes an object of a family, where that is not qv...Create().
const std::map< std::string, std::string > MAKERS = {
    { "ALERTABLE", "qvAlertableCreateBarrier" },
    { "BYTE_SINK", "qvBufferByteSinkByteSink" },
    { "BYTE_SOURCE", "qvBufferByteSourceByteSource" },
    { "CHAR_SINK", "qvStringCharSinkCharSink" },
    { "CHAR_SOURCE", "qvStringCharSourceCharSource" },
    { "LINE_SINK", "qvNlfLineSinkLineSink" },
    { "LINE_SOURCE", "qvNlfLineSourceLineSource" },
    { "MODULE", "qvModule" },
    { "SIGNALABLE", "qvSignalableCreateBarrier" },
    { "SORT", "qvStringSort" },
    { "THREAD", "qvThreadThis" },
    { "TIMER", "qvTimerCreateSignal" },
};

// The maker of BYTE_SINK is qvByteSinkCreate().
std::string makerOf( const std::string &family )
{
    if( MAKERS.count( family ) )
        return MAKERS.at( family );

    std::string name = "qv";

    for( size_t i = 0; i < family.size(); i++ )
        if( family[i] != '_' )
            name += static_cast< char >( i == 0 || family[i - 1] == '_' ? family[i] : std::tolower( family[i] ) );

    return name + "Create";
}

template< class T >
T *as( QV_OBJ *object )
{
    return reinterpret_cast< T * >( object );
}

bool has( const std::string &text, const char *part )
{
    return text.find( part ) != std::string::npos;
}

void nothing()
{
}

QV_INT inAnyOrder( QV_OBJ *, QV_OBJ *, void * )
{
    return 0;
}

void addOne( QV_OBJ **value, void * )
{
    QV_INT old = *value && qvObjSort( *value ) == qvBoxedIntSort() ? qvBoxedIntValue( qvBoxedIntFrom( *value ) ) : 0;
    qv::Ref< QV_OBJ > given( *value );
    *value = obj( qvBoxedIntCreate( old + 1 ) );
}
} // namespace

const Function *qv::test::findFunction( const std::string &name )
{
    const Function *found = FUNCTIONS;

    while( name != found->name )
        found++;

    return found;
}

bool qv::test::isObject( const std::string &type )
{
    static const std::regex OBJECT( "QV_(?!(INT|BOOL|REAL|CHAR) |OBJ \\*(const )?\\*)\\w+ \\*+" );
    return std::regex_match( type, OBJECT );
}

std::string qv::test::shownObject( QV_OBJ *object )
{
    if( !object )
        return "none";

    QV_SORT    *sort = qvObjSort( object );
    std::string result;

    auto each = [&]( QV_VECTOR *owned )
    {
        Ref< QV_VECTOR > vec( owned );

        for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
            result += shownObject( Ref< QV_OBJ >( qvVectorObjAt( vec, i ) ) ) + ", ";
    };

    if( sort == qvBufferSort() )
        for( QV_INT i = 0; i < qvBufferBitLength( as< QV_BUFFER >( object ) ); i++ )
            result += qvBufferBitReadBits( as< QV_BUFFER >( object ), i, 1 ) ? '1' : '0';
    else if( sort == qvVectorSort() )
        each( qvVectorCreateFrom( as< QV_VECTOR >( object ) ) );
    else if( sort == qvStoreSort() )
        each( qvStoreEncodeToStringVector( as< QV_STORE >( object ) ) );
    else if( sort == qvToolSwitchSort() )
        each( qvToolSwitchToolsVector( as< QV_TOOL_SWITCH >( object ) ) );
    else if( sort == qvOptionsSort() )
        result = take( qvOptionsUsage( as< QV_OPTIONS >( object ), 80 ) );
    else if( sort == qvEnumSort() || sort == qvFlagsetSort() || sort == qvOptDefSort() )
        for( const char *name : { "A", "B", "AA", "AB", "BA", "BB", "a", "b", "aa", "ab", "ba", "bb" } )
            result += std::to_string(
                          sort == qvEnumSort() ? qvEnumEnumerantCstr( as< QV_ENUM >( object ), name, -1 )
                          : sort == qvFlagsetSort()
                              ? qvFlagsetFlagCstr( as< QV_FLAGSET >( object ), name, -1 )
                              : qvOptDefLongOpt( as< QV_OPT_DEF >( object ), text( name ), QV_FALSE, nullptr ) )
                      + " ";
    else
        result = textOf( object );

    return result + " of " + sort->name;
}

std::string Argument::shown() const
{
    if( type == "QV_BUFFER_BYTE_SINK *" )
        return shownObject(
            obj( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( as< QV_BUFFER_BYTE_SINK >( object ) ) ).get() ) );

    if( type == "QV_STRING_CHAR_SINK *" )
        return take( qvStringCharSinkString( as< QV_STRING_CHAR_SINK >( object ) ) );

    if( type == "QV_ENCODER *" )
        return shownObject( obj( Ref< QV_BUFFER >( qvEncoderBuffer( as< QV_ENCODER >( object ) ) ).get() ) );

    if( type == "QV_UNICODE_NORMALIZER *" )
    {
        Ref< QV_STRING > out( qvStringCreate() );
        qvUnicodeNormalizerFlush( as< QV_UNICODE_NORMALIZER >( object ) );
        qvUnicodeNormalizerRead( as< QV_UNICODE_NORMALIZER >( object ), out.at(), -1 );
        return utf8( out );
    }

    // What a stream writes to.
    if( type.ends_with( "_SINK *" ) )
        return madeFrom->all[0].shown();

    return type.ends_with( "**" ) ? shownObject( object ) : type.starts_with( "const" ) ? "" : bytes;
}

Arguments::Arguments( const Function &called, unsigned seed, bool nothingEmpty ) :
    least( nothingEmpty ? 1 : 0 ), function( called.name ), random( seed )
{
    std::istringstream words( called.words );
    std::string        type, name;

    // The name of `...` is empty.
    for( std::getline( words, type, '|' ); std::getline( words, type, '|' ); add( type, name ) )
        std::getline( words, name, '|' );
}

std::vector< Slot > Arguments::slots()
{
    std::vector< Slot > result;

    for( const Argument &argument : all )
        result.push_back( argument.slot );

    return result;
}

std::u32string Arguments::someText( bool name )
{
    const std::u32string alphabet = function.starts_with( "qvEnum" ) || function.starts_with( "qvFlagset" ) ? U"AB"
                                    : name || function.starts_with( "qvStore" ) || function.starts_with( "qvOpt" )
                                            || function.starts_with( "qvRuntime" )
                                        ? U"ab"
                                        : U"aAb \u00e9\U0001f600";
    const bool           mayBeEmpty =
        alphabet.size() > 2 && !has( function, "Find" ) && !has( function, "Split" ) && !has( function, "Replace" );
    std::u32string result;

    for( QV_INT left = ( mayBeEmpty ? least : 1 ) + below( alphabet.size() > 2 ? 5 : 2 ); left > 0; left-- )
        result += alphabet[random() % alphabet.size()];

    return result;
}

std::string Arguments::someBytes()
{
    std::string result( static_cast< size_t >( least + below( 7 ) ), '\0' );
    std::generate( result.begin(), result.end(), std::ref( random ) );

    return result;
}

void Arguments::object( Argument &argument, const std::string &family )
{
    const bool at   = function.ends_with( "At" );
    const bool bits = function.starts_with( "qvBufferBit" );
    QV_OBJ   *&made = *argument.object.at();

    if( family == "STRING" )
    {
        argument.characters = someText();

        if( at && argument.characters.empty() )
            argument.characters = U"x";

        room = static_cast< QV_INT >( argument.characters.size() );
        made = obj( text( argument.characters ).give() );
    }
    else if( family == "BUFFER" )
    {
        const bool one   = has( function, "ReadByte" ) && !has( function, "Bytes" ); // which has to be there
        const bool write = has( function, "Write" ) && argument.type == "QV_BUFFER **";

        // Room for whatever is written.
        std::string      bytes = write ? std::string( 40, '\x55' ) : someBytes() + ( one ? "x" : "" );
        Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );

        if( bits )
            qvBufferBitAppendBits( buf.at(), random(), below( 8 ) );

        room = ( write ? 12 : bits ? qvBufferBitLength( buf ) : qvBufferLength( buf ) ) - ( one ? bits ? 8 : 1 : 0 );
        made = obj( buf.give() );
    }
    else if( family == "VECTOR" )
    {
        QV_VECTOR *vec = qvVectorCreate();
        room           = ( at ? 1 : least ) + below( 5 );

        for( QV_INT i = 0; i < room; i++ )
            qvVectorAppendString( &vec, text( someText() ) );

        made = obj( vec );
    }
    else if( family == "OBJ" )
    {
        const char *const KINDS[] = { "BOXED_NULL", "BOXED_BOOL", "BOXED_INT", "BOXED_REAL", "STRING" };
        object( argument, KINDS[below( 5 )] );
    }
    else if( family == "DICT" )
    {
        QV_DICT *dict = qvDictCreate();

        for( QV_INT i = below( 6 ) + ( at ? 1 : 0 ); i > 0; i-- )
        {
            Ref< QV_OBJ >    value( obj( qvBoxedIntCreate( i ) ) );
            Ref< QV_STRING > key = text( someText() );
            below( 2 ) ? qvDictSetNullKey( &dict, value ) : qvDictSetStringKey( &dict, key, value );
            below( 2 ) ? qvDictSetIntKey( &dict, below( 4 ), value ) : qvDictSetRealKey( &dict, 0.5, value );
            below( 2 ) ? qvDictSetBoolKey( &dict, 1, value ) : qvDictSetSortKey( &dict, qvStringSort(), value );
        }

        room = qvDictLength( dict );
        made = obj( dict );
    }
    else if( family == "STORE" )
    {
        // Some names are such as formats of the tests become.
        const char32_t *const ENDS[] = { U"", U"", U"0", U"1", U"2", U"0x", U"1x", U"2x" };
        QV_STORE             *store  = qvStoreCreate();

        for( QV_INT i = 2 + below( 6 ); i > 0; i-- )
        {
            Ref< QV_STRING > address = text( someText( true ) + ENDS[below( 8 )] );
            Ref< QV_STORE >  under( qvStoreCreate() );
            qvStoreSetValueIntCstr( under.at(), "n", -1, i );

            if( below( 3 ) )
                qvStoreSetValueInt( &store, address, below( 2 ) );

            if( !below( 2 ) || !qvStoreLength( store ) )
                qvStoreSetStore( &store, address, under );
        }

        room = qvStoreLength( store );
        made = obj( store );
    }
    else
    {
        const Function &maker = *findFunction( makerOf( family ) );
        argument.madeFrom     = std::make_shared< Arguments >( maker, random(), least > 0 );
        made                  = static_cast< QV_OBJ * >( maker.call( argument.madeFrom->slots().data() ).p );

        for( const char *name : { "A", "B", "AB" } )
            if( family == "ENUM" )
                qvEnumSetEnumerantCstr( reinterpret_cast< QV_ENUM ** >( &made ), name, -1, below( 5 ) );
            else if( family == "FLAGSET" )
                qvFlagsetSetFlagCstr( reinterpret_cast< QV_FLAGSET ** >( &made ), name, -1, 1 << below( 5 ) );
            else if( family == "OPTIONS" )
                qvOptionsAddCstr( reinterpret_cast< QV_OPTIONS ** >( &made ), 0, name, -1, 1, "", -1 );
            else if( family == "TOOL_SWITCH" )
                qvToolSwitchSetToolCstr( reinterpret_cast< QV_TOOL_SWITCH ** >( &made ), name, -1, nullptr );

        if( family == "RANGE_MAP" )
            qvRangeMapSetRangeKey(
                reinterpret_cast< QV_RANGE_MAP ** >( &made ), 2, 5, Ref< QV_OBJ >( obj( qvBoxedIntCreate( 1 ) ) ) );
        else if( family == "ENCODER" )
            qvEncoderEncodeInt( as< QV_ENCODER >( made ), below( 200 ) );
        else if( family == "SORT" )
            qv::retain( made );
    }
}

QV_INT Arguments::number( const std::string &type, const std::string &name )
{
    const Argument *last = all.size() > 1 ? &all[all.size() - 2] : nullptr;

    if( last && last->units >= 0 )
        return last->type.starts_with( "const char" ) || last->type.starts_with( "const wchar" )
                   ? last->units - ( below( 2 ) ? 0 : last->units + 1 )
                   : last->units;

    if( type == "QV_CHAR" )
        return U"ab \u00e9\U0001f600"[below( 5 )];

    if( type == "uint8_t" || type == "uint64_t" )
        return static_cast< QV_INT >( random() * 0x123456789u );

    if( function.starts_with( "qvVectorSet" ) && name == "idx" ) // at the ends it inserts
        return below( room + 2 ) - 1;

    if( name.ends_with( "dx" ) || name.ends_with( "ndex" ) || name.ends_with( "ffset" ) )
    {
        QV_INT value = below( function.ends_with( "At" ) && room > 0 ? room : room + 1 );
        room -= value;
        return value;
    }

    const bool bits = function.starts_with( "qvBufferBit" ), integer = last && last->type == "uint64_t";

    if( name == "bitCount" && ( integer || !bits || has( function, "ReadBits" ) ) )
        return below( ( integer ? 64 : std::min< QV_INT >( bits ? room : room * 8, 64 ) ) + 1 );

    if( name.ends_with( "ount" ) || name.ends_with( "ength" ) )
    {
        const QV_INT limit = bits && name == "byteCount" ? room / 8 : room;
        return limit > 0 ? least + below( limit + 1 - least ) : 0;
    }

    return name == "endingKey"                                               ? last->slot.i + below( 3 )
           : name == "value" && has( function, "Flag" )                      ? 1 << below( 6 )
           : name == "maxParts"                                              ? ( below( 2 ) ? -1 : 1 + below( 3 ) )
           : name.starts_with( "max" )                                       ? -1
           : name == "blocked"                                               ? 0
           : type == "QV_BOOL"                                               ? below( 2 )
           : name == "base"                                                  ? 10
           : name == "option"                                                ? below( 3 )
           : name == "charset"                                               ? QV_CHARSET_UTF_8
           : has( name, "condition" ) || name == "code"                      ? 1
           : name == "nlfFlags"                                              ? QV_NLF_FLAG_LF
           : has( name, "illisec" ) || has( name, "lags" ) || name == "skip" ? 0
                                                                             : below( 4 );
}

void Arguments::add( const std::string &type, const std::string &name )
{
    Argument &argument = all.emplace_back();
    argument.type      = type;
    argument.name      = name;

    const bool        format  = name == "fmt" || name == "format";
    const QV_INT      counted = below( 3 );
    const std::string tail    = below( 2 ) ? "x" : "";

    if( type == "..." || type == "va_list *" )
    {
        // What the format before asks for: a digit, and perhaps an x.
        auto last = std::find_if(
            all.rbegin(), all.rend(),
            []( const Argument &each ) { return each.name == "fmt" || each.name == "format"; } );
        std::u32string becomes = last->characters;
        const bool     longer  = becomes.back() == U'x';
        argument.object.reset( obj( text( longer ? "x" : "" ).give() ) );
        argument.slot.i           = becomes[becomes.size() - ( longer ? 2 : 1 )] - U'0';
        all.emplace_back().slot.p = argument.object;
    }
    else if( type == "const char *" || type == "const wchar_t *" || ( format && type == "QV_STRING *" ) )
    {
        std::u32string characters = argument.characters = someText();

        if( format )
        {
            argument.characters += static_cast< char32_t >( U'0' + counted );
            argument.characters.append( tail.begin(), tail.end() );
            characters += U"%i%s";
        }

        argument.bytes = encodedUtf8( characters );
        argument.wide.assign( characters.begin(), characters.end() );

        if( type == "QV_STRING *" )
            argument.object.reset( obj( text( characters ).give() ) );
        else
            argument.units =
                static_cast< QV_INT >( type == "const char *" ? argument.bytes.size() : argument.wide.size() );

        argument.slot.p = type == "QV_STRING *"    ? static_cast< void * >( argument.object )
                          : type == "const char *" ? static_cast< void * >( argument.bytes.data() )
                                                   : static_cast< void * >( argument.wide.data() );
    }
    else if( type == "const QV_CHAR *" )
    {
        argument.characters = someText();
        argument.units      = static_cast< QV_INT >( argument.characters.size() );
        argument.slot.p     = argument.characters.data();
    }
    else if( type == "const void *" )
    {
        argument.bytes  = someBytes();
        argument.units  = static_cast< QV_INT >( argument.bytes.size() );
        argument.slot.p = argument.bytes.data();
    }
    else if( type == "QV_OBJ *const *" )
    {
        object( argument, "VECTOR" );
        argument.units  = qvVectorLength( as< QV_VECTOR >( argument.object ) );
        argument.slot.p = const_cast< QV_OBJ ** >( qvVectorBacking( as< QV_VECTOR >( argument.object ) ) );
    }
    else if( type == "QV_VECTOR_COMPARE_FUNC" )
        argument.slot.p = reinterpret_cast< void * >( inAnyOrder );
    else if( type == "QV_DICT_UPDATE_FUNC" )
        argument.slot.p = reinterpret_cast< void * >( addOne );
    else if( type.ends_with( "_FUNC" ) )
        argument.slot.p = reinterpret_cast< void * >( nothing );
    else if( type == "QV_REAL" )
        argument.slot.r = static_cast< QV_REAL >( below( 2 ) ) / 2;
    else if( isObject( type ) )
    {
        object( argument, type.substr( 3, type.find( ' ' ) - 3 ) );
        argument.slot.p = type.ends_with( "**" ) ? static_cast< void * >( argument.object.at() ) : argument.object;
    }
    else if( type.ends_with( "*" ) )
    {
        argument.bytes.assign( 128, '\0' );
        argument.slot.p = argument.bytes.data();
    }
    else
        argument.slot.i = number( type, name );
}
