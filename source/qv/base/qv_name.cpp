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

// Whether the underscore at `i` is followed by two more and at least one character.
bool isTriple( const QV_CHAR *chs, QV_INT length, QV_INT i )
{
    return i < length - 3 && chs[i + 1] == UNDERSCORE && chs[i + 2] == UNDERSCORE;
}
} // namespace

QV_BOOL qvNameUpperCaseOk( QV_STRING *qvs, QV_BOOL allowPrivate )
{
    QV_CHECK( qvs );

    const QV_CHAR *chs             = qvStringBacking( qvs );
    QV_INT         length          = qvStringLength( qvs );
    QV_INT         underscores     = 0;
    bool           afterUnderscore = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        if( isUpper( chs[i] ) || ( isDigit( chs[i] ) && i > 0 ) )
        {
            afterUnderscore = false;
        }
        else if( chs[i] == UNDERSCORE )
        {
            if( i == 0 || afterUnderscore || i == length - 1 )
                return QV_FALSE;

            if( allowPrivate && underscores < 2 && isTriple( chs, length, i ) )
                i += 2;

            afterUnderscore = true;
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

    const QV_CHAR *chs         = qvStringBacking( qvs );
    QV_INT         length      = qvStringLength( qvs );
    QV_INT         uppers      = 0;
    bool           seenTriple  = false;
    bool           afterTriple = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        if( isLower( chs[i] ) )
        {
            if( afterTriple )
                return QV_FALSE;
        }
        else if( isUpper( chs[i] ) )
        {
            if( i == 0 )
                return QV_FALSE;

            uppers++;
            afterTriple = false;
        }
        else if( isDigit( chs[i] ) )
        {
            if( i == 0 || afterTriple )
                return QV_FALSE;
        }
        else if( chs[i] == UNDERSCORE && allowPrivate && isTriple( chs, length, i ) && !seenTriple && uppers < 2 )
        {
            i += 2;
            seenTriple  = true;
            afterTriple = true;
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
