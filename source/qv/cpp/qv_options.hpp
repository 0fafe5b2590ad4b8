/** @file
    The options of a program, which set its variables.

        int main( int argc, char **argv )
        {
            qv::Runtime run( "count", "Word counter", "1.0" );
            qv::String  charset = "utf-8";
            QV_INT      top     = 10;
            bool        all     = false;
            qv::Options options( "count [OPTION...] FILE...", "Counts words." );
            options.add( U'c', "charset=NAME", charset, "the charset of the files" );
            options.add( U'n', "top=COUNT", top, "how many words to show" ).range( 1, 1000 );
            options.add( U'a', "all", all, "shows all of them" );
            if( std::optional< int > status = options.main( argc, argv ) )
                return *status;
            for( qv::String file : options.words() )
                ...
        }

    The type of a variable tells what its option takes, and its value at that time is the default, which the usage text
    shows if it is an integer other than 0 or a text. qv_options.h tells how a command line is read, and what main()
    answers. The variables live as long as the Options. */

#ifndef QV_OPTIONS_HPP
#define QV_OPTIONS_HPP

#include "qv/cpp/qv_result.hpp"

#include <chrono>

namespace qv
{
/** The options of a program. */
class Options
{
public:
    /** What add() returns: the option, to tell more about it. */
    class Option
    {
    public:
        /** The least and the greatest number. */
        Option &range( QV_INT least, QV_INT most )
        {
            qvOptionsSetRange( options_->options_.variable(), id_, least, most );
            return *this;
        }

        /** The same for reals. */
        Option &realRange( QV_REAL least, QV_REAL most )
        {
            qvOptionsSetRealRange( options_->options_.variable(), id_, least, most );
            return *this;
        }

        /** @{ */
        /** It has to be given; it may be given once only; the usage text does not show it. */
        Option &required()
        {
            return set( QV_OPTION_FLAG_REQUIRED );
        }

        Option &once()
        {
            return set( QV_OPTION_FLAG_ONCE );
        }

        Option &hidden()
        {
            return set( QV_OPTION_FLAG_HIDDEN );
        }
        /** @} */

        /** Adds another option to the same Options. */
        template< class T >
        Option add( char32_t letter, const String &name, T &variable, const String &text )
        {
            return options_->add( letter, name, variable, text );
        }

    private:
        friend class Options;

        Option( Options *options, QV_INT id ) : options_( options ), id_( id )
        {
        }

        Option &set( QV_INT flag )
        {
            QV_INT flags = qvOptionsFlags( options_->options_.c(), id_ ) | flag;
            qvOptionsSetFlags( options_->options_.variable(), id_, flags );
            return *this;
        }

        Options *options_;
        QV_INT   id_;
    };

    /** `synopsis` tells how the program is called: its name, `[OPTION...]`, and the words beside options, whose number is
        checked. `text` is what it does. */
    explicit Options( const String &synopsis, const String &text = {} ) : options_( made( synopsis, text ) )
    {
    }

    Options( const Options & )            = delete;
    Options &operator=( const Options & ) = delete;

    /** Adds an option with a letter, U'\0' for none, and a name, with how its argument is called: "top=COUNT". The
        variable is a bool, which the option sets to true; a number; a String; a Vector of Strings, to which each argument
        is added; std::chrono::milliseconds; an enumeration from 0, whose words the name tells as "form=nfc|nfd"; or a
        std::optional of one of them but the bool and the Vector. */
    template< class T >
    Option add( char32_t letter, const String &name, T &variable, const String &text )
    {
        return add( letter, name, variable, text, typeOf< T >() );
    }

    /** @{ */
    /** The same for the name of a file, or a folder, which shells complete. */
    Option addFile( char32_t letter, const String &name, String &variable, const String &text )
    {
        return add( letter, name, variable, text, QV_OPTION_TYPE_FILE );
    }

    Option addFolder( char32_t letter, const String &name, String &variable, const String &text )
    {
        return add( letter, name, variable, text, QV_OPTION_TYPE_FOLDER );
    }
    /** @} */

    /** The options added from now on stand under this heading. */
    Options &group( const String &heading )
    {
        qvOptionsBeginGroup( options_.variable(), heading.c() );
        return *this;
    }

    /** Sets what stands at the end of the usage text. */
    Options &notes( const String &text )
    {
        qvOptionsSetNotes( options_.variable(), text.c() );
        return *this;
    }

    /** The usage text, wrapped to a number of cells unless that is -1. */
    [[nodiscard]] String usage( QV_INT width = -1 ) const
    {
        return String::own( qvOptionsUsage( options_.c(), width ) );
    }

    /** The script that completes the options in a shell, QV_OPTIONS_SHELL_BASH or QV_OPTIONS_SHELL_ZSH. */
    [[nodiscard]] String completion( QV_INT shell ) const
    {
        return String::own( qvOptionsCompletion( options_.c(), shell ) );
    }

    /** Reads the arguments of main(), sets the variables, and answers --help, --version, --completion and mistakes. Then
        it returns the exit status of the program. */
    [[nodiscard]] std::optional< int > main( int argc, char *const *argv )
    {
        QV_INT status = qvOptionsReadMain( options_.variable(), argc, argv );

        if( status >= 0 )
            return static_cast< int >( status );

        setVariables();
        return std::nullopt;
    }

    /** Reads the arguments of main(), which are UTF-8, and returns the words that are no options. After a mistake, which
        the error tells for the user, no variable has changed. */
    [[nodiscard]] Result< Vector< String > > read( int argc, char *const *argv )
    {
        Vector< String > arguments;

        for( int i = 1; i < argc; i++ )
            arguments.append( argv[i] );

        if( !qvOptionsRead( options_.variable(), arguments.c() ) )
            return Error{ String::own( qvOptionsError( options_.c() ) ), {} };

        setVariables();
        return words();
    }

    /** The words beside the options, of the last reading. */
    [[nodiscard]] Vector< String > words() const
    {
        return Vector< String >::own( qvOptionsWords( options_.c() ) );
    }

    /** Lends the options to functions of qv_options.h. */
    [[nodiscard]] Lent< QV_OPTIONS > c() const &
    {
        return options_.c();
    }

private:
    // A variable, and how it becomes what was read.
    struct Target
    {
        QV_INT id;
        void  *variable;
        void ( *set )( void *variable, QV_OPTIONS *options, QV_INT id );
    };

    template< class T >
    struct Inside
    {
        using Type = T;
    };

    template< class T >
    struct Inside< std::optional< T > >
    {
        using Type = T;
    };

    static Held< QV_OPTIONS > made( const String &synopsis, const String &text )
    {
        std::optional< QV_INT > space = synopsis.find( U' ' );
        String                  words = space ? synopsis.part( *space + 1, synopsis.size() - *space - 1 ) : String();
        const String            HINT  = "[OPTION...]";

        if( words.beginsWith( HINT ) )
            words = words.part( HINT.size(), words.size() - HINT.size() ).trimmed();

        String program = synopsis.part( 0, space.value_or( synopsis.size() ) );
        return Held< QV_OPTIONS >::own( qvOptionsCreate( program.c(), words.c(), text.c() ) );
    }

    template< class T >
    static constexpr bool IS_INTEGER = Boxable< T > && std::integral< T > && !std::same_as< T, bool >;

    template< class T >
    static constexpr QV_INT typeOf()
    {
        using Type = typename Inside< T >::Type;

        if constexpr( std::same_as< T, bool > )
            return QV_OPTION_TYPE_FLAG;
        else if constexpr( std::same_as< Type, String > || std::same_as< T, Vector< String > > )
            return QV_OPTION_TYPE_TEXT;
        else if constexpr( std::same_as< Type, std::chrono::milliseconds > )
            return QV_OPTION_TYPE_DURATION;
        else if constexpr( std::is_enum_v< Type > )
            return QV_OPTION_TYPE_CHOICE;
        else if constexpr( std::floating_point< Type > )
            return QV_OPTION_TYPE_REAL;
        else
        {
            static_assert( IS_INTEGER< Type >, "no option sets a variable of this type" );
            return QV_OPTION_TYPE_INTEGER;
        }
    }

    template< class T >
    Option add( char32_t letter, const String &name, T &variable, const String &text, QV_INT type )
    {
        using Type = typename Inside< T >::Type;
        QV_INT id  = qvOptionsAdd( options_.variable(), letter, name.c(), type, text.c() );

        if constexpr( IS_INTEGER< Type > )
        {
            using Limits = std::numeric_limits< Type >;
            QV_INT least =
                std::in_range< QV_INT >( Limits::min() ) ? static_cast< QV_INT >( Limits::min() ) : QV_INT_MIN;
            QV_INT most =
                std::in_range< QV_INT >( Limits::max() ) ? static_cast< QV_INT >( Limits::max() ) : QV_INT_MAX;
            qvOptionsSetRange( options_.variable(), id, least, most );
        }

        if constexpr( std::same_as< T, String > )
        {
            if( !variable.empty() )
                qvOptionsSetDefault( options_.variable(), id, variable.c() );
        }
        else if constexpr( IS_INTEGER< T > )
        {
            std::string digits = std::to_string( variable );

            if( variable != 0 )
                qvOptionsSetDefaultCstr( options_.variable(), id, digits.c_str(), -1 );
        }

        targets_.push_back( { id, &variable, set< T > } );
        return Option( this, id );
    }

    template< class T >
    static void set( void *variable, QV_OPTIONS *options, QV_INT id )
    {
        using Type = typename Inside< T >::Type;
        T &target  = *static_cast< T * >( variable );

        if constexpr( std::same_as< T, bool > )
            target = true;
        else if constexpr( std::same_as< Type, String > )
            target = String::own( qvOptionsString( options, id ) );
        else if constexpr( std::same_as< T, Vector< String > > )
            target.appendAll( Vector< String >::own( qvOptionsStrings( options, id ) ) );
        else if constexpr( std::same_as< Type, std::chrono::milliseconds > )
            target = std::chrono::milliseconds( qvOptionsInt( options, id ) );
        else if constexpr( std::floating_point< Type > )
            target = static_cast< Type >( qvOptionsReal( options, id ) );
        else
            target = static_cast< Type >( qvOptionsInt( options, id ) );
    }

    void setVariables()
    {
        for( const Target &target : targets_ )
            if( qvOptionsHas( options_.c(), target.id ) )
                target.set( target.variable, options_.c(), target.id );
    }

    Held< QV_OPTIONS >    options_;
    std::vector< Target > targets_;
};
} // namespace qv

#endif
