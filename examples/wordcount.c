/* Counts the words of files in any charset, the most frequent first. wordcount.cpp is the same program in C++. */

#include <qv/qv.h>

#include <stdio.h>
#include <stdlib.h>

/* An entry of the Dict, by its index. */
typedef struct
{
    QV_INT count, index;
} ENTRY;

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

/* Takes what a document has in place of the charset and of the number of words. */
static QV_BOOL configure( QV_STRING *configuration, QV_STRING **charset, QV_INT *top )
{
    QV_BUFFER *bytes = qvFileReadBuffer( configuration, -1 );
    QV_STORE  *store = bytes ? qvStoreTryDecodeFromTextBuffer( bytes ) : NULL;
    QV_STRING *value = store ? qvStoreValueCstr( store, "encoding", -1 ) : NULL;

    if( value )
    {
        qvStringRelease( *charset );
        *charset = value;
    }

    if( store && qvStoreHasValueIntCstr( store, "top", -1 ) )
        qvStoreValueIntCstr( store, top, "top", -1 );
    if( bytes )
        qvBufferRelease( bytes );
    if( store )
        qvStoreRelease( store );

    return store != NULL;
}

static QV_INT run( QV_VECTOR *files, QV_STRING *charset, QV_INT top )
{
    QV_DICT *counts   = qvDictCreate();
    QV_INT   encoding = qvCharsetFromIanaName( charset ), status = encoding < 0 ? 2 : 0;

    for( QV_INT i = 0; i < qvVectorLength( files ) && status == 0; i++ )
    {
        QV_STRING *file = qvStringFrom( qvVectorObjAt( files, i ) );
        status          = countFile( &counts, file, encoding ) ? 0 : 1;
        qvStringRelease( file );
    }

    if( status == 0 )
        printTop( counts, top );
    else if( encoding < 0 )
        qvPrintFormatCstr( "there is no charset %s\n", -1, charset );

    qvDictRelease( counts );
    return status;
}

static QV_OPTIONS *options;

static QV_INT add( QV_CHAR letter, const char *name, QV_INT type, const char *text, const char *value )
{
    QV_INT option = qvOptionsAddCstr( &options, letter, name, -1, type, text, -1 );

    if( value )
        qvOptionsSetDefaultCstr( &options, option, value, -1 );

    return option;
}

int main( int argc, char **argv )
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, qvStandardOutputPrint, "wordcount", "Word counter", "1.0" );

    options = qvOptionsCreateCstr( "wordcount", -1, "[FILE...]", -1, "Counts words, the most frequent first.", -1 );
    QV_INT encoding = add( U'e', "encoding=CHARSET", QV_OPTION_TYPE_TEXT, "the charset of the files", "utf-8" );
    QV_INT most     = add( U'n', "top=COUNT", QV_OPTION_TYPE_INTEGER, "how many words to show; -1 for all", "10" );
    QV_INT config   = add( U'c', "config=FILE", QV_OPTION_TYPE_FILE, "a document with encoding and top instead", NULL );
    QV_INT status   = qvOptionsReadMain( &options, argc, argv );

    if( status < 0 )
    {
        QV_VECTOR *files         = qvOptionsWords( options );
        QV_STRING *charset       = qvOptionsString( options, encoding );
        QV_STRING *configuration = qvOptionsString( options, config );
        QV_INT     top           = qvOptionsInt( options, most );

        if( qvVectorLength( files ) == 0 )
            qvVectorAppendStringCstr( &files, "/dev/stdin", -1 );

        if( configuration && !configure( configuration, &charset, &top ) )
            qvPrintFormatCstr( "%s: is no document\n", -1, configuration );
        else
            status = run( files, charset, top );

        if( configuration )
            qvStringRelease( configuration );
        qvStringRelease( charset );
        qvVectorRelease( files );
    }

    qvOptionsRelease( options );
    qvRuntimeShutdown();

    if( qvSortObjects( qvStringSort() ) )
        printf( "texts are left\n" );

    return status < 0 ? 2 : (int)status;
}
