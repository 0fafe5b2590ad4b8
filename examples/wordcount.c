/* Counts the words of files in any charset, the most frequent first. wordcount.cpp is the same program in C++. */

#include <qv/qv.h>

#include <stdio.h>
#include <stdlib.h>

static const char USAGE[] = "Usage: wordcount [OPTION...] [FILE...]\n"
                            "  -e, --encoding           the charset of the files, else UTF-8\n"
                            "  -n, --top                how many words to show, else 10; -1 for all\n"
                            "  -c, --config             a document with encoding and top instead\n";

/* An entry of the Dict, by its index. */
typedef struct
{
    QV_INT count, index;
} ENTRY;

static void printToStandardOutput( const QV_CHAR *chs, QV_INT length )
{
    QV_INT size = qvCharsConvertToUtf8( NULL, 0, chs, length, QV_FALSE );

    if( size > 0 )
    {
        char *text = qvMemAlloc( size );
        qvCharsConvertToUtf8( text, size, chs, length, QV_FALSE );
        fwrite( text, 1, (size_t)size, stdout );
        qvMemFree( text );
    }
}

static int higherCountFirst( const void *a, const void *b )
{
    const ENTRY *x = a, *y = b;
    return x->count != y->count ? ( x->count > y->count ? -1 : 1 ) : ( x->index < y->index ? -1 : 1 );
}

static void countWord( QV_DICT **counts, QV_STRING *line, QV_INT start, QV_INT length )
{
    QV_STRING    *word  = qvStringCreateFromCharsCopy( qvStringBacking( line ) + start, length );
    QV_INT        index = qvDictIndexOfStringKey( *counts, word );
    QV_INT        count = 0;
    QV_BOXED_INT *boxed = NULL;

    if( index >= 0 )
    {
        boxed = qvBoxedIntFrom( qvDictValueAt( *counts, index ) );
        count = qvBoxedIntValue( boxed );
        qvBoxedIntRelease( boxed );
    }

    boxed = qvBoxedIntCreate( count + 1 );

    if( index >= 0 )
        qvDictSetValueAt( counts, index, qvBoxedIntObj( boxed ) );
    else
        qvDictSetStringKey( counts, word, qvBoxedIntObj( boxed ) );

    qvBoxedIntRelease( boxed );
    qvStringRelease( word );
}

static void countLine( QV_DICT **counts, QV_STRING *line )
{
    const QV_CHAR *chs    = qvStringBacking( line );
    QV_INT         length = qvStringLength( line ), start = 0;

    for( QV_INT i = 0; i <= length; i++ )
        if( i == length
            || ( chs[i] < 128 ? chs[i] == ' ' || ( chs[i] >= '\t' && chs[i] <= '\r' )
                              : qvUnicodeIsWhiteSpace( chs[i] ) ) )
        {
            if( i > start )
                countWord( counts, line, start, i - start );
            start = i + 1;
        }
}

static QV_BOOL countFile( QV_DICT **counts, QV_STRING *file, QV_INT charset )
{
    QV_LINE_SOURCE *source =
        qvFileOpenLineSource( file, charset, 0, QV_NLF_FLAG_LF | QV_NLF_FLAG_CR | QV_NLF_FLAG_CRLF );
    QV_STRING *line = NULL;
    QV_BOOL    ok   = source != NULL;

    while( source && ( line = qvLineSourceRead( source ) ) != NULL )
    {
        countLine( counts, line );
        qvStringRelease( line );
    }

    if( source )
    {
        ok = !qvLineSourceError( source );
        qvLineSourceRelease( source );
    }

    if( !ok )
        qvPrintFormatCstr( "%s: cannot be read\n", -1, file );

    return ok;
}

static void printTop( QV_DICT *counts, QV_INT top )
{
    QV_INT length  = qvDictLength( counts );
    ENTRY *entries = qvMemAllocN( length + 1, sizeof( ENTRY ) );

    for( QV_INT i = 0; i < length; i++ )
    {
        QV_BOXED_INT *boxed = qvBoxedIntFrom( qvDictValueAt( counts, i ) );
        entries[i].count    = qvBoxedIntValue( boxed );
        entries[i].index    = i;
        qvBoxedIntRelease( boxed );
    }

    qsort( entries, (size_t)length, sizeof( ENTRY ), higherCountFirst );

    for( QV_INT i = 0; i < length && i != top; i++ )
        qvPrintFormatCstr( "%7i %~o\n", -1, entries[i].count, qvDictKeyAt( counts, entries[i].index ) );

    qvMemFree( entries );
}

int main( int argc, char **argv )
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, printToStandardOutput, "wordcount", "Word counter", "1.0" );

    QV_VECTOR  *arguments = qvVectorCreate(), *files = qvVectorCreate();
    QV_DICT    *counts  = qvDictCreate();
    QV_OPT_DEF *def     = qvOptDefCreate();
    QV_STRING  *charset = qvStringCreateFromCstr( "utf-8", -1 ), *configuration = NULL, *file = NULL;
    QV_INT      top = 10, encoding = 0, status = 0;

    for( int i = 1; i < argc; i++ )
        qvVectorAppendStringCstr( &arguments, argv[i], -1 );

    qvOptDefSetArgOnly( &def, 0 );
    qvOptDefSetShortOpt( &def, U'e', 1 );
    qvOptDefSetLongOptCstr( &def, "encoding", -1, 1 );
    qvOptDefSetShortOpt( &def, U'n', 2 );
    qvOptDefSetLongOptCstr( &def, "top", -1, 2 );
    qvOptDefSetShortOpt( &def, U'c', 3 );
    qvOptDefSetLongOptCstr( &def, "config", -1, 3 );

    for( QV_INT id = 1; id <= 3; id++ )
        qvOptDefSetFlags( &def, id, QV_OPT_FLAG_ARGUMENT );

    QV_OPT_SEQ *seq = qvOptSeqCreate( def, arguments );

    while( qvOptSeqHasNext( seq ) && status == 0 )
        switch( qvOptSeqNext( seq ) )
        {
        case 0:
            file = qvOptSeqArgString( seq );
            qvVectorAppendString( &files, file );
            qvStringRelease( file );
            break;
        case 1:
            qvStringRelease( charset );
            charset = qvOptSeqArgString( seq );
            break;
        case 2:
            top    = qvOptSeqArgInt( seq );
            status = qvOptSeqArgIsInt( seq ) ? 0 : 2;
            break;
        case 3:
            if( configuration )
                qvStringRelease( configuration );
            configuration = qvOptSeqArgString( seq );
            break;
        default:
            qvPrintFormatCstr( "%~s\n", -1, qvOptSeqError( seq ) );
            status = 2;
        }

    if( configuration )
    {
        QV_BUFFER *bytes = qvFileReadBuffer( configuration, -1 );
        QV_STORE  *store = bytes ? qvStoreTryDecodeFromTextBuffer( bytes ) : NULL;
        QV_STRING *value = store ? qvStoreValueCstr( store, "encoding", -1 ) : NULL;

        if( value )
        {
            qvStringRelease( charset );
            charset = value;
        }

        if( !store )
            status = 2;
        else
        {
            if( qvStoreHasValueIntCstr( store, "top", -1 ) )
                qvStoreValueIntCstr( store, &top, "top", -1 );
            qvStoreRelease( store );
        }

        if( bytes )
            qvBufferRelease( bytes );
        qvStringRelease( configuration );
    }

    encoding = qvCharsetFromIanaName( charset );

    if( status != 0 || encoding < 0 )
    {
        qvPrintCstr( USAGE, -1 );
        status = 2;
    }

    if( status == 0 && qvVectorLength( files ) == 0 )
        qvVectorAppendStringCstr( &files, "/dev/stdin", -1 );

    for( QV_INT i = 0; i < qvVectorLength( files ) && status == 0; i++ )
    {
        file   = qvStringFrom( qvVectorObjAt( files, i ) );
        status = countFile( &counts, file, encoding ) ? 0 : 1;
        qvStringRelease( file );
    }

    if( status == 0 )
        printTop( counts, top );

    qvOptSeqRelease( seq );
    qvOptDefRelease( def );
    qvStringRelease( charset );
    qvDictRelease( counts );
    qvVectorRelease( files );
    qvVectorRelease( arguments );
    qvRuntimeShutdown();

    if( qvSortObjects( qvStringSort() ) )
        printf( "texts are left\n" );

    return (int)status;
}
