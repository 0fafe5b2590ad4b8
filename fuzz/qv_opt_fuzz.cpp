// Command lines beside a parser that goes by the rules step by step. The definition changes while a cursor uses it, and
// the arguments stay as they were given.

#include "qv_fuzz_walk.h"

#include <optional>
#include <set>

namespace qv::fuzz
{
const QV_INT ARGUMENT = 1, IGNORE = 2, ONCE = 4, NO_ABBREV = 8; // the flags of an option

struct Definition
{
    std::map< QV_CHAR, QV_INT > shorts;
    std::map< Text, QV_INT >    longs;
    std::map< QV_INT, QV_INT >  flags;
    QV_INT                      argOnly = -7;
    bool                        reorder = false, stringize = false;
};

// An argument: a text, or an integer that is an object.
struct Word
{
    bool isText;
    Text text;

    bool operator==( const Word & ) const = default;
};

struct Parser
{
    Definition          def;
    std::vector< Word > argv;
    std::set< QV_INT >  once    = {};
    bool                options = true;

    // The result of a step; one below 0 but NOTHING comes with an error.
    QV_INT                id  = 0;
    std::optional< Text > opt = {};
    std::optional< Word > arg = {};

    void dropFinalDashes()
    {
        if( argv == std::vector{ Word{ true, U"--" } } )
            argv.clear();
    }

    // The one name that begins with it, if none is it.
    QV_INT find( const Text &name, bool &abbreviated )
    {
        auto at     = def.longs.lower_bound( name );
        abbreviated = !def.longs.contains( name );

        if( name.empty() || at == def.longs.end() || !at->first.starts_with( name ) )
            return -1;

        auto next = std::next( at );
        return abbreviated && next != def.longs.end() && next->first.starts_with( name ) ? -2 : at->second;
    }

    bool takeArgument( size_t at )
    {
        if( at >= argv.size() )
            return false;

        arg = argv[at];
        argv.erase( argv.begin() + QV_INT( at ) );

        return true;
    }

    QV_INT step()
    {
        size_t i = 0, start = argv.size();

        for( ;; )
        {
            if( i >= argv.size() )
                return QV_OPT_SEQ_NOTHING;

            auto at   = argv.begin() + static_cast< QV_INT >( i );
            Word word = *at;
            Text text = word.text;

            if( !word.isText && def.reorder && options )
            {
                if( ++i == start )
                    options = false, i = 0, start = argv.size();

                continue;
            }

            if( !word.isText || !options || text.size() < 2 || text[0] != U'-' )
            {
                argv.erase( at );

                if( def.argOnly >= 0 )
                    arg = word;

                return def.argOnly;
            }

            if( text == U"--" )
            {
                options = false;
                argv.erase( at );
                i = 0, start = argv.size();
                continue;
            }

            bool   isLong = text[1] == U'-', abbreviated = false;
            QV_INT found;

            if( isLong )
            {
                size_t equals = text.find( U'=' );
                opt           = text.substr( 0, equals );
                found         = find( opt->substr( 2 ), abbreviated );
                argv.erase( at );

                if( equals != Text::npos )
                    arg = Word{ true, text.substr( equals + 1 ) };
            }
            else
            {
                opt   = text.substr( 0, 2 );
                found = def.shorts.contains( text[1] ) ? def.shorts[text[1]] : -1;

                if( at->text.erase( 1, 1 ).size() == 1 )
                    argv.erase( at );
            }

            QV_INT flags = found < 0 ? 0 : def.flags[found];
            QV_INT error = found < 0                                        ? found
                           : flags & ARGUMENT && !arg && !takeArgument( i ) ? -3
                           : flags & NO_ABBREV && abbreviated               ? -6
                           : !( flags & ARGUMENT ) && arg                   ? -4
                           : flags & ONCE && !once.insert( found ).second   ? -5
                                                                            : 0;

            if( !isLong && flags & ARGUMENT && text.size() > 2 )
                arg->text.erase( 0, 1 );

            if( error || !( flags & IGNORE ) )
                return error ? error : found;

            opt.reset(), arg.reset();
            i++;
        }
    }

    void next()
    {
        opt.reset(), arg.reset();
        id = step();
        dropFinalDashes();
    }
};

const char *const NAMES[] = { "a", "al", "all", "alpha", "beta", "b", "be", "file", "fil", "verbose", "ver" };

struct OptWalk : Slots< OptWalk, QV_OPT_DEF, Definition, qvOptDefCreate >
{
    static void name( Slot &slot, const char *name, QV_INT id, QV_INT flags )
    {
        Text        text = wide( name );
        Definition &def  = slot.model;
        qvOptDefSetShortOpt( slot.ref.at(), text[0], def.shorts[text[0]] = id );
        qvOptDefSetLongOpt( slot.ref.at(), stringOf( text ), def.longs[text] = id );
        qvOptDefSetFlags( slot.ref.at(), id, def.flags[id] = flags );
    }

    // A definition of some use: every letter and name, and flags for all ids.
    void defineAll( Slot &slot, Slot & )
    {
        for( size_t i = 0; i < std::size( NAMES ); i++ )
            name( slot, NAMES[i], static_cast< QV_INT >( i ) % 6, in.below( 16 ) );

        qvOptDefSetReorder( slot.ref.at(), slot.model.reorder = in.flag() );
    }

    void define( Slot &slot, Slot & )
    {
        QV_INT id = in.below( 6 ), value = in.below( 16 );

        if( in.flag() )
            return name( slot, in.oneOf( NAMES ), id, value );

        qvOptDefSetArgOnly( slot.ref.at(), slot.model.argOnly = value < 12 ? id : -7 );
        qvOptDefSetReorder( slot.ref.at(), slot.model.reorder = value & 1 );
        qvOptDefSetStringize( slot.ref.at(), slot.model.stringize = value & 2 );
    }

    static Word wordOf( QV_OBJ *obj )
    {
        return { qvObjSort( obj ) == qvStringSort(), charsOf( Ref< QV_STRING >( qvObjToString( obj ) ) ) };
    }

    static std::vector< Word > wordsOf( QV_VECTOR *vec )
    {
        std::vector< Word > words( static_cast< size_t >( qvVectorLength( vec ) ) );
        std::transform( qvVectorBacking( vec ), qvVectorBacking( vec ) + words.size(), words.begin(), wordOf );
        return words;
    }

    void parse( Slot &slot, Slot & )
    {
        static const char32_t *const PIECES[] = { U"-", U"--", U"=",  U"a",    U"b",       U"f",
                                                  U"v", U"x",  U"-a", U"--al", U"--file=", U"é" };
        Ref< QV_VECTOR >             argv( qvVectorCreate() );

        for( QV_INT count = in.below( 24 ); count > 0; count-- )
        {
            QV_INT how = in.below( 5 );
            Text   text;

            if( how == 0 )
                qvVectorAppendInt( argv.at(), count );
            else if( how < 3 )
                text = ( how == 1 ? U"--" : U"-" ) + wide( in.oneOf( NAMES ) );
            else
                for( QV_INT pieces = in.below( 5 ); pieces > 0; pieces-- )
                    text += in.oneOf( PIECES );

            if( how > 0 )
                qvVectorAppendString( argv.at(), stringOf( text ) );

            if( tracing )
                fprintf( stderr, " '%s'", ascii( text ).c_str() );
        }

        std::vector< Word > given = wordsOf( argv );
        Parser              parser{ slot.model, given };
        Ref< QV_OPT_SEQ >   seq( qvOptSeqCreate( slot.ref, argv ) );

        for( Word &word : parser.argv )
            word.isText = word.isText || slot.model.stringize;

        parser.dropFinalDashes();

        while( qvOptSeqHasNext( seq ) )
        {
            require( !parser.argv.empty() );

            if( in.below( 8 ) == 0 )
                define( slot, slot );

            parser.next();
            require( qvOptSeqNext( seq ) == parser.id && qvOptSeqIdSecondary( seq ) == parser.id );
            require( wordsOf( Ref< QV_VECTOR >( qvOptSeqRemainingArgv( seq ) ) ) == parser.argv );

            Ref< QV_STRING > opt( qvOptSeqOpt( seq ) ), error( qvOptSeqError( seq ) );
            Ref< QV_OBJ >    arg( qvOptSeqArgObj( seq ) );
            require( !error == ( parser.id >= 0 || parser.id == QV_OPT_SEQ_NOTHING ) );
            require( opt ? parser.opt && charsOf( opt ) == *parser.opt : !parser.opt );
            require( arg ? parser.arg && wordOf( arg ) == *parser.arg : !parser.arg );
        }

        require( parser.argv.empty() && wordsOf( argv ) == given );
    }

    static void compare( Slot &slot )
    {
        require(
            qvOptDefArgOnly( slot.ref ) == slot.model.argOnly && qvOptDefReorder( slot.ref ) == slot.model.reorder );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( OptWalk, OP( share ) OP( defineAll ) OP( define ) OP( define ) OP( define ) OP( parse ) OP( parse ) )
