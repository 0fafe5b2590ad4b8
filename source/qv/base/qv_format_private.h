#ifndef QV_FORMAT_PRIVATE_H
#define QV_FORMAT_PRIVATE_H

#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_family.h"
#include "qv/sys/qv_assert_private.h"

#include <algorithm>

/** The engine: a new text of the format and its arguments, owned by the caller. Reads the arguments from the list at
    `argList`, which advances. */
QV_API QV_STRING *qv___FormatArgList( QV_STRING *fmt, va_list *argList );

/** The length, 0 to 3, of the prefix that a number of this base has with the flags. Writes the prefix to `dest` unless
    that is null. */
QV_API QV_INT qv___FormatEncodeBase( QV_CHAR *dest, QV_INT base, QV_INT flags );

namespace qv
{
/** A text under construction, of proper characters, that becomes a String at the end. */
class TextBuilder
{
public:
    TextBuilder()
    {
    }

    ~TextBuilder()
    {
        if( chars_ != own_ )
            freeBlock();
    }

    TextBuilder( const TextBuilder & )            = delete;
    TextBuilder &operator=( const TextBuilder & ) = delete;

    const QV_CHAR *chars() const
    {
        return chars_;
    }

    QV_INT length() const
    {
        return length_;
    }

    /** The place after the text, with room for `count` characters. extend() makes them part of the text. */
    QV_CHAR *room( QV_INT count )
    {
        if( __builtin_expect( count > capacity_ - length_, 0 ) )
            grow( count );

        return chars_ + length_;
    }

    /** Adds the next `count` characters, which room() made room for, to the text. */
    void extend( QV_INT count )
    {
        QV_ASSERT( count <= capacity_ - length_ );
        length_ += count;
    }

    /** Adds `count` characters to the text and returns their place, which the caller fills. */
    QV_CHAR *append( QV_INT count )
    {
        QV_CHAR *place = room( count );
        length_ += count;

        return place;
    }

    /** Makes the text a new String, which the caller owns. Ends the use of the builder. */
    QV_STRING *give()
    {
        if( chars_ != own_ || length_ == 0 )
            return giveBlock();

        QV_STRING *qvs = createString( length_ );
        std::copy_n( own_, length_, qv::chars( qvs ) );

        return qvs;
    }

private:
    void resize( QV_INT capacity );
    void grow( QV_INT count );
    void freeBlock();

    /** give() of an empty text, and of one in a block, which the String takes over. */
    QV_STRING *giveBlock();

    QV_CHAR *chars_    = own_;
    QV_INT   length_   = 0;
    QV_INT   capacity_ = 256;
    QV_CHAR  own_[256]; // a short text is kept here
};

/** The engine with a format of characters, of UTF-8 and of wide text; a `length` of -1 means up to the terminator. */
QV_STRING *format( const QV_CHAR *fmt, QV_INT length, va_list *argList );
QV_STRING *formatCstr( const char *fmt, QV_INT length, va_list *argList );
QV_STRING *formatWcstr( const wchar_t *fmt, QV_INT length, va_list *argList );

/** The encoders of qv_format.h with their checks, at the end of a text. */
void encodeBool( TextBuilder &text, QV_BOOL value, QV_INT minWidth, QV_INT flags );
void encodeInt( TextBuilder &text, QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags );
void encodeReal( TextBuilder &text, QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags );

/** Adds a text of `length` characters, padded with blanks to `minWidth`. Returns the place of the `length` characters,
    which the caller fills. */
QV_CHAR *encodePadding( TextBuilder &text, QV_INT length, QV_INT minWidth, QV_INT flags );
} // namespace qv

#endif
