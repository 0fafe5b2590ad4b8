/** @file
    The digests of keys: what qv_digest_private.h makes of Strings and boxed integers. */

#ifndef QV_DICT_DIGEST_PRIVATE_H
#define QV_DICT_DIGEST_PRIVATE_H

#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_digest_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_assert_private.h"

QV___HIDDEN QV_SORT qv___sort_QV_STRING;

namespace qv::dict
{
/** The digest of a text after as many characters, and what belongs to it of the rest. */
inline Digest digestBehind( QV_STRING *text, QV_INT prefix )
{
    QV_ASSERT( prefix <= text->length );
    return digestText( chars( text ) + prefix, text->length - prefix );
}

inline uint64_t restBehind( QV_STRING *text, QV_INT prefix, const Digest &digest )
{
    return digestRest( chars( text ) + prefix, text->length - prefix, digest );
}

inline uint64_t digestInt( QV_OBJ *key )
{
    return integerDigest( static_cast< QV_BOXED_INT * >( key )->value );
}

inline QV_STRING *stringOf( QV_OBJ *key )
{
    return static_cast< QV_STRING * >( key );
}

/** What digests a run has if all its keys are of this sort. */
inline uint32_t digestsOf( QV_SORT *sort )
{
    return sort == &qv___sort_QV_STRING      ? STRING_DIGESTS
           : sort == &qv___sort_QV_BOXED_INT ? INTEGER_DIGESTS
                                             : NO_DIGESTS;
}
} // namespace qv::dict

#endif
