#include "qv/base/qv_name.h"

#include "qv/base/qv_string.h"
#include "qv/sys/qv_abort.h"

namespace
{
const QV_CHAR UNDERSCORE = U'_';

bool isUpper( QV_CHAR ch )
{
    return ch >= U'A' && ch <= U'Z';
}

bool isLower( QV_CHAR ch )
{
    return ch >= U'a' && ch <= U'z';
}

bool isDigit( QV_CHAR ch )
{
    return ch >= U'0' && ch <= U'9';
}

// A triple underscore at `i` with something behind it.
bool isTriple( const QV_CHAR *chs, QV_INT length, QV_INT i )
{
    return i < length - 3 && chs[i + 1] == UNDERSCORE && chs[i + 2] == UNDERSCORE;
}
} // namespace

QV_BOOL qvNameUpperCaseOk( QV_STRING *qvs, QV_BOOL allowPrivate )
{
    QV_CHECK( qvs );

    const QV_CHAR *chs              = qvStringBacking( qvs );
    QV_INT         length           = qvStringLength( qvs );
    QV_INT         underscores      = 0;
    bool           behindUnderscore = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        if( isUpper( chs[i] ) || ( isDigit( chs[i] ) && i > 0 ) )
        {
            behindUnderscore = false;
        }
        else if( chs[i] == UNDERSCORE )
        {
            if( i == 0 || behindUnderscore || i == length - 1 )
                return QV_FALSE;

            if( allowPrivate && underscores < 2 && isTriple( chs, length, i ) )
                i += 2;

            behindUnderscore = true;
            underscores++;
        }
        else
        {
            return QV_FALSE;
        }
    }

    return length > 0 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvNameCamelCaseOk( QV_STRING *qvs, QV_BOOL allowPrivate )
{
    QV_CHECK( qvs );

    const QV_CHAR *chs          = qvStringBacking( qvs );
    QV_INT         length       = qvStringLength( qvs );
    QV_INT         uppers       = 0;
    bool           seenTriple   = false;
    bool           behindTriple = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        if( isLower( chs[i] ) )
        {
            if( behindTriple )
                return QV_FALSE;
        }
        else if( isUpper( chs[i] ) )
        {
            if( i == 0 )
                return QV_FALSE;

            uppers++;
            behindTriple = false;
        }
        else if( isDigit( chs[i] ) )
        {
            if( i == 0 || behindTriple )
                return QV_FALSE;
        }
        else if( chs[i] == UNDERSCORE && allowPrivate && isTriple( chs, length, i ) && !seenTriple && uppers < 2 )
        {
            i += 2;
            seenTriple   = true;
            behindTriple = true;
        }
        else
        {
            return QV_FALSE;
        }
    }

    return length > 0 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvNameOk( QV_STRING *qvs, QV_BOOL allowPrivate )
{
    return qvNameUpperCaseOk( qvs, allowPrivate ) || qvNameCamelCaseOk( qvs, allowPrivate ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvNamePrivate( QV_STRING *qvs )
{
    QV_CHECK( qvNameOk( qvs, QV_TRUE ) );

    return qvNameOk( qvs, QV_FALSE ) ? QV_FALSE : QV_TRUE;
}
