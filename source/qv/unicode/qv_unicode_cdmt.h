/** @file
    The types of decomposition mappings and their names.

    Any thread. A value outside 0 to 17 and null as a String end the process. */

#ifndef QV_UNICODE_CDMT_H
#define QV_UNICODE_CDMT_H

#include "qv/sys/qv_types.h"

/** Types of a decomposition. All but the canonical one are compatibility decompositions. */
#define QV_UNICODE_CDMT_NONE      0
#define QV_UNICODE_CDMT_CANONICAL 1
#define QV_UNICODE_CDMT_FONT      2
#define QV_UNICODE_CDMT_NOBREAK   3
#define QV_UNICODE_CDMT_INITIAL   4
#define QV_UNICODE_CDMT_MEDIAL    5
#define QV_UNICODE_CDMT_FINAL     6
#define QV_UNICODE_CDMT_ISOLATED  7
#define QV_UNICODE_CDMT_CIRCLE    8
#define QV_UNICODE_CDMT_SUPER     9
#define QV_UNICODE_CDMT_SUB       10
#define QV_UNICODE_CDMT_VERTICAL  11
#define QV_UNICODE_CDMT_WIDE      12
#define QV_UNICODE_CDMT_NARROW    13
#define QV_UNICODE_CDMT_SMALL     14
#define QV_UNICODE_CDMT_SQUARE    15
#define QV_UNICODE_CDMT_FRACTION  16
#define QV_UNICODE_CDMT_COMPAT    17

#define QV_UNICODE_CDMT_OK( cdmt ) ( ( cdmt ) >= 0 && ( cdmt ) <= 17 )

/** The tag in the character database as in "<noBreak>", or null for the first two, which have none. */
QV_API QV_STRING *qvUnicodeCdmtTag( QV_INT cdmt );

/** @{ */
/** The description as in "A superscript form." and the name of the constant as in "QV_UNICODE_CDMT_SUPER". */
QV_API QV_STRING *qvUnicodeCdmtDescription( QV_INT cdmt );
QV_API QV_STRING *qvUnicodeCdmtSymName( QV_INT cdmt );
/** @} */

/** @{ */
/** The type with a tag, or -1; the second one takes it in any case. */
QV_API QV_INT qvUnicodeCdmtFromTag( QV_STRING *tag );
QV_API QV_INT qvUnicodeCdmtFromTagCaseFold( QV_STRING *tag );
/** @} */

#endif
