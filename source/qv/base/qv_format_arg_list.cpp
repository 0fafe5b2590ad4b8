#include "qv/base/qv_format_private.h"

#include "qv/base/qv_format.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

namespace
{
// The modifiers of one conversion: what stands between the percent sign and the conversion character.
struct Modifiers
{
    QV_INT flags   = 0; // as the encoders take them, without those of the base prefix
    QV_INT hashes  = 0;
    bool   consume = false;

    QV_INT width     = 0;
    QV_INT precision = -1;
    QV_INT base      = 10;

    bool hasPrecision = false;
    bool hasBase      = false;

    QV_INT numberFlags() const
    {
        return flags | ( hashes == 1 ? QV_FORMAT_FLAG_BASEMNEMONIC : hashes == 2 ? QV_FORMAT_FLAG_BASENUMERIC : 0 );
    }
};

// One call of the engine: the format, the place in it, the arguments and the text so far.
class Engine
{
public:
    Engine( const QV_CHAR *fmt, QV_INT length, va_list *argList ) :
        at_( fmt ), end_( fmt + length ), argList_( argList )
    {
    }

    QV_STRING *run()
    {
        bool fmtContainsConversion = false;

        while( true )
        {
            copyLiteral();

            if( at_ == end_ )
                break;

            at_++;
            checkMore();
            fmtContainsConversion |= *at_ != U'%';
            convert( readModifiers() );
        }

        QV_CHECK_MESSAGE( fmtContainsConversion, "A format string must contain at least a single conversion." );
        return text_.give();
    }

private:
    void copyLiteral()
    {
        QV_CHAR *start = text_.room( end_ - at_ ), *to = start;

        while( at_ != end_ && *at_ != U'%' )
            *to++ = *at_++;

        text_.extend( to - start );
    }

    void checkMore() const
    {
        if( at_ == end_ )
            qv___Abort( "missing conversion", QV___SOURCE, __LINE__, "pos < fmtLength" );
    }

    // Whether the decoder reads this number of so many characters here.
    [[maybe_unused]] bool decoderReads( QV_INT number, QV_INT length ) const
    {
        QV_INT value, consumed;

        return qvFormatTryDecodeIntChars( at_, end_ - at_, 10, &value, &consumed ) && value == number
               && consumed == length;
    }

    // A number of the format, or of the arguments for an asterisk. True if there is one.
    bool readNumber( QV_INT *number )
    {
        if( at_ == end_ )
            return false;

        if( *at_ == U'*' )
        {
            at_++;
            *number = va_arg( *argList_, QV_INT );
            return true;
        }

        // Up to 17 ASCII digits before an ASCII character above the blank: the decoder would read the same number.
        QV_INT         value = 0, consumed;
        const QV_CHAR *at = at_, *safe = at + std::min< ptrdiff_t >( end_ - at, 18 );

        while( at < safe && *at - U'0' <= 9 )
            value = value * 10 + static_cast< QV_INT >( *at++ - U'0' );

        if( at < safe && *at > U' ' && *at < 128 )
        {
            QV_ASSERT( at == at_ || decoderReads( value, at - at_ ) );

            if( at == at_ )
                return false;

            at_     = at;
            *number = value;
            return true;
        }

        // The decoder accepts a sign or white space before the number. Here the first character has to be a digit.
        if( !qvFormatTryDecodeIntChars( at_, 1, 10, nullptr, nullptr ) )
            return false;

        qvFormatTryDecodeIntChars( at_, end_ - at_, 10, number, &consumed );
        at_ += consumed;

        return true;
    }

    bool readFlag( Modifiers &modifiers )
    {
        switch( *at_ )
        {
        case U'-':
            modifiers.flags |= QV_FORMAT_FLAG_LEFTALIGN;
            break;
        case U'+':
            modifiers.flags |= QV_FORMAT_FLAG_PLUSPOS;
            break;
        case U' ':
            modifiers.flags |= QV_FORMAT_FLAG_BLANKPOS;
            break;
        case U'0':
            modifiers.flags |= QV_FORMAT_FLAG_ZEROPAD;
            break;
        case U'^':
            modifiers.flags |= QV_FORMAT_FLAG_UPPERCASE;
            break;
        case U'\'':
            modifiers.flags |= QV_FORMAT_FLAG_BASEDECIMAL;
            break;
        case U'#':
            modifiers.hashes++;
            break;
        case U'~':
            modifiers.consume = true;
            break;
        default:
            return false;
        }

        at_++;
        return true;
    }

    Modifiers readModifiers()
    {
        Modifiers modifiers;

        // The ASCII characters of modifiers are all below the letters, except for these two.
        if( *at_ >= U'A' && *at_ < 128 && *at_ != U'^' && *at_ != U'~' )
            return modifiers;

        while( readFlag( modifiers ) )
            checkMore();

        readNumber( &modifiers.width );
        checkMore();

        if( *at_ == U'.' )
        {
            at_++;
            modifiers.hasPrecision = readNumber( &modifiers.precision );
            checkMore();
        }

        if( *at_ == U'!' )
        {
            at_++;
            modifiers.hasBase = readNumber( &modifiers.base );
            checkMore();
        }

        return modifiers;
    }

    void convert( const Modifiers &modifiers )
    {
        switch( *at_++ )
        {
        case U'%':
            if( !modifiers.hashes )
                *text_.append( 1 ) = U'%';
            return;

        case U'b':
            qv::encodeBool( text_, va_arg( *argList_, QV_BOOL ), modifiers.width, modifiers.flags );
            return;

        case U'c':
        {
            QV_CHAR ch = va_arg( *argList_, uint32_t );
            QV_CHECK_AS( qvCharsAllOk( &ch, 1 ), "qvCharsAllOk( src, srcLength )" );
            *qv::encodePadding( text_, 1, modifiers.width, modifiers.flags ) = ch;
            return;
        }

        case U'i':
            return convertInt( modifiers, modifiers.base );

        case U'A':
            return convertAligned( modifiers );

        case U'X':
            return convertInt( modifiers, modifiers.hasBase ? modifiers.base : 16 );

        case U'r':
            qv::encodeReal(
                text_, va_arg( *argList_, QV_REAL ), modifiers.base, modifiers.width, modifiers.precision,
                modifiers.numberFlags() );
            return;

        case U'o':
        case U's':
            return convertObj( modifiers );

        case U'l':
            if( at_ != end_ )
                switch( *at_++ )
                {
                case U'c':
                    return convertOutside< char >( modifiers, false, qvCharsConvertFromCstr );
                case U'C':
                    return convertOutside< char >( modifiers, true, qvCharsConvertFromCstr );
                case U'w':
                    return convertOutside< wchar_t >( modifiers, false, qvCharsConvertFromWcstr );
                case U'W':
                    return convertOutside< wchar_t >( modifiers, true, qvCharsConvertFromWcstr );
                }
            break;

        case U'm':
            return convertRepeated( modifiers );
        }

        qv___Abort( "invalid conversion", QV___SOURCE, __LINE__, nullptr );
    }

    void convertInt( const Modifiers &modifiers, QV_INT base )
    {
        qv::encodeInt( text_, va_arg( *argList_, QV_INT ), base, modifiers.width, modifiers.numberFlags() );
    }

    // A number as wide as the largest one.
    void convertAligned( const Modifiers &modifiers )
    {
        QV_INT value     = va_arg( *argList_, QV_INT );
        QV_INT precision = modifiers.precision;
        QV_INT largest   = QV_INT_MAX;
        QV_INT flags     = ( modifiers.numberFlags() & ~QV_FORMAT_FLAG_LEFTALIGN ) | QV_FORMAT_FLAG_ZEROPAD;

        QV_CHECK( value >= 0 );

        if( modifiers.hasPrecision )
        {
            QV_CHECK( precision >= 0 );
            QV_CHECK( value <= precision );
            largest = precision;
        }

        qv::Ref< QV_STRING > widest( qvFormatEncodeInt( largest, modifiers.base, 0, flags ) );
        qv::encodeInt( text_, value, modifiers.base, std::max( modifiers.width, widest->length ), flags );
    }

    void appendPadded( const Modifiers &modifiers, const QV_CHAR *chs, QV_INT length )
    {
        length = shortened( modifiers, length );
        std::copy_n( chs, length, qv::encodePadding( text_, length, modifiers.width, modifiers.flags ) );
    }

    void appendNull( const Modifiers &modifiers )
    {
        appendPadded( modifiers, U"null", modifiers.hashes ? 0 : 4 );
    }

    static QV_INT shortened( const Modifiers &modifiers, QV_INT length )
    {
        return modifiers.precision >= 0 ? std::min( modifiers.precision, length ) : length;
    }

    void convertObj( const Modifiers &modifiers )
    {
        QV_OBJ *obj = va_arg( *argList_, QV_OBJ * );

        if( !obj )
            return appendNull( modifiers );

        // A String is its own text.
        bool                 isString = obj->sort == qvStringSort();
        qv::Ref< QV_STRING > made( isString ? nullptr : qvObjToString( obj ) );
        QV_STRING           *objText = isString ? reinterpret_cast< QV_STRING * >( obj ) : made.get();

        appendPadded( modifiers, qv::chars( objText ), objText->length );

        if( modifiers.consume )
            qv::release( obj );
    }

    // Text from outside is decoded into its place in the result, without a String of its own.
    template< class T >
    void convertOutside(
        const Modifiers &modifiers, bool hasLength, QV_INT ( *decode )( QV_CHAR *, QV_INT, const T *, QV_INT ) )
    {
        T     *outside = va_arg( *argList_, T * );
        QV_INT units   = hasLength ? va_arg( *argList_, QV_INT ) : -1;

        if( outside )
        {
            QV_INT   length = shortened( modifiers, decode( nullptr, 0, outside, units ) );
            QV_CHAR *place  = qv::encodePadding( text_, length, modifiers.width, modifiers.flags );
            decode( place, length, outside, units );
        }
        else
        {
            appendNull( modifiers );
        }

        if( modifiers.consume )
            qvMemFree( outside );
    }

    void convertRepeated( const Modifiers &modifiers )
    {
        QV_INT width     = modifiers.width;
        QV_INT precision = modifiers.hasPrecision ? modifiers.precision : U'\t';

        QV_CHECK( width >= 0 );
        QV_CHECK_AS( precision >= 0 && precision < 0x110000, "QV_CHAR_OK( precision )" );

        std::fill_n( text_.append( width ), width, static_cast< QV_CHAR >( precision ) );
    }

    const QV_CHAR  *at_;
    const QV_CHAR  *end_;
    va_list        *argList_;
    qv::TextBuilder text_;
};
} // namespace

QV_STRING *qv::format( const QV_CHAR *fmt, QV_INT length, va_list *argList )
{
    QV_CHECK( argList );
    return Engine( fmt, length, argList ).run();
}

namespace
{
// A format of up to SHORT characters, which most are, is decoded in one pass into a block on the stack.
template< class T >
QV_STRING *formatOutside(
    const T *fmt, QV_INT length, va_list *argList, QV_INT ( *decode )( QV_CHAR *, QV_INT, const T *, QV_INT ) )
{
    const QV_INT    SHORT = 256;
    qv::TextBuilder text;
    QV_INT          count = decode( text.room( SHORT ), SHORT, fmt, length );

    if( count > SHORT )
        decode( text.room( count ), count, fmt, length );

    return qv::format( text.chars(), count, argList );
}
} // namespace

QV_STRING *qv::formatCstr( const char *fmt, QV_INT length, va_list *argList )
{
    return formatOutside( fmt, length, argList, qvCharsConvertFromCstr );
}

QV_STRING *qv::formatWcstr( const wchar_t *fmt, QV_INT length, va_list *argList )
{
    return formatOutside( fmt, length, argList, qvCharsConvertFromWcstr );
}

QV_STRING *qv___FormatArgList( QV_STRING *fmt, va_list *argList )
{
    QV_CHECK( fmt );
    return qv::format( qv::chars( fmt ), fmt->length, argList );
}
