#include "qv_functions.h"

#include "qv_test_utf8.h"

#include <algorithm>
#include <map>

using qv::Ref;
using namespace qv::test;

namespace
{
template< class T >
QV_OBJ *asObj( T *object )
{
    return reinterpret_cast< QV_OBJ * >( object );
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

bool begins( const std::string &text, const char *part )
{
    return text.rfind( part, 0 ) == 0;
}

bool ends( const std::string &text, const std::string &part )
{
    return text.size() >= part.size() && text.compare( text.size() - part.size(), part.size(), part ) == 0;
}

void nothing()
{
}

Ref< QV_BUFFER > emptyBuffer()
{
    return Ref< QV_BUFFER >( qvBufferCreate() );
}

Ref< QV_BYTE_SOURCE > byteSource( QV_BUFFER *buf )
{
    return Ref< QV_BYTE_SOURCE >(
        qvBufferByteSourceByteSource( Ref< QV_BUFFER_BYTE_SOURCE >( qvBufferByteSourceCreate( buf ) ) ) );
}

Ref< QV_CHAR_SINK > charSink()
{
    return Ref< QV_CHAR_SINK >( qvStringCharSinkCharSink( Ref< QV_STRING_CHAR_SINK >( qvStringCharSinkCreate() ) ) );
}

// Objects of families whose contents do not matter.
const std::map< std::string, QV_OBJ *(*)() > PLAIN = {
    { "ALERT", [] { return asObj( qvAlertCreate() ); } },
    { "ALERTABLE", [] { return asObj( qvAlertableCreateBarrier( Ref< QV_BARRIER >( qvBarrierCreate( 0 ) ) ) ); } },
    { "BARRIER", [] { return asObj( qvBarrierCreate( 0 ) ); } },
    { "BOXED_BOOL", [] { return asObj( qvBoxedBoolCreate( 1 ) ); } },
    { "BOXED_INT", [] { return asObj( qvBoxedIntCreate( 1 ) ); } },
    { "BOXED_NULL", [] { return asObj( qvBoxedNullCreate() ); } },
    { "BOXED_REAL", [] { return asObj( qvBoxedRealCreate( 1 ) ); } },
    { "BOXED_UNIQUE", [] { return asObj( qvBoxedUniqueCreate() ); } },
    { "BUFFER_BYTE_SINK", [] { return asObj( qvBufferByteSinkCreate() ); } },
    { "BUFFER_BYTE_SOURCE", [] { return asObj( qvBufferByteSourceCreate( emptyBuffer() ) ); } },
    { "BYTE_SOURCE", [] { return asObj( byteSource( emptyBuffer() ).give() ); } },
    { "CHAR_SOURCE",
      [] { return asObj( qvCharsetCreateCharSource( byteSource( emptyBuffer() ), QV_CHARSET_UTF_8, 0 ) ); } },
    { "CONDSET", [] { return asObj( qvCondsetCreate() ); } },
    { "COUNTER", [] { return asObj( qvCounterCreate() ); } },
    { "DECODER", [] { return asObj( qvDecoderCreate( emptyBuffer() ) ); } },
    { "GENERATION", [] { return asObj( qvGenerationCreate() ); } },
    { "GENERATION_MUTEX", [] { return asObj( qvGenerationMutexCreate() ); } },
    { "IDENTIFIER", [] { return asObj( qvIdentifierCreate() ); } },
    { "LINE_SOURCE",
      []
      {
          return asObj( qvNlfLineSourceLineSource(
              Ref< QV_NLF_LINE_SOURCE >( qvNlfLineSourceCreateFromString( text( "a\nb" ), 0 ) ) ) );
      } },
    { "MODULE", [] { return asObj( qvModule() ); } },
    { "MODULE_VERSION", [] { return asObj( qvModuleVersionCreate( 1, 0, 0, 0 ) ); } },
    { "MONITOR", [] { return asObj( qvMonitorCreate() ); } },
    { "NLF_LINE_SINK", [] { return asObj( qvNlfLineSinkCreate( charSink(), 0 ) ); } },
    { "NLF_LINE_SOURCE", [] { return asObj( qvNlfLineSourceCreateFromString( text( "a" ), 0 ) ); } },
    { "OPT_DEF", [] { return asObj( qvOptDefCreate() ); } },
    { "OPT_SEQ",
      []
      {
          return asObj( qvOptSeqCreate( Ref< QV_OPT_DEF >( qvOptDefCreate() ), Ref< QV_VECTOR >( qvVectorCreate() ) ) );
      } },
    { "PRIORITY_MAP", [] { return asObj( qvPriorityMapCreate() ); } },
    { "REGION", [] { return asObj( qvRegionCreate() ); } },
    { "SIGNAL", [] { return asObj( qvSignalCreate() ); } },
    { "SIGNALABLE", [] { return asObj( qvSignalableCreateBarrier( Ref< QV_BARRIER >( qvBarrierCreate( 0 ) ) ) ); } },
    { "SORT", [] { return asObj( qvStringSort() ); } },
    { "STACK_TRACE", [] { return asObj( qvStackTraceCreate( 0, 1 ) ); } },
    { "STRING_CHAR_SINK", [] { return asObj( qvStringCharSinkCreate() ); } },
    { "STRING_CHAR_SOURCE", [] { return asObj( qvStringCharSourceCreate( text( "a" ) ) ); } },
    { "THREAD", [] { return asObj( qvThreadThis() ); } },
    { "TIME", [] { return asObj( qvTimeCreate() ); } },
    { "TIMER", [] { return asObj( qvTimerCreateSignal( Ref< QV_SIGNAL >( qvSignalCreate() ) ) ); } },
    { "UNICODE_NORMALIZER", [] { return asObj( qvUnicodeNormalizerCreate( QV_UNICODE_NORMAL_FORM_NFC ) ); } },
};

std::string hex( const void *bytes, size_t count )
{
    std::string result;

    for( size_t i = 0; i < count; i++ )
        result += "0123456789abcdef"[static_cast< const uint8_t * >( bytes )[i] >> 4],
            result += "0123456789abcdef"[static_cast< const uint8_t * >( bytes )[i] & 15];

    return result;
}
} // namespace

const Function *qv::test::findFunction( const std::string &name )
{
    static const std::map< std::string, const Function * > table = []
    {
        std::map< std::string, const Function * > result;

        for( size_t i = 0; i < FUNCTION_COUNT; i++ )
            result[FUNCTIONS[i].name] = &FUNCTIONS[i];

        return result;
    }();

    return table.at( name );
}

std::string qv::test::shownObject( QV_OBJ *object )
{
    if( !object )
        return "none";

    QV_SORT    *sort = qvObjSort( object );
    std::string result;

    auto each = [&]( QV_VECTOR *owned, auto more )
    {
        Ref< QV_VECTOR > vec( owned );

        for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
            result += shownObject( Ref< QV_OBJ >( qvVectorObjAt( vec, i ) ) ) + more( i ) + ", ";
    };
    auto no = []( QV_INT ) { return std::string(); };

    if( sort == qvBufferSort() )
        for( QV_INT i = 0; i < qvBufferBitLength( as< QV_BUFFER >( object ) ); i++ )
            result += qvBufferBitReadBits( as< QV_BUFFER >( object ), i, 1 ) ? '1' : '0';
    else if( sort == qvVectorSort() )
        each( qvVectorCreateFrom( as< QV_VECTOR >( object ) ), no );
    else if( sort == qvStoreSort() )
        each( qvStoreEncodeToStringVector( as< QV_STORE >( object ) ), no );
    else if( sort == qvToolSwitchSort() )
        each( qvToolSwitchToolsVector( as< QV_TOOL_SWITCH >( object ) ), no );
    else if( sort == qvEnumSort() )
        each(
            qvEnumEnumerantsVector( as< QV_ENUM >( object ) ),
            [&]( QV_INT i )
            {
                return std::to_string( qvEnumEnumerant(
                    as< QV_ENUM >( object ),
                    Ref< QV_STRING >( qvStringFrom( qvVectorObjAt(
                        Ref< QV_VECTOR >( qvEnumEnumerantsVector( as< QV_ENUM >( object ) ) ), i ) ) ) ) );
            } );
    else if( sort == qvFlagsetSort() )
        each(
            qvFlagsetFlagsVector( as< QV_FLAGSET >( object ) ),
            [&]( QV_INT i )
            {
                return std::to_string( qvFlagsetFlag(
                    as< QV_FLAGSET >( object ),
                    Ref< QV_STRING >( qvStringFrom( qvVectorObjAt(
                        Ref< QV_VECTOR >( qvFlagsetFlagsVector( as< QV_FLAGSET >( object ) ) ), i ) ) ) ) );
            } );
    else if( sort == qvOptDefSort() )
        for( const char *name : { "a", "b", "aa", "ab", "ba", "bb" } )
            result +=
                std::to_string( qvOptDefLongOpt( as< QV_OPT_DEF >( object ), text( name ), QV_FALSE, nullptr ) ) + " ";
    else
        result = textOf( object );

    return result + " of " + sort->name;
}

Argument::~Argument()
{
    if( inside )
        qvObjRelease( inside );

    if( object && object != asObj( qvStringSort() ) )
        qvObjRelease( object );
}

std::string Argument::shown() const
{
    if( inside && type == "QV_BYTE_SINK *" )
        return shownObject(
            qvBufferObj( Ref< QV_BUFFER >( qvBufferByteSinkBuffer( as< QV_BUFFER_BYTE_SINK >( inside ) ) ) ) );

    if( inside )
        return take( qvStringCharSinkString( as< QV_STRING_CHAR_SINK >( inside ) ) );

    if( type == "QV_ENCODER *" )
        return shownObject( qvBufferObj( Ref< QV_BUFFER >( qvEncoderBuffer( as< QV_ENCODER >( object ) ) ) ) );

    if( type == "QV_UNICODE_NORMALIZER *" )
    {
        Ref< QV_STRING > out( qvStringCreate() );
        qvUnicodeNormalizerFlush( as< QV_UNICODE_NORMALIZER >( object ) );
        qvUnicodeNormalizerRead( as< QV_UNICODE_NORMALIZER >( object ), out.at(), -1 );
        return utf8( out );
    }

    if( ends( type, "**" ) )
        return shownObject( object );

    return begins( type, "const" ) ? "" : hex( bytes.data(), bytes.size() );
}

Arguments::Arguments( const Function &called, unsigned seed, bool nothingEmpty ) :
    least( nothingEmpty ? 1 : 0 ), function( called.name ), random( seed )
{
    std::string words = called.words;
    size_t      at    = words.find( '|' );

    while( at != std::string::npos )
    {
        size_t middle = words.find( '|', at + 1 );
        size_t end    = words.find( '|', middle + 1 );
        add( words.substr( at + 1, middle - at - 1 ), words.substr( middle + 1, end - middle - 1 ) );
        at = end;
    }
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
    std::u32string alphabet =
        begins( function, "qvEnum" ) || begins( function, "qvFlagset" ) ? U"AB"
        : name || begins( function, "qvStore" ) || begins( function, "qvOpt" ) || begins( function, "qvRuntime" )
            ? U"ab"
            : U"aAb \u00e9\U0001f600";
    const bool     mayBeEmpty = alphabet.size() > 2 && !has( function, "Find" ) && !has( function, "Split" );
    std::u32string result;

    for( QV_INT left = ( mayBeEmpty ? least : 1 ) + below( alphabet.size() > 2 ? 5 : 2 ); left > 0; left-- )
        result += alphabet[static_cast< size_t >( below( static_cast< QV_INT >( alphabet.size() ) ) )];

    return result;
}

std::string Arguments::someBytes()
{
    std::string result( static_cast< size_t >( least + below( 7 ) ), '\0' );

    for( char &byte : result )
        byte = static_cast< char >( random() );

    return result;
}

void Arguments::object( Argument &argument, const std::string &family )
{
    const bool at = ends( function, "At" );

    if( family == "STRING" )
    {
        argument.characters = someText();

        if( at && argument.characters.empty() )
            argument.characters = U"x";

        room            = static_cast< QV_INT >( argument.characters.size() );
        argument.object = qvStringObj( text( argument.characters ).give() );
    }
    else if( family == "BUFFER" )
    {
        std::string bytes = someBytes();
        const bool  one   = has( function, "ReadByte" ) && !has( function, "Bytes" ); // which has to be there

        if( one )
            bytes += 'x';

        if( has( function, "Write" ) && argument.type == "QV_BUFFER **" ) // room for whatever is written
            bytes.resize( 40, '\x55' );

        Ref< QV_BUFFER > buf( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );

        if( begins( function, "qvBufferBit" ) )
            qvBufferBitAppendBits( buf.at(), random(), below( 8 ) );

        room            = begins( function, "qvBufferBit" ) ? qvBufferBitLength( buf ) : qvBufferLength( buf );
        argument.object = qvBufferObj( buf.give() );

        if( has( function, "Write" ) && argument.type == "QV_BUFFER **" )
            room = 12;

        if( one )
            room -= begins( function, "qvBufferBit" ) ? 8 : 1;
    }
    else if( family == "VECTOR" )
    {
        QV_VECTOR *vec = qvVectorCreate();
        room           = ( at ? 1 : least ) + below( 5 );

        for( QV_INT i = 0; i < room; i++ )
            qvVectorAppendObj( &vec, qvStringObj( text( someText() ) ) );

        argument.object = qvVectorObj( vec );
    }
    else if( family == "OBJ" )
    {
        Ref< QV_STRING > qvs       = text( someText() );
        QV_OBJ          *choices[] = {
            asObj( qvBoxedNullCreate() ), asObj( qvBoxedBoolCreate( 1 ) ), asObj( qvBoxedIntCreate( below( 4 ) ) ),
            asObj( qvBoxedRealCreate( 0.5 ) ), asObj( qvs.give() ) };
        std::swap( choices[0], choices[below( 5 )] );
        argument.object = choices[0];

        for( QV_OBJ *other : { choices[1], choices[2], choices[3], choices[4] } )
            qvObjRelease( other );
    }
    else if( family == "DICT" )
    {
        QV_DICT *dict = qvDictCreate();

        for( QV_INT i = below( 6 ) + ( at ? 1 : 0 ); i > 0; i-- )
        {
            Ref< QV_OBJ >    value( asObj( qvBoxedIntCreate( i ) ) );
            Ref< QV_STRING > key = text( someText() );
            below( 2 ) ? qvDictSetNullKey( &dict, value ) : qvDictSetStringKey( &dict, key, value );
            below( 2 ) ? qvDictSetIntKey( &dict, below( 4 ), value ) : qvDictSetRealKey( &dict, 0.5, value );
            below( 2 ) ? qvDictSetBoolKey( &dict, 1, value ) : qvDictSetSortKey( &dict, qvStringSort(), value );
        }

        room            = qvDictLength( dict );
        argument.object = qvDictObj( dict );
    }
    else if( family == "STORE" )
    {
        QV_STORE *store = qvStoreCreate();

        for( QV_INT i = 2 + below( 6 ); i > 0; i-- )
        {
            // Half of them are such as formats of the tests become.
            std::u32string name = someText( true );
            name += below( 2 ) ? std::u32string( 1, static_cast< char32_t >( U'0' + below( 3 ) ) ) : U"";
            name += name.size() > 1 && below( 2 ) ? U"x" : U"";
            Ref< QV_STRING > address = text( name );
            Ref< QV_STORE >  under( qvStoreCreate() );
            qvStoreSetValueIntCstr( under.at(), "n", -1, i );

            if( below( 3 ) )
                qvStoreSetValueInt( &store, address, below( 2 ) );

            if( !below( 2 ) || !qvStoreLength( store ) )
                qvStoreSetStore( &store, address, under );
        }

        room            = qvStoreLength( store );
        argument.object = qvStoreObj( store );
    }
    else if( family == "ENUM" )
    {
        QV_ENUM *en = qvEnumCreate();
        for( const char *name : { "A", "B", "AB" } )
            qvEnumSetEnumerantCstr( &en, name, -1, below( 5 ) );
        argument.object = qvEnumObj( en );
    }
    else if( family == "FLAGSET" )
    {
        QV_FLAGSET *fs = qvFlagsetCreate();
        for( const char *name : { "A", "B", "AB" } )
            qvFlagsetSetFlagCstr( &fs, name, -1, 1 << below( 5 ) );
        argument.object = qvFlagsetObj( fs );
    }
    else if( family == "TOOL_SWITCH" )
    {
        QV_TOOL_SWITCH *ts = qvToolSwitchCreate();
        for( const char *name : { "a", "b", "ab" } )
            qvToolSwitchSetToolCstr( &ts, name, -1, nullptr );
        argument.object = qvToolSwitchObj( ts );
    }
    else if( family == "RANGE_MAP" )
    {
        QV_RANGE_MAP *map = qvRangeMapCreate();
        qvRangeMapSetRangeKey( &map, 2, 5, Ref< QV_OBJ >( asObj( qvBoxedIntCreate( 1 ) ) ) );
        argument.object = qvRangeMapObj( map );
    }
    else if( family == "BYTE_SINK" )
    {
        QV_BUFFER_BYTE_SINK *sink = qvBufferByteSinkCreate();
        argument.object           = asObj( qvBufferByteSinkByteSink( sink ) );
        argument.inside           = asObj( sink );
    }
    else if( family == "CHAR_SINK" || family == "LINE_SINK" )
    {
        QV_STRING_CHAR_SINK *sink = qvStringCharSinkCreate();
        Ref< QV_CHAR_SINK >  chars( qvStringCharSinkCharSink( sink ) );
        argument.inside = asObj( sink );
        argument.object = family == "CHAR_SINK" ? asObj( chars.give() )
                                                : asObj( qvNlfLineSinkLineSink( Ref< QV_NLF_LINE_SINK >(
                                                      qvNlfLineSinkCreate( chars, QV_NLF_FLAG_LF ) ) ) );
    }
    else if( family == "ENCODER" )
    {
        QV_ENCODER *encoder = qvEncoderCreate();
        qvEncoderEncodeInt( encoder, below( 200 ) );
        argument.object = qvEncoderObj( encoder );
    }
    else
        argument.object = PLAIN.at( family )();
}

QV_INT Arguments::number( const std::string &type, const std::string &name )
{
    const Argument *last = all.size() > 1 ? &all[all.size() - 2] : nullptr;

    if( last && last->type == "const char *" )
        return below( 2 ) ? static_cast< QV_INT >( last->bytes.size() ) : -1;

    if( last && last->type == "const wchar_t *" )
        return below( 2 ) ? static_cast< QV_INT >( last->wide.size() ) : -1;

    if( last && last->type == "const QV_CHAR *" )
        return static_cast< QV_INT >( last->chars.size() );

    if( last && last->type == "const void *" )
        return static_cast< QV_INT >( last->bytes.size() );

    if( last && last->type == "QV_OBJ *const *" )
        return qvVectorLength( as< QV_VECTOR >( last->object ) );

    if( type == "QV_BOOL" )
        return below( 2 );

    if( type == "QV_CHAR" )
        return U"ab \u00e9\U0001f600"[below( 5 )];

    if( type == "uint8_t" || type == "uint64_t" )
        return static_cast< QV_INT >( random() * 0x123456789u );

    if( begins( function, "qvVectorSet" ) && name == "idx" ) // at the ends it inserts
        return below( room + 2 ) - 1;

    if( ends( name, "dx" ) || ends( name, "ndex" ) || ends( name, "ffset" ) )
    {
        QV_INT value = ends( function, "At" ) && room > 0 ? below( room ) : below( room + 1 );
        room -= value;
        return value;
    }

    if( name == "bitCount" && last && last->type == "uint64_t" )
        return below( 65 );

    if( name == "bitCount" && !begins( function, "qvBufferBit" ) )
        return below( std::min< QV_INT >( room * 8, 64 ) + 1 );

    if( name == "bitCount" && has( function, "ReadBits" ) )
        return below( std::min< QV_INT >( room, 64 ) + 1 );

    if( ends( name, "ount" ) || ends( name, "ength" ) )
    {
        const QV_INT limit = begins( function, "qvBufferBit" ) && name == "byteCount" ? room / 8 : room;
        return limit > 0 ? least + below( limit + 1 - least ) : 0;
    }

    if( name == "endingKey" )
        return all[all.size() - 2].slot.i + below( 3 );

    if( name == "value" && has( function, "Flag" ) )
        return 1 << below( 6 );

    return name == "maxParts"                      ? below( 2 ) ? -1 : 1 + below( 3 )
                                : begins( name, "max" ) ? -1
           : name == "base"                        ? 10
           : name == "charset"                     ? QV_CHARSET_UTF_8
           : has( name, "condition" )              ? 1
           : has( name, "illisec" )                ? 0
           : has( name, "lags" ) || name == "skip" ? 0
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
        // What the format before asks for.
        auto last = std::find_if(
            all.rbegin(), all.rend(),
            []( const Argument &each ) { return each.name == "fmt" || each.name == "format"; } );
        std::u32string becomes = last->characters;
        const bool     longer  = becomes.back() == U'x';
        argument.object        = qvStringObj( text( longer ? "x" : "" ).give() );
        argument.slot.i        = static_cast< QV_INT >( becomes[becomes.size() - ( longer ? 2 : 1 )] - U'0' );
        Argument &text         = all.emplace_back();
        text.slot.p            = argument.object;
        return;
    }

    if( type == "const char *" || type == "const wchar_t *" || ( format && type == "QV_STRING *" ) )
    {
        std::u32string characters = someText();
        argument.characters       = characters;

        if( format )
        {
            argument.characters += static_cast< char32_t >( U'0' + counted );
            argument.characters.append( tail.begin(), tail.end() );
            characters += U"%i%s";
        }

        argument.bytes = encodedUtf8( characters );
        argument.wide.assign( characters.begin(), characters.end() );

        if( type == "QV_STRING *" )
            argument.object = qvStringObj( text( characters ).give() );

        argument.slot.p = type == "QV_STRING *"    ? static_cast< void * >( argument.object )
                          : type == "const char *" ? static_cast< void * >( argument.bytes.data() )
                                                   : static_cast< void * >( argument.wide.data() );
    }
    else if( type == "const QV_CHAR *" )
    {
        argument.characters = argument.chars = someText();
        argument.slot.p                      = argument.chars.data();
    }
    else if( type == "const void *" )
    {
        argument.bytes  = someBytes();
        argument.slot.p = argument.bytes.data();
    }
    else if( type == "QV_OBJ *const *" )
    {
        object( argument, "VECTOR" );
        argument.slot.p = const_cast< QV_OBJ ** >( qvVectorBacking( as< QV_VECTOR >( argument.object ) ) );
    }
    else if( ends( type, "_FUNC" ) )
        argument.slot.p = reinterpret_cast< void * >( nothing );
    else if( type == "QV_REAL" )
        argument.slot.r = static_cast< QV_REAL >( below( 2 ) ) / 2;
    else if(
        begins( type, "QV_" ) && ends( type, "*" ) && type != "QV_OBJ **" && type != "QV_INT *" && type != "QV_BOOL *"
        && type != "QV_REAL *" && type != "QV_CHAR *" )
    {
        object( argument, type.substr( 3, type.find( ' ' ) - 3 ) );
        argument.slot.p = ends( type, "**" ) ? static_cast< void * >( &argument.object ) : argument.object;
    }
    else if( ends( type, "*" ) )
    {
        argument.bytes.assign( 128, '\0' );
        argument.slot.p = argument.bytes.data();
    }
    else
        argument.slot.i = number( type, name );
}
