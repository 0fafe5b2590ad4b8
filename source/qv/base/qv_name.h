/** @file
    The grammar of names: `QV_ALERT` in upper case, `qvAlertAssert` in camel case, and their private forms with a
    triple underscore. Callable from any thread; costs a constant time for each character. Null ends the process. */

#ifndef QV_NAME_H
#define QV_NAME_H

#include "qv/sys/qv_types.h"

/** True for a name of `A` to `Z`, digits and single underscores that starts with a letter and does not end in an
    underscore. With `allowPrivate` the first or the second separator may be a triple underscore. */
QV_API QV_BOOL qvNameUpperCaseOk( QV_STRING *qvs, QV_BOOL allowPrivate );

/** True for a name of letters and digits that starts with a lower-case letter. With `allowPrivate`, one triple
    underscore may stand before an upper-case letter, as long as fewer than two upper-case letters precede it. */
QV_API QV_BOOL qvNameCamelCaseOk( QV_STRING *qvs, QV_BOOL allowPrivate );

/** True if either of the two accepts the name. */
QV_API QV_BOOL qvNameOk( QV_STRING *qvs, QV_BOOL allowPrivate );

/** True for a name that is good with private names allowed only. One that is no good at all ends the process. */
QV_API QV_BOOL qvNamePrivate( QV_STRING *qvs );

#endif
