// Every form of a function against its plain one: the same result, and the same changes.

#include "qv_functions.h"

#include <cstring>
#include <sstream>

using qv::Ref;
using namespace qv::test;

namespace
{
// Pairs that differ by what their headers say.
bool comparable( const Form &form )
{
    return std::string( form.form ) != "qvStringFindCharFromRight" && // has to stand before the offset
           !std::string( form.form ).starts_with( "qvThread" );       // each thread is one of its own
}

// Arguments of a plain function, made from those of a form.
class Derived
{
public:
    Derived( const Form &form, Arguments &from ) :
        arguments( from ), bits( std::string( form.form ).starts_with( "qvBufferBit" ) )
    {
        std::istringstream words( form.words );

        for( std::string word; words >> word; )
        {
            size_t colon = word.find( ':' );
            slots.push_back( make( word.substr( 0, colon ), std::stoul( word.substr( colon + 1 ) ) ) );
        }

        // The arguments of a format, which come last, are handed on too.
        slots.push_back( arguments.all.empty() ? Slot() : arguments.all.back().slot );
    }

    std::vector< Slot > slots;

private:
    template< class T >
    Slot keep( T *object )
    {
        owned.emplace_back( qv::obj( object ) );
        return { .p = object };
    }

    QV_INT length( QV_OBJ *object ) const
    {
        QV_SORT *sort = qvObjSort( object );
        return sort == qvStringSort()   ? qvStringLength( qvStringFrom( object ) )
               : sort == qvVectorSort() ? qvVectorLength( qvVectorFrom( object ) )
               : bits                   ? qvBufferBitLength( qvBufferFrom( object ) )
                                        : qvBufferLength( qvBufferFrom( object ) );
    }

    // A new object of some of the units of one, or of all others.
    Slot part( QV_OBJ *object, QV_INT offset, QV_INT count, bool others )
    {
        QV_SORT         *sort = qvObjSort( object );
        std::u32string   characters;
        Ref< QV_VECTOR > vec( qvVectorCreate() );
        Ref< QV_BUFFER > buf( qvBufferCreate() );

        for( QV_INT i = 0; i < length( object ); i++ )
            if( ( i >= offset && i < offset + count ) != others )
            {
                if( sort == qvStringSort() )
                    characters += qvStringCharAt( qvStringFrom( object ), i );
                else if( sort == qvVectorSort() )
                    qvVectorAppendObj( vec.at(), Ref< QV_OBJ >( qvVectorObjAt( qvVectorFrom( object ), i ) ) );
                else
                    qvBufferBitAppendBits(
                        buf.at(), qvBufferBitReadBits( qvBufferFrom( object ), bits ? i : i * 8, bits ? 1 : 8 ),
                        bits ? 1 : 8 );
            }

        return sort == qvStringSort()   ? keep( text( characters ).give() )
               : sort == qvVectorSort() ? keep( vec.give() )
                                        : keep( buf.give() );
    }

    Slot buffer( uint64_t unit, QV_INT size, QV_INT count )
    {
        Ref< QV_BUFFER > buf( qvBufferCreate() );

        for( QV_INT i = 0; i < count; i++ )
            qvBufferBitAppendBits( buf.at(), unit, size );

        return keep( buf.give() );
    }

    Slot make( const std::string &word, size_t at )
    {
        static const Argument NONE; // a new object or a number takes the place of no argument
        const Argument       &argument = at < arguments.all.size() ? arguments.all[at] : NONE;
        const Slot            slot     = argument.slot;
        QV_OBJ               *source   = argument.object;
        auto                  next     = [&]( size_t further ) { return arguments.all[at + further].slot.i; };
        auto                  whole    = [&] { return length( arguments.all[0].object ); };

        if( word == "cstr" || word == "wcstr" || word == "chars" || word.starts_with( "formatted" ) )
        {
            // A format that stays one keeps its conversions.
            const bool           stays = word == "cstr" || word == "wcstr";
            const std::u32string wide( argument.wide.begin(), argument.wide.end() );
            return keep( text( stays ? wide : argument.characters ).give() );
        }

        if( word == "bytes" )
            return keep( qvBufferCreateFromBytesCopy( argument.bytes.data(), next( 1 ) ) );

        return word == "char"        ? keep( text( std::u32string( 1, static_cast< char32_t >( slot.i ) ) ).give() )
               : word == "text"      ? keep( qvObjToString( source ) )
               : word == "leading"   ? part( source, 0, next( 1 ), false )
               : word == "trailing"  ? part( source, length( source ) - next( 1 ), next( 1 ), false )
               : word == "inner"     ? part( source, next( 1 ), next( 2 ), false )
               : word == "outer"     ? part( source, next( 1 ), next( 2 ), true )
               : word == "byte"      ? buffer( static_cast< uint64_t >( slot.i ) & 255, 8, 1 )
               : word == "lowBits"   ? buffer( static_cast< uint64_t >( slot.i ), next( 1 ), 1 )
               : word == "zero"      ? buffer( 0, bits ? 1 : 8, slot.i )
               : word == "one"       ? buffer( bits ? 1 : 255, bits ? 1 : 8, slot.i )
               : word == "boxedBool" ? keep( qvBoxedBoolCreate( static_cast< QV_BOOL >( slot.i ) ) )
               : word == "boxedInt"  ? keep( qvBoxedIntCreate( slot.i ) )
               : word == "boxedReal" ? keep( qvBoxedRealCreate( slot.r ) )
               : word == "null"      ? keep( qvBoxedNullCreate() )
               : word == "front"     ? Slot{ 0 }
               : word == "back"      ? Slot{ whole() }
               : word == "objects"   ? keep( qvVectorCreateFrom( qvVectorFrom( source ) ) )
               : word == "rest"      ? Slot{ whole() - slot.i }
               : word == "again"     ? arguments.all[at - 1].slot
               : word == "times8"    ? Slot{ slot.i * 8 }
               : word == "address"   ? keep( qvStoreAddressAt( qvStoreFrom( arguments.all[0].object ), slot.i ) )
                                     : slot;
    }

    Arguments                   &arguments;
    const bool                   bits;
    std::vector< Ref< QV_OBJ > > owned;
};

// What a call takes over is a reference of its own, to the last object that it gets.
void retainGiven( const Function &function, const Slot *slots )
{
    std::istringstream words( function.words );
    std::string        word;
    const Slot        *given = nullptr;
    std::getline( words, word, '|' );

    for( ; std::getline( words, word, '|' ) && std::strstr( function.name, "Use" );
         slots++, std::getline( words, word, '|' ) )
        if( word == "QV_OBJ *" )
            given = slots;

    if( given )
        qvObjRetain( static_cast< QV_OBJ * >( given->p ) );
}

// The result of a call and what it changed. With `presence`, of a resulting object only whether there is one.
std::string observed( const Function &function, Arguments &arguments, Slot *slots, bool presence )
{
    retainGiven( function, slots );

    const Slot        slot  = function.call( slots );
    const std::string words = function.words, type = words.substr( 0, words.find( '|' ) );
    const bool        owned = type.back() == '*';
    Ref< QV_OBJ >     object( owned ? static_cast< QV_OBJ * >( slot.p ) : nullptr );

    if( object && std::strstr( function.name, "Lend" ) )
        qvObjRetain( object ); // which was borrowed

    std::string result = type == "QV_REAL"    ? std::to_string( slot.r )
                         : !owned || presence ? std::to_string( owned ? object != nullptr : slot.i )
                                              : shownObject( object );

    for( const Argument &argument : arguments.all )
        result += " | " + argument.shown();

    return result + " | " + utf8( text( takePrinted() ) );
}
} // namespace

TEST( Forms, DoWhatThePlainFunctionDoes )
{
    ASSERT_GT( FORM_COUNT, 700u );

    for( const Form *form = FORMS; form < FORMS + FORM_COUNT; form++ )
    {
        if( !comparable( *form ) )
            continue;

        const Function *first = findFunction( form->form ), *second = findFunction( form->plain );
        const bool      presence =
            first->words[0] != second->words[0] || std::string( first->words ).starts_with( "QV_BOOL" );

        for( unsigned seed = 0; seed < 40; seed++ )
        {
            Arguments of( *first, seed ), again( *first, seed );
            Derived   derived( *form, again );

            ASSERT_EQ(
                observed( *first, of, of.slots().data(), presence ),
                observed( *second, again, derived.slots.data(), presence ) )
                << form->form << " and " << form->plain << ", seed " << seed;
        }
    }
}
