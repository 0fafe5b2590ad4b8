/** @file
    The plain types of the library, the macros that every public header is written with, and the name of every
    public object type.

    Each public header includes this one and nothing else of the library, so that any of them can be included
    alone and in any order, from C11 and from C++20. */

#ifndef QV_TYPES_H
#define QV_TYPES_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifndef __cplusplus
#include <uchar.h>
#endif

/* The interface -------------------------------------------------------------------------------------------------- */

/** Stands before the declaration of everything that the library exports. */
#ifdef __cplusplus
#define QV_API extern "C" __attribute__( ( visibility( "default" ) ) )
#else
#define QV_API extern __attribute__( ( visibility( "default" ) ) )
#endif

/* Plain types ---------------------------------------------------------------------------------------------------- */

/** All sizes, counts, indexes, flag words and timestamps. */
typedef int64_t QV_INT;

#define QV_INT_MIN  INT64_MIN
#define QV_INT_MAX  INT64_MAX
#define QV_INT_BITS 64

/** A code point. `U"text"` is an array of them. */
typedef char32_t QV_CHAR;

/** True for a code point, surrogates included: below 0x110000. */
#define QV_CHAR_OK( ch ) ( (uint32_t)( ch ) < 0x110000u )

/** A truth value: always QV_TRUE or QV_FALSE. */
typedef int QV_BOOL;

#define QV_FALSE 0
#define QV_TRUE  1

/** An IEEE 754 double. */
typedef double QV_REAL;

/* Objects -------------------------------------------------------------------------------------------------------- */

/** Any object. */
typedef struct QV_OBJ QV_OBJ;

/** The type of objects of one family. */
typedef struct QV_SORT QV_SORT;

/** A module: the library itself, or a shared object that it has loaded. */
typedef struct QV_MODULE QV_MODULE;

typedef struct QV_ALERT              QV_ALERT;
typedef struct QV_ALERTABLE          QV_ALERTABLE;
typedef struct QV_BARRIER            QV_BARRIER;
typedef struct QV_BOXED_BOOL         QV_BOXED_BOOL;
typedef struct QV_BOXED_INT          QV_BOXED_INT;
typedef struct QV_BOXED_NULL         QV_BOXED_NULL;
typedef struct QV_BOXED_REAL         QV_BOXED_REAL;
typedef struct QV_BOXED_UNIQUE       QV_BOXED_UNIQUE;
typedef struct QV_BUFFER             QV_BUFFER;
typedef struct QV_BUFFER_BYTE_SINK   QV_BUFFER_BYTE_SINK;
typedef struct QV_BUFFER_BYTE_SOURCE QV_BUFFER_BYTE_SOURCE;
typedef struct QV_BYTE_SINK          QV_BYTE_SINK;
typedef struct QV_BYTE_SOURCE        QV_BYTE_SOURCE;
typedef struct QV_CHAR_SINK          QV_CHAR_SINK;
typedef struct QV_CHAR_SOURCE        QV_CHAR_SOURCE;
typedef struct QV_CONDSET            QV_CONDSET;
typedef struct QV_COUNTER            QV_COUNTER;
typedef struct QV_DECODER            QV_DECODER;
typedef struct QV_DICT               QV_DICT;
typedef struct QV_ENCODER            QV_ENCODER;
typedef struct QV_ENUM               QV_ENUM;
typedef struct QV_FLAGSET            QV_FLAGSET;
typedef struct QV_GENERATION         QV_GENERATION;
typedef struct QV_GENERATION_MUTEX   QV_GENERATION_MUTEX;
typedef struct QV_IDENTIFIER         QV_IDENTIFIER;
typedef struct QV_LINE_SINK          QV_LINE_SINK;
typedef struct QV_LINE_SOURCE        QV_LINE_SOURCE;
typedef struct QV_MODULE_VERSION     QV_MODULE_VERSION;
typedef struct QV_MONITOR            QV_MONITOR;
typedef struct QV_NLF_LINE_SINK      QV_NLF_LINE_SINK;
typedef struct QV_NLF_LINE_SOURCE    QV_NLF_LINE_SOURCE;
typedef struct QV_OPT_DEF            QV_OPT_DEF;
typedef struct QV_OPT_SEQ            QV_OPT_SEQ;
typedef struct QV_PRIORITY_MAP       QV_PRIORITY_MAP;
typedef struct QV_RANGE_MAP          QV_RANGE_MAP;
typedef struct QV_REGION             QV_REGION;
typedef struct QV_SIGNAL             QV_SIGNAL;
typedef struct QV_SIGNALABLE         QV_SIGNALABLE;
typedef struct QV_STACK_TRACE        QV_STACK_TRACE;
typedef struct QV_STORE              QV_STORE;
typedef struct QV_STRING             QV_STRING;
typedef struct QV_STRING_CHAR_SINK   QV_STRING_CHAR_SINK;
typedef struct QV_STRING_CHAR_SOURCE QV_STRING_CHAR_SOURCE;
typedef struct QV_THREAD             QV_THREAD;
typedef struct QV_TIME               QV_TIME;
typedef struct QV_TIMER              QV_TIMER;
typedef struct QV_TOOL_SWITCH        QV_TOOL_SWITCH;
typedef struct QV_UNICODE_NORMALIZER QV_UNICODE_NORMALIZER;
typedef struct QV_VECTOR             QV_VECTOR;

/** Declares the type and the eight functions that every family has.

    `Name` is the family's name as it stands in its functions, `TYPE` its object type, which is also the name of
    its sort. All eight may be called from any thread; each costs a constant time unless the family's compare or
    to-string function costs more.

    - `qv<Name>Sort` gives the family's sort, which lives as long as the process.
    - `qv<Name>Retain` takes one more reference; `qv<Name>Release` gives one up, and with the last one the object
      ends. Null ends the process.
    - `qv<Name>Obj` gives the object as any object, `qv<Name>From` gives any object as one of this family; neither
      changes the number of references, both pass null. `From` ends the process when the object has another sort.
    - `qv<Name>ToString` gives a new text of the object, owned by the caller. Null ends the process.
    - `qv<Name>Compare` gives -1, 0 or 1; `qv<Name>Equals` tells whether that is 0. Null ends the process. */
#define QV_FAMILY( Name, TYPE ) QV___FAMILY_DECLARE( QV_API, Name, TYPE )

/** The same with another mark than QV_API in front of the functions. */
#define QV___FAMILY_DECLARE( mark, Name, TYPE )                                                                        \
    typedef struct TYPE TYPE;                                                                                          \
    mark QV_SORT       *qv##Name##Sort( void );                                                                        \
    mark void           qv##Name##Retain( TYPE *obj );                                                                 \
    mark void           qv##Name##Release( TYPE *obj );                                                                \
    mark QV_OBJ        *qv##Name##Obj( TYPE *obj );                                                                    \
    mark TYPE          *qv##Name##From( QV_OBJ *obj );                                                                 \
    mark QV_STRING     *qv##Name##ToString( TYPE *obj );                                                               \
    mark QV_INT         qv##Name##Compare( TYPE *objA, TYPE *objB );                                                   \
    mark QV_BOOL        qv##Name##Equals( TYPE *objA, TYPE *objB );

#endif
