// Command lines beside a parser that goes by the rules step by step. The definition changes while a cursor uses it, and
// the arguments stay as they were given.

#include "qv_fuzz_walk.h"

#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"

#include <map>
#include <optional>
#include <set>

using namespace qv::fuzz;
using qv::Ref;

namespace
{
enum Flags
{
    ARGUMENT  = 1,
    IGNORE    = 2,
    ONCE      = 4,
    NO_ABBREV = 8
};

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

    // The result of a step.
    QV_INT                id  = 0;
    std::optional< Text > opt = {}, error = {};
    std::optional< Word > arg = {};

    void dropFinalDashes()
    {
        if( argv.size() == 1 && argv[0] == Word{ true, U"--" } )
            argv.clear();
    }

    QV_INT fail( QV_INT with )
    {
        static const char *const TEXTS[] = {
            "option undefined",
            "ambiguous",
            "argument missing",
            "argument disallowed",
            "multiple options disallowed",
            "abbreviated option disallowed" };
        error = *opt + U": " + wide( TEXTS[-with - 1] );
        return with;
    }

    // The one name that begins with it, if none is it.
    QV_INT find( const Text &name, bool &abbreviated )
    {
        QV_INT found = -1;
        abbreviated  = false;

        if( name.empty() )
            return -1;

        if( def.longs.contains( name ) )
            return def.longs[name];

        for( auto &[key, value] : def.longs )
        {
            if( !key.starts_with( name ) )
                continue;

            if( abbreviated )
                return -2;

            abbreviated = true;
            found       = value;
        }

        return found;
    }

    bool takeArgument( size_t at )
    {
        if( at >= argv.size() )
            return false;

        arg = argv[at];
        argv.erase( argv.begin() + static_cast< QV_INT >( at ) );

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
                else
                    error = wide( "non-option argument disallowed" );

                return std::max< QV_INT >( def.argOnly, -7 );
            }

            QV_INT found, flags;

            if( text == U"--" )
            {
                options = false;
                argv.erase( at );
                i = 0, start = argv.size();
                continue;
            }

            if( text[1] != U'-' )
            {
                auto entry = def.shorts.find( text[1] );
                found      = entry == def.shorts.end() ? -1 : entry->second;
                flags      = found < 0 ? 0 : def.flags[found];
                opt        = text.substr( 0, 2 );
                text.erase( 1, 1 );

                if( text.size() == 1 )
                    argv.erase( at );
                else
                    at->text = text;

                if( found < 0 )
                    return fail( found );

                if( flags & ARGUMENT && text.size() > 1 )
                {
                    takeArgument( i );
                    arg = Word{ true, text.substr( 1 ) };
                }
                else if( flags & ARGUMENT && !takeArgument( i ) )
                    return fail( -3 );
            }
            else
            {
                size_t equals = text.find( U'=' );
                bool   abbreviated;
                argv.erase( at );

                if( equals != Text::npos )
                    arg = Word{ true, text.substr( equals + 1 ) };

                opt   = text.substr( 0, equals );
                found = find( opt->substr( 2 ), abbreviated );
                flags = found < 0 ? 0 : def.flags[found];

                if( found < 0 )
                    return fail( found );

                if( flags & ARGUMENT && !arg && !takeArgument( i ) )
                    return fail( -3 );

                if( flags & NO_ABBREV && abbreviated )
                    return fail( -6 );

                if( !( flags & ARGUMENT ) && arg )
                    return fail( -4 );
            }

            if( flags & ONCE && !once.insert( found ).second )
                return fail( -5 );

            if( !( flags & IGNORE ) )
                return found;

            opt.reset(), arg.reset();
            i++;
        }
    }

    void next()
    {
        opt.reset(), arg.reset(), error.reset();
        id = step();
        dropFinalDashes();
    }
};

const char *const NAMES[] = { "a", "al", "all", "alpha", "beta", "b", "be", "file", "fil", "verbose", "ver" };

struct OptWalk : SlotWalk< OptWalk, QV_OPT_DEF, Definition, qvOptDefCreate >
{
    using SlotWalk::SlotWalk;

    void copy()
    {
        Slot &to = any(), &from = any();
        to.set( qvOptDefCreateFrom( from.ref ), from.model );
    }

    Text name()
    {
        return wide( NAMES[in.below( std::size( NAMES ) )] );
    }

    // A definition of some use: every letter and name, and flags for all ids.
    void defineAll()
    {
        Slot &slot = any();

        for( size_t i = 0; i < std::size( NAMES ); i++ )
        {
            Text   text = wide( NAMES[i] );
            QV_INT id   = static_cast< QV_INT >( i ) % 6;

            qvOptDefSetShortOpt( slot.ref.at(), text[0], slot.model.shorts[text[0]] = id );
            qvOptDefSetLongOpt( slot.ref.at(), stringOf( text ), slot.model.longs[text] = id );
            qvOptDefSetFlags( slot.ref.at(), id, slot.model.flags[id] = in.below( 16 ) );
        }

        qvOptDefSetReorder( slot.ref.at(), slot.model.reorder = in.flag() );
    }

    void define()
    {
        Slot       &slot = any();
        Definition &def  = slot.model;
        QV_INT      id = in.below( 6 ), value = in.below( 16 );
        Text        text = name();
        QV_INT      what = in.below( 7 );

        if( what < 2 )
            qvOptDefSetShortOpt( slot.ref.at(), text[0], def.shorts[text[0]] = id );
        else if( what < 4 )
            qvOptDefSetLongOpt( slot.ref.at(), stringOf( text ), def.longs[text] = id );
        else if( what == 4 )
            qvOptDefSetFlags( slot.ref.at(), id, def.flags[id] = value );
        else if( what == 5 )
            qvOptDefSetArgOnly( slot.ref.at(), def.argOnly = value < 12 ? id : -7 );
        else
        {
            qvOptDefSetReorder( slot.ref.at(), def.reorder = value & 1 );
            qvOptDefSetStringize( slot.ref.at(), def.stringize = value & 2 );
        }
    }

    static bool same( QV_OBJ *obj, const Word &word )
    {
        return qvObjSort( obj ) == ( word.isText ? qvStringSort() : qvBoxedIntSort() )
               && takeText( qvObjToString( obj ) ) == word.text;
    }

    static void compareWords( QV_VECTOR *vec, const std::vector< Word > &words )
    {
        require( qvVectorLength( vec ) == lengthOf( words ) );

        for( size_t i = 0; i < words.size(); i++ )
            require( same( qvVectorBacking( vec )[i], words[i] ) );
    }

    void parse()
    {
        static const char32_t *const PIECES[] = { U"-", U"--", U"=",  U"a",    U"b",       U"f",
                                                  U"v", U"x",  U"-a", U"--al", U"--file=", U"é" };
        Slot                        &slot     = any();
        Parser                       parser{ slot.model, {} };
        Ref< QV_VECTOR >             argv( qvVectorCreate() );

        for( QV_INT count = in.below( 24 ); count > 0; count-- )
        {
            Word word{ in.below( 5 ) > 0, {} };

            if( !word.isText )
                word.text = wide( std::to_string( count - 6 ) );
            else if( in.flag() )
                word.text = ( in.flag() ? U"--" : U"-" ) + name();
            else
                for( QV_INT pieces = in.below( 5 ); pieces > 0; pieces-- )
                    word.text += PIECES[in.below( std::size( PIECES ) )];

            if( word.isText )
                qvVectorAppendString( argv.at(), stringOf( word.text ) );
            else
                qvVectorAppendInt( argv.at(), count - 6 );

            if( tracing )
                fprintf( stderr, " '%s'%s", ascii( word.text ).c_str(), word.isText ? "" : " (object)" );

            parser.argv.push_back( word );
        }

        std::vector< Word > given = parser.argv;
        Ref< QV_OPT_SEQ >   seq( qvOptSeqCreate( slot.ref, argv ) );

        if( slot.model.stringize )
            for( Word &word : parser.argv )
                word.isText = true;

        parser.dropFinalDashes();

        while( qvOptSeqHasNext( seq ) )
        {
            require( !parser.argv.empty() );

            if( in.below( 8 ) == 0 )
                define();

            parser.next();

            require( qvOptSeqNext( seq ) == parser.id && qvOptSeqIdSecondary( seq ) == parser.id );
            compareWords( Ref< QV_VECTOR >( qvOptSeqRemainingArgv( seq ) ), parser.argv );

            Ref< QV_STRING > opt( qvOptSeqOpt( seq ) ), error( qvOptSeqError( seq ) );
            Ref< QV_OBJ >    arg( qvOptSeqArgObj( seq ) );
            require( opt ? parser.opt && charsOf( opt ) == *parser.opt : !parser.opt );
            require( error ? parser.error && charsOf( error ) == *parser.error : !parser.error );
            require( arg ? parser.arg && same( arg, *parser.arg ) : !parser.arg );
        }

        require( parser.argv.empty() );
        compareWords( argv, given );
    }

    static void compare( Slot &slot )
    {
        Definition &def = slot.model;
        require( qvOptDefArgOnly( slot.ref ) == def.argOnly && qvOptDefReorder( slot.ref ) == def.reorder );

        for( auto &[ch, id] : def.shorts )
            require( qvOptDefShortOpt( slot.ref, ch ) == id );

        for( QV_INT id = 0; id < 6; id++ )
            require( qvOptDefFlags( slot.ref, id ) == def.flags[id] );
    }
};
} // namespace

QV_FUZZ_WALK( OptWalk, OP( share, 1 ) OP( copy, 1 ) OP( defineAll, 1 ) OP( define, 3 ) OP( parse, 2 ) )
