/** @file
    Arguments of formats in C, in the width that the library reads: an int or a float passes as it is.

        int   done  = 3;
        float share = 0.75f;
        qvPrintFormatCstr( "%i of %lc (%r)\n", -1, QV_FORMAT_ARGS( done, "files", share ) );

    Integers travel as QV_INT, with one exception: in C, `unsigned int` is the type of characters too, and stays as it
    is, for `%c`. A float travels as a QV_REAL, and `_Bool` as a QV_BOOL; everything else as it is. So a QV_BOOL, which
    is an int, needs a cast for `%b`, and so does an unsigned int for `%i`: `(bool)found`, `(QV_INT)count`. A character
    for `%c` is written as `U'x'`: `'x'` is an int.

    What the conversions ask for is not compared with the arguments: C has nothing that could. In C++, qv/qv.hpp checks
    all of it, and this header is empty. */

#ifndef QV_FORMAT_ARGS_H
#define QV_FORMAT_ARGS_H

#include "qv/sys/qv_types.h"

#ifndef __cplusplus

// clang-format off

/** One argument, evaluated once, in the width that a format reads. */
#define QV_FORMAT_ARG( arg )                                                                                           \
    _Generic( ( arg ),                                                                                                 \
        _Bool:              ( arg ),                                                                                   \
        char:               (QV_INT)QV___FORMAT_OF( char, arg ),                                                       \
        signed char:        (QV_INT)QV___FORMAT_OF( signed char, arg ),                                                \
        unsigned char:      (QV_INT)QV___FORMAT_OF( unsigned char, arg ),                                              \
        short:              (QV_INT)QV___FORMAT_OF( short, arg ),                                                      \
        unsigned short:     (QV_INT)QV___FORMAT_OF( unsigned short, arg ),                                             \
        int:                (QV_INT)QV___FORMAT_OF( int, arg ),                                                        \
        long:               (QV_INT)QV___FORMAT_OF( long, arg ),                                                       \
        unsigned long:      (QV_INT)QV___FORMAT_OF( unsigned long, arg ),                                              \
        long long:          (QV_INT)QV___FORMAT_OF( long long, arg ),                                                  \
        unsigned long long: (QV_INT)QV___FORMAT_OF( unsigned long long, arg ),                                         \
        float:              (QV_REAL)QV___FORMAT_OF( float, arg ),                                                     \
        long double:        (QV_REAL)QV___FORMAT_OF( long double, arg ),                                               \
        default:            ( arg ) )

/** The argument where it has the type, else a zero: the branches that are not taken have to be valid too. */
#define QV___FORMAT_OF( type, arg ) _Generic( ( arg ), type: ( arg ), default: (type)0 )

/** 1 to 12 arguments, each in the width that a format reads. */
#define QV_FORMAT_ARGS( ... )                                                                                          \
    QV___FORMAT_PICK( __VA_ARGS__, QV___FORMAT_12, QV___FORMAT_11, QV___FORMAT_10, QV___FORMAT_9, QV___FORMAT_8,       \
        QV___FORMAT_7, QV___FORMAT_6, QV___FORMAT_5, QV___FORMAT_4, QV___FORMAT_3, QV___FORMAT_2, QV_FORMAT_ARG, 0 )   \
    ( __VA_ARGS__ )

/** @{ */
/** The steps of QV_FORMAT_ARGS(), by the number of arguments. */
#define QV___FORMAT_PICK( a, b, c, d, e, f, g, h, i, j, k, l, picked, ... ) picked
#define QV___FORMAT_2( a, ... )  QV_FORMAT_ARG( a ), QV_FORMAT_ARG( __VA_ARGS__ )
#define QV___FORMAT_3( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_2( __VA_ARGS__ )
#define QV___FORMAT_4( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_3( __VA_ARGS__ )
#define QV___FORMAT_5( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_4( __VA_ARGS__ )
#define QV___FORMAT_6( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_5( __VA_ARGS__ )
#define QV___FORMAT_7( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_6( __VA_ARGS__ )
#define QV___FORMAT_8( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_7( __VA_ARGS__ )
#define QV___FORMAT_9( a, ... )  QV_FORMAT_ARG( a ), QV___FORMAT_8( __VA_ARGS__ )
#define QV___FORMAT_10( a, ... ) QV_FORMAT_ARG( a ), QV___FORMAT_9( __VA_ARGS__ )
#define QV___FORMAT_11( a, ... ) QV_FORMAT_ARG( a ), QV___FORMAT_10( __VA_ARGS__ )
#define QV___FORMAT_12( a, ... ) QV_FORMAT_ARG( a ), QV___FORMAT_11( __VA_ARGS__ )
/** @} */

// clang-format on

#endif

#endif
