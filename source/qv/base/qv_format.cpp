// Text under construction, and the encoders of what is no number.

#include "qv/base/qv_format.h"

#include "qv/base/qv_format_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <utility>

/* Building ------------------------------------------------------------------------------------------------------- */

namespace qv
{
void TextBuilder::resize( QV_INT capacity )
{
    if( chars_ == own_ )
    {
        chars_ = static_cast< QV_CHAR * >( qvMemAllocN( capacity, sizeof( QV_CHAR ) ) );
        std::copy_n( own_, length_, chars_ );
    }
    else
    {
        chars_ = static_cast< QV_CHAR * >( qvMemReallocN( chars_, capacity, sizeof( QV_CHAR ) ) );
    }

    capacity_ = capacity;
}

void TextBuilder::grow( QV_INT count )
{
    QV_CHECK_AS( QV_INT_ADD_OK( length_, count ), "QV_INT_ADD_OK( (*qvs)->length, chsLength )" );
    resize( std::max( length_ + count, qvIntMulSaturating( capacity_, 2 ) ) );
}

void TextBuilder::freeBlock()
{
    qvMemFree( chars_ );
}

QV_STRING *TextBuilder::giveBlock()
{
    if( length_ == 0 )
        return qvStringCreate();

    if( capacity_ != length_ )
        resize( length_ );

    return createStringUse( std::exchange( chars_, own_ ), length_ );
}
} // namespace qv

/* Encoding ------------------------------------------------------------------------------------------------------- */

QV_CHAR *qv::encodePadding( TextBuilder &text, QV_INT length, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( minWidth >= 0 );

    QV_INT   pad   = std::max< QV_INT >( minWidth - length, 0 );
    QV_CHAR *place = text.append( length + pad );

    if( flags & QV_FORMAT_FLAG_LEFTALIGN )
        std::fill_n( place + length, pad, U' ' );
    else
        place = std::fill_n( place, pad, U' ' );

    return place;
}

void qv::encodeBool( TextBuilder &text, QV_BOOL value, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( minWidth >= 0 );

    flags = qvFormatFlagsNormalize( flags );

    bool           upper = flags & QV_FORMAT_FLAG_UPPERCASE;
    const QV_CHAR *word  = value ? ( upper ? U"TRUE" : U"true" ) : ( upper ? U"FALSE" : U"false" );
    QV_INT         count = value ? 4 : 5;
    std::copy_n( word, count, encodePadding( text, count, minWidth, flags ) );
}

QV_STRING *qvFormatEncodeBool( QV_BOOL value, QV_INT minWidth, QV_INT flags )
{
    qv::TextBuilder text;
    qv::encodeBool( text, value, minWidth, flags );

    return text.give();
}

QV_STRING *qvFormatEncodeChars( const QV_CHAR *src, QV_INT srcLength, QV_INT minWidth, QV_INT flags )
{
    QV_CHECK( srcLength >= 0 );
    QV_CHECK( src || srcLength == 0 );
    QV_CHECK( minWidth >= 0 );
    QV_CHECK( qvCharsAllOk( src, srcLength ) );

    qv::TextBuilder text;
    std::copy_n( src, srcLength, qv::encodePadding( text, srcLength, minWidth, flags ) );

    return text.give();
}
