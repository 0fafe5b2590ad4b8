/** @file
    Strings for a look-up, of short texts, without an allocation. */

#ifndef QV_STRING_STACK_PRIVATE_H
#define QV_STRING_STACK_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_vectors_line_private.h"

#include <string.h>

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace qv
{
/** A String of UTF-8 text that is looked up: short ASCII lies on the caller's stack, other text is a String as any. For
    functions that neither keep the String nor hand it on. Arguments as of qvStringCreateFromCstr(). */
class SoughtString
{
public:
    SoughtString( const char *text, QV_INT length )
    {
        if( text && length >= -1 )
        {
            QV_INT bytes = length < 0 ? static_cast< QV_INT >( strnlen( text, MOST + 1 ) ) : length;

            if( bytes > 0 && bytes <= MOST && place( reinterpret_cast< const uint8_t * >( text ), bytes ) )
                return;
        }

        created_.reset( qvStringCreateFromCstr( text, length ) );
    }

    ~SoughtString()
    {
        QV_ASSERT( created_ || string_.retainCount == 1 ); // nobody has kept it
    }

    SoughtString( const SoughtString & )            = delete;
    SoughtString &operator=( const SoughtString & ) = delete;

    operator QV_STRING *()
    {
        return created_ ? created_.get() : &string_;
    }

    operator QV_OBJ *()
    {
        return created_ ? created_.get() : &string_;
    }

    /** True where the text lies on the stack: then it is ASCII. */
    bool isOnStack() const
    {
        return !created_;
    }

private:
    static const QV_INT MOST = 64; // characters

    bool place( const uint8_t *text, QV_INT bytes )
    {
        uint8_t all = 0;

        for( QV_INT i = 0; i < bytes; i++ )
            all |= text[i];

        if( all >= 0x80 )
            return false;

        widenAscii( chars_, text, bytes );
        static_cast< QV_OBJ & >( string_ ) = QV___STATIC_HEADER( QV___OBJ_TYPE_OBJECT );
        string_.sort                       = &qv___sort_QV_STRING;
        string_.retainCount                = 1;
        string_.initBlock();
        string_.first  = chars_;
        string_.length = bytes;

        return true;
    }

    Ref< QV_STRING > created_;
    QV_STRING        string_;
    QV_CHAR          chars_[MOST];
};
} // namespace qv

#endif
