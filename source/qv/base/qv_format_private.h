#ifndef QV_FORMAT_PRIVATE_H
#define QV_FORMAT_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The names of the format flags. */
QV_API QV_FLAGSET *qv___FormatFlagsFlagset;

/** The engine: a new text of the format and its arguments. Advances the list at `argList`. */
QV_API QV_STRING *qv___FormatArgList( QV_STRING *fmt, va_list *argList );

/** The length of the prefix that the flags give a number of this base, 0 to 3. Writes it to `dest` unless that is
    null. */
QV_API QV_INT qv___FormatEncodeBase( QV_CHAR *dest, QV_INT base, QV_INT flags );

#ifdef __cplusplus
namespace qv
{
/** Text that is put together and becomes a String once. What is put in has to be made of proper characters. */
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

    /** The place behind the text, with room for so many characters. They belong to the text when it is extended. */
    QV_CHAR *room( QV_INT count )
    {
        if( __builtin_expect( count > capacity_ - length_, 0 ) )
            grow( count );

        return chars_ + length_;
    }

    void extend( QV_INT count )
    {
        length_ += count;
    }

    QV_CHAR *append( QV_INT count )
    {
        QV_CHAR *place = room( count );
        length_ += count;

        return place;
    }

    /** The text as a new String. The builder is of no use afterwards. */
    QV_STRING *give();

private:
    void resize( QV_INT capacity );
    void grow( QV_INT count );
    void freeBlock();

    QV_CHAR *chars_    = own_;
    QV_INT   length_   = 0;
    QV_INT   capacity_ = 256;
    QV_CHAR  own_[256]; // a short text is kept here
};

/** The engine with a format of characters, and of text from outside. */
QV_STRING *format( const QV_CHAR *fmt, QV_INT length, va_list *argList );
QV_STRING *formatCstr( const char *fmt, QV_INT length, va_list *argList );
QV_STRING *formatWcstr( const wchar_t *fmt, QV_INT length, va_list *argList );

/** The encoders of qv_format.h with their checks, at the end of a text. */
void encodeBool( TextBuilder &text, QV_BOOL value, QV_INT minWidth, QV_INT flags );
void encodeInt( TextBuilder &text, QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags );
void encodeReal( TextBuilder &text, QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags );

/** The place for a text of `length` characters, padded with blanks to `minWidth`, which the caller fills. */
QV_CHAR *encodePadding( TextBuilder &text, QV_INT length, QV_INT minWidth, QV_INT flags );
} // namespace qv
#endif

#endif
