// The normalizer beside the definition of the four forms: what is written in pieces of any kind, read in pieces of any
// kind, and what is readable in between. Runs of marks reach beyond its limit, where only the pieces must not matter.

#include "qv_fuzz_walk.h"

#include "qv/unicode/qv_unicode_db_private.h"

namespace qv::fuzz
{
const QV_INT CANONICAL = 1; // the type of a mapping

void decompose( char32_t ch, bool compatible, Text &out )
{
    QV_INT         length, type, syllable = static_cast< QV_INT >( ch ) - 0xAC00;
    const QV_CHAR *mapping = qv___UnicodeCdmDbLookup( ch, &length, &type );

    if( syllable >= 0 && syllable < 11172 )
        for( QV_INT part : { 0x1100 + syllable / 588, 0x1161 + syllable % 588 / 28, 0x11A7 + syllable % 28 } )
            out += part == 0x11A7 ? Text() : Text( 1, static_cast< char32_t >( part ) );
    else if( !mapping || ( type != CANONICAL && !compatible ) )
        out += ch;
    else
        for( QV_INT i = 0; i < length; i++ )
            decompose( mapping[i], compatible, out );
}

bool compose( char32_t a, char32_t b, char32_t &result )
{
    bool lv  = a - 0x1100 < 19 && b - 0x1161 < 21,
         lvt = a - 0xAC00 < 11172 && ( a - 0xAC00 ) % 28 == 0 && b - 0x11A8 < 27;
    result   = lv ? 0xAC00 + ( ( a - 0x1100 ) * 21 + b - 0x1161 ) * 28 : a + b - 0x11A7;
    return lv || lvt || qv___UnicodeCompDbLookup( a, b, &result );
}

Text normalized( const Text &text, QV_INT form )
{
    Text whole, result;

    for( char32_t ch : sanitized( text ) )
        decompose( ch, form & 1, whole );

    // Marks are put in the order of their classes, as far as the next character of class 0.
    for( auto from = whole.begin(); from != whole.end(); )
    {
        auto to = std::find_if( from + 1, whole.end(), []( char32_t ch ) { return qvUnicodeCccv( ch ) == 0; } );
        std::stable_sort(
            from + ( qvUnicodeCccv( *from ) == 0 ), to,
            []( char32_t a, char32_t b ) { return qvUnicodeCccv( a ) < qvUnicodeCccv( b ); } );
        from = to;
    }

    if( form >= QV_UNICODE_NORMAL_FORM_NFD )
        return whole;

    size_t starter = Text::npos;
    QV_INT last    = 0; // the class of the character before, if it stands between

    for( char32_t ch : whole )
    {
        QV_INT   cccv = qvUnicodeCccv( ch );
        char32_t composed;

        if( starter != Text::npos && ( last < cccv || ( last == 0 && cccv == 0 && starter == result.size() - 1 ) )
            && compose( result[starter], ch, composed ) )
        {
            result[starter] = composed;
            continue;
        }

        result += ch;
        last = cccv;

        if( cccv == 0 )
            starter = result.size() - 1;
    }

    return result;
}

struct NormalizerWalk
{
    QV_INT                       form = in.below( 4 );
    Ref< QV_UNICODE_NORMALIZER > norm{ qvUnicodeNormalizerCreate( form ) };   // written in pieces
    Ref< QV_UNICODE_NORMALIZER > single{ qvUnicodeNormalizerCreate( form ) }; // one character at a time
    Text                         written, got, gotSingle;

    // Letters and marks of many classes, syllables, and whatever else.
    Text text()
    {
        static const char32_t CHARS[] = { U'e',   0x301,  0x323,  0x307,   0x327,   0x345,   0x1100, 0x1161, 0x11A7,
                                          0x11A8, 0xAC00, 0xAC01, 0xE9,    0x1E69,  0xFB01,  0x3099, 0x304B, 0x9C7,
                                          0x9BE,  0xD834, 0xDD5E, 0x1D15E, 0x1D157, 0x1D165, 0x344,  0x1F82, 0x212B,
                                          0x2126, 0xF900, 0x0F73, 0x0FB2,  0x110A5, 0x110BA };
        Text                  result;

        for( QV_INT count = in.below( 16 ); count > 0; count-- )
        {
            QV_INT  how = in.below( 4 );
            QV_CHAR ch  = in.oneOf( CHARS );
            result += how == 0 ? in.text( 3000 ) : repeated( how == 1 ? in.length( 4096 ) : 1, ch );
        }

        return result;
    }

    void write()
    {
        Text all  = text();
        Span span = in.span( lengthOf( all ), INNER );
        Text part = span.of( all );

        if( written.size() + part.size() > 20000 )
            return;

        if( in.flag() )
            qvUnicodeNormalizerWriteInner( norm, stringOf( all ), span.from, span.size );
        else
            qvUnicodeNormalizerWriteChars( norm, part.data(), span.size );

        for( char32_t ch : part )
            qvUnicodeNormalizerWriteChar( single, ch );

        written += part;
    }

    static void read( QV_UNICODE_NORMALIZER *from, Text &to, QV_INT most = -1 )
    {
        Ref< QV_STRING > qvs( qvStringCreate() );
        require( qvUnicodeNormalizerRead( from, qvs.at(), most ) == qvStringLength( qvs ) );
        to += charsOf( qvs );
    }

    void read()
    {
        read( norm, got, in.upTo( qvUnicodeNormalizerReadable( norm ) + 1 ) );
    }

    // What was written ends, or is dropped.
    void flush()
    {
        bool drops = in.below( 4 ) == 0;

        for( QV_UNICODE_NORMALIZER *each : { norm.get(), single.get() } )
            ( drops ? qvUnicodeNormalizerClear : qvUnicodeNormalizerFlush )( each );

        read( norm, got );
        read( single, gotSingle );
        require( drops || got == gotSingle );

        // Marks beyond the limit are put in order by the piece.
        size_t marks = 0, most = drops ? 4000 : 0;

        for( char32_t ch : normalized( written, form | QV_UNICODE_NORMAL_FORM_NFD ) )
            most = std::max( most, marks = qvUnicodeCccv( ch ) ? marks + 1 : 0 );

        if( most < 4000 )
            require( got == normalized( written, form ) );

        // The same on Strings, where surrogates may stand alone, and again.
        void ( *const FORMS[] )( QV_STRING ** ) = {
            qvStringNormalizeNFC, qvStringNormalizeNFKC, qvStringNormalizeNFD, qvStringNormalizeNFKD };
        Ref< QV_STRING > qvs = stringOf( written );

        for( int i = 0; i < 2 && most < 4000 && std::none_of( written.begin(), written.end(), isSurrogate ); i++ )
        {
            FORMS[form]( qvs.at() );
            require( charsOf( qvs ) == got );
        }

        written.clear(), got.clear(), gotSingle.clear();
    }

    // As much is readable, whatever the pieces.
    void check()
    {
        read( single, gotSingle );
        require( lengthOf( got ) + qvUnicodeNormalizerReadable( norm ) == lengthOf( gotSingle ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK( NormalizerWalk, OP( write ) OP( write ) OP( read ) OP( flush ) )
