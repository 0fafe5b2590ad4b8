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

/** Marks the declaration of each variable that the library or a module exports, with C linkage. */
#ifdef __cplusplus
#define QV_API_DATA extern "C" __attribute__( ( visibility( "default" ) ) )
#else
#define QV_API_DATA extern __attribute__( ( visibility( "default" ) ) )
#endif

/** Marks the declaration of each function that the library or a module exports, with C linkage. GCC has it called by its
    address, which the loader enters before the program or module runs, without the jump through the procedure linkage table
    that the first call would fill. */
#if defined( __x86_64__ ) && defined( __GNUC__ ) && !defined( __clang__ ) && !defined( QV___INSIDE )
#define QV_API QV_API_DATA __attribute__( ( noplt ) )
#else
#define QV_API QV_API_DATA
#endif

/* Plain types ---------------------------------------------------------------------------------------------------- */

/** All sizes, counts, indexes, flag words and timestamps. */
typedef int64_t QV_INT;

#define QV_INT_MIN  INT64_MIN /**< the smallest QV_INT */
#define QV_INT_MAX  INT64_MAX /**< the greatest QV_INT */
#define QV_INT_BITS 64        /**< bits of a QV_INT */

/** A code point. `U"text"` is an array of them. */
typedef char32_t QV_CHAR;

/** True for a code point, surrogates included: below 0x110000. Evaluates its argument once. */
#define QV_CHAR_OK( ch ) ( (uint32_t)( ch ) < 0x110000u )

/** A truth value: always QV_TRUE or QV_FALSE. */
typedef int QV_BOOL;

#define QV_FALSE 0 /**< the truth value of what does not hold */
#define QV_TRUE  1 /**< the truth value of what holds */

/** An IEEE 754 double. */
typedef double QV_REAL;

/* Objects -------------------------------------------------------------------------------------------------------- */

/** Any object. */
typedef struct QV_OBJ QV_OBJ;

/** The type of objects of one family. */
typedef struct QV_SORT QV_SORT;

/** A module: the library itself, or a shared object that it has loaded. */
typedef struct QV_MODULE QV_MODULE;

typedef struct QV_ALERT              QV_ALERT;              /**< an event that is set and unset any number of times */
typedef struct QV_ALERTABLE          QV_ALERTABLE;          /**< a target of alerts that its owner can take back */
typedef struct QV_BARRIER            QV_BARRIER;            /**< a gate that threads wait at, open or closed */
typedef struct QV_BOXED_BOOL         QV_BOXED_BOOL;         /**< a truth value as an object */
typedef struct QV_BOXED_INT          QV_BOXED_INT;          /**< an integer as an object */
typedef struct QV_BOXED_NULL         QV_BOXED_NULL;         /**< the absence of a value as an object */
typedef struct QV_BOXED_REAL         QV_BOXED_REAL;         /**< a real as an object */
typedef struct QV_BOXED_UNIQUE       QV_BOXED_UNIQUE;       /**< an identity as an object */
typedef struct QV_BUFFER             QV_BUFFER;             /**< bytes, addressed by the bit */
typedef struct QV_BUFFER_BYTE_SINK   QV_BUFFER_BYTE_SINK;   /**< collects written bytes in a Buffer */
typedef struct QV_BUFFER_BYTE_SOURCE QV_BUFFER_BYTE_SOURCE; /**< reads bytes from a Buffer */
typedef struct QV_BYTE_SINK          QV_BYTE_SINK;          /**< writes bytes */
typedef struct QV_BYTE_SOURCE        QV_BYTE_SOURCE;        /**< reads bytes */
typedef struct QV_CHAR_SINK          QV_CHAR_SINK;          /**< writes characters */
typedef struct QV_CHAR_SOURCE        QV_CHAR_SOURCE;        /**< reads characters */
typedef struct QV_CONDSET            QV_CONDSET;            /**< 16 condition bits that threads wait for */
typedef struct QV_COUNTER            QV_COUNTER;            /**< a count that threads wait to reach zero */
typedef struct QV_DECODER            QV_DECODER;            /**< takes values from bytes that an Encoder wrote */
typedef struct QV_DICT               QV_DICT;       /**< a map from objects to objects, in the order of the keys */
typedef struct QV_ENCODER            QV_ENCODER;    /**< writes values one after the other as bytes */
typedef struct QV_ENUM               QV_ENUM;       /**< names for enumerated values */
typedef struct QV_ERROR              QV_ERROR;      /**< why something failed, and where */
typedef struct QV_FLAGSET            QV_FLAGSET;    /**< names for the bits of a flag word */
typedef struct QV_GENERATION         QV_GENERATION; /**< a place in a tree of generations */
typedef struct QV_GENERATION_MUTEX   QV_GENERATION_MUTEX;   /**< lets only one of related generations in at a time */
typedef struct QV_IDENTIFIER         QV_IDENTIFIER;         /**< a random name of 128 bits */
typedef struct QV_LINE_SINK          QV_LINE_SINK;          /**< writes lines */
typedef struct QV_LINE_SOURCE        QV_LINE_SOURCE;        /**< reads lines */
typedef struct QV_MODULE_VERSION     QV_MODULE_VERSION;     /**< the version of a module */
typedef struct QV_MONITOR            QV_MONITOR;            /**< mutual exclusion */
typedef struct QV_NLF_LINE_SINK      QV_NLF_LINE_SINK;      /**< writes lines as characters */
typedef struct QV_NLF_LINE_SOURCE    QV_NLF_LINE_SOURCE;    /**< reads lines from characters */
typedef struct QV_OPT_DEF            QV_OPT_DEF;            /**< the options that a command line may have */
typedef struct QV_OPT_SEQ            QV_OPT_SEQ;            /**< walks the arguments of a command line */
typedef struct QV_PRIORITY_MAP       QV_PRIORITY_MAP;       /**< objects in the order of their priorities */
typedef struct QV_RANGE_MAP          QV_RANGE_MAP;          /**< objects for intervals of integers */
typedef struct QV_REGION             QV_REGION;             /**< many shared users or one exclusive user */
typedef struct QV_SIGNAL             QV_SIGNAL;             /**< an event that happens once */
typedef struct QV_SIGNALABLE         QV_SIGNALABLE;         /**< a target of signals that its owner can take back */
typedef struct QV_STACK_TRACE        QV_STACK_TRACE;        /**< the calls that a thread was in */
typedef struct QV_STORE              QV_STORE;              /**< a configuration document */
typedef struct QV_STRING             QV_STRING;             /**< text, a sequence of code points */
typedef struct QV_STRING_CHAR_SINK   QV_STRING_CHAR_SINK;   /**< collects written characters in a String */
typedef struct QV_STRING_CHAR_SOURCE QV_STRING_CHAR_SOURCE; /**< reads characters from a String */
typedef struct QV_THREAD             QV_THREAD;             /**< a thread of execution */
typedef struct QV_TIME               QV_TIME;               /**< a date and a time of day in UTC */
typedef struct QV_TIMER              QV_TIMER;              /**< something that happens once at a set time */
typedef struct QV_TOOL_SWITCH        QV_TOOL_SWITCH;        /**< many tools in one executable, run by name */
typedef struct QV_UNICODE_NORMALIZER QV_UNICODE_NORMALIZER; /**< turns characters into a normal form of Unicode */
typedef struct QV_VECTOR             QV_VECTOR;             /**< a sequence of objects */

/** Declares the type and the eight functions that every family has.

    `Name` is the family's name as it stands in its functions, `TYPE` its object type, which is also the name of
    its sort. All eight may be called from any thread; each costs a constant time unless the family's compare or
    to-string function costs more.

    - `qv<Name>Sort` returns the family's sort, which lives as long as the process. Borrowed.
    - `qv<Name>Retain` takes one more reference; `qv<Name>Release` gives one up, and with the last one the object
      ends. Null ends the process.
    - `qv<Name>Obj` returns the object as a QV_OBJ, `qv<Name>From` a QV_OBJ as an object of this family. Neither
      changes the number of references; null stays null. `From` ends the process when the object has another sort.
    - `qv<Name>ToString` returns a new text of the object, owned by the caller. Null ends the process.
    - `qv<Name>Compare` returns -1, 0 or 1; `qv<Name>Equals` tells whether that is 0. Null ends the process. */
#define QV_FAMILY( Name, TYPE ) QV___FAMILY_DECLARE( QV_API, Name, TYPE )

/** The same, with `mark` instead of QV_API before the functions. */
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
