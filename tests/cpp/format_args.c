#include "qv/base/qv_format_args.h"
#include "qv/base/qv_string.h"

QV_STRING *formatArgsOfC( int *evaluated );

QV_STRING *formatArgsOfC( int *evaluated )
{
    float         share  = 0.75f;
    short         minus  = -1;
    unsigned char byte   = 200;
    char          file[] = "files";
    _Bool         found  = 1;
    QV_STRING    *text   = qvStringCreateFromCstr( "text", -1 );
    QV_STRING    *result = qvStringCreateFromFormatCstr(
        "%i %lc %r %i %i %~s %b %c %-*i %r", -1,
        QV_FORMAT_ARGS( -3, file, share, minus, byte, text, found, U'x', 6, 6 + ++*evaluated, 2.5 ) );

    return result;
}
