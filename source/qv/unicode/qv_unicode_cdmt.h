/** @file
    The types of decomposition mappings (cdmt is for character decomposition mapping type) and their names.

    Results belong to the caller. Any thread may call these functions. A name costs a new String, and the type of a name
    a comparison with each. A type outside 0 to 17 and null as a String end the process. */

#ifndef QV_UNICODE_CDMT_H
#define QV_UNICODE_CDMT_H

#include "qv/sys/qv_types.h"

/* The types. From FONT on they are compatibility decompositions. */

#define QV_UNICODE_CDMT_NONE      0  /**< no decomposition */
#define QV_UNICODE_CDMT_CANONICAL 1  /**< canonical decomposition */
#define QV_UNICODE_CDMT_FONT      2  /**< font variant */
#define QV_UNICODE_CDMT_NOBREAK   3  /**< no-break version of a space or hyphen */
#define QV_UNICODE_CDMT_INITIAL   4  /**< initial form of an Arabic letter */
#define QV_UNICODE_CDMT_MEDIAL    5  /**< medial form of an Arabic letter */
#define QV_UNICODE_CDMT_FINAL     6  /**< final form of an Arabic letter */
#define QV_UNICODE_CDMT_ISOLATED  7  /**< isolated form of an Arabic letter */
#define QV_UNICODE_CDMT_CIRCLE    8  /**< encircled form */
#define QV_UNICODE_CDMT_SUPER     9  /**< superscript */
#define QV_UNICODE_CDMT_SUB       10 /**< subscript */
#define QV_UNICODE_CDMT_VERTICAL  11 /**< form for vertical layout */
#define QV_UNICODE_CDMT_WIDE      12 /**< fullwidth form */
#define QV_UNICODE_CDMT_NARROW    13 /**< halfwidth form */
#define QV_UNICODE_CDMT_SMALL     14 /**< small form */
#define QV_UNICODE_CDMT_SQUARE    15 /**< characters in a square */
#define QV_UNICODE_CDMT_FRACTION  16 /**< fraction */
#define QV_UNICODE_CDMT_COMPAT    17 /**< any other compatibility decomposition */

/** True for the number of a type. */
#define QV_UNICODE_CDMT_OK( cdmt ) ( ( cdmt ) >= 0 && ( cdmt ) <= 17 )

/** The tag of a type in the character database, like "\<noBreak\>", as a new String. Null for NONE and CANONICAL, which
    have no tag. */
QV_API QV_STRING *qvUnicodeCdmtTag( QV_INT cdmt );

/** @{ */
/** The description of a type, like "A superscript form.", and the name of its constant, like "QV_UNICODE_CDMT_SUPER",
    as new Strings. */
QV_API QV_STRING *qvUnicodeCdmtDescription( QV_INT cdmt );
QV_API QV_STRING *qvUnicodeCdmtSymName( QV_INT cdmt );
/** @} */

/** @{ */
/** The type with a tag, or -1 if there is none. FromTagCaseFold ignores the case of letters. */
QV_API QV_INT qvUnicodeCdmtFromTag( QV_STRING *tag );
QV_API QV_INT qvUnicodeCdmtFromTagCaseFold( QV_STRING *tag );
/** @} */

#endif
