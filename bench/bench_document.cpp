#include "bench.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>

#include <malloc.h>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_MSGPACK
#include <msgpack.hpp>
#endif

// Documents nested three deep: ten groups of ten sections, so that every entry is a.b.c=value. The answer of every side
// is the list of all entries: what a side has written is read again for it.

namespace bench
{
namespace
{
using bench::show; // beside those for stores, trees and key files below

using Lines = std::vector< std::string >;
using Tree  = std::map< std::string, std::map< std::string, std::map< std::string, std::string > > >;

struct Document
{
    Tree       tree;
    QV_STORE  *store;
    QV_BUFFER *text, *unordered, *binary;
#ifdef BENCH_GLIB
    GKeyFile   *keyFile;
    std::string keyFileText, keyFileUnordered;
#endif
#ifdef BENCH_MSGPACK
    std::string packed;
#endif
};

std::string join( const Lines &lines )
{
    std::string text;

    for( const std::string &line : lines )
        text += line;

    return text;
}

void showSorted( Lines lines )
{
    std::sort( lines.begin(), lines.end() );
    answer( join( lines ) );
}

void show( QV_STORE *store )
{
    show( uint64_t( store != nullptr ) );

    if( comparing )
        show( qvStoreEncodeToTextBuffer( store ) );
}

#ifdef BENCH_MSGPACK
void show( const Tree &tree )
{
    show( uint64_t( !tree.empty() ) );

    if( comparing )
        for( auto &[group, sections] : tree )
            for( auto &[section, leaves] : sections )
                for( auto &[key, value] : leaves )
                    answer( group + "." + section + "." + key + "=" + value + "\n" );
}
#endif

#ifdef BENCH_GLIB
GKeyFile *load( const std::string &text )
{
    GKeyFile *file = g_key_file_new();
    g_key_file_load_from_data( file, text.data(), text.size(), G_KEY_FILE_NONE, nullptr );
    return file;
}

void show( GKeyFile *file )
{
    show( uint64_t( file != nullptr ) );

    if( !comparing )
        return;

    Lines  lines;
    char **groups = g_key_file_get_groups( file, nullptr );

    for( char **group = groups; *group; group++ )
        for( char **key = g_key_file_get_keys( file, *group, nullptr, nullptr ); *key; key++ )
            lines.push_back(
                std::string( *group ) + "." + *key + "=" + g_key_file_get_string( file, *group, *key, nullptr )
                + "\n" );

    showSorted( lines );
}
#endif

Document *makeDocument( size_t entries )
{
    Document   *document = new Document;
    const Lines names    = keys( entries );
    Lines       lines, keyFileLines;

    // Whatever comes first here is written without an order: of the sections, and of the keys of a section.
    for( size_t i = 0; i < entries; i++ )
    {
        const size_t      place   = i * 7919 % entries;
        const std::string group   = "group-" + std::to_string( place / 10 % 10 );
        const std::string section = "section-" + std::to_string( place % 10 );
        const std::string entry   = names[i] + "=value of entry " + std::to_string( i / 100 ) + "\n";
        lines.push_back( group + "." + section + "." + entry );
        keyFileLines.push_back( "[" + group + "." + section + "]\n" + entry );
        document->tree[group][section][names[i]] = "value of entry " + std::to_string( i / 100 );
    }

    document->unordered = buffer( join( lines ) );
    document->store     = qvStoreTryDecodeFromTextBuffer( document->unordered );
    document->text      = qvStoreEncodeToTextBuffer( document->store );
    document->binary    = qvStoreEncodeToBuffer( document->store );
#ifdef BENCH_GLIB
    document->keyFileUnordered = join( keyFileLines );

    for( auto &[group, sections] : document->tree )
        for( auto &[section, leaves] : sections )
        {
            document->keyFileText += "[" + group + "." + section + "]\n";

            for( auto &[key, value] : leaves )
                document->keyFileText += key + "=" + value + "\n";
        }

    document->keyFile = load( document->keyFileText );
#endif
#ifdef BENCH_MSGPACK
    std::stringstream stream;
    msgpack::pack( stream, document->tree );
    document->packed = stream.str();
#endif
    return document;
}

// What a document of so many entries takes that a process of its own has read.
double memoryOf( const std::string &side, size_t entries )
{
    FILE *output = popen(
        ( "exec '" + std::filesystem::read_symlink( "/proc/self/exe" ).string() + "' --memory " + side + " "
          + std::to_string( entries ) )
            .c_str(),
        "r" );
    double mebibytes;

    if( !output || std::fscanf( output, "%lf", &mebibytes ) != 1 || pclose( output ) )
        std::abort();

    return mebibytes;
}

// Memory that the process has got from the system and not given back.
double residentMiB()
{
    long  pages = 0, resident = 0;
    FILE *file = std::fopen( "/proc/self/statm", "r" );

    if( !file || std::fscanf( file, "%ld %ld", &pages, &resident ) != 2 )
        std::abort();

    std::fclose( file );
    return static_cast< double >( resident ) * 4096 / ( 1 << 20 );
}

void addReading( const Document *document, const std::string &input, double target, double targetUnordered )
{
    for( bool ordered : { true, false } )
    {
        QV_BUFFER *text = ordered ? document->text : document->unordered;
        Case       reading{
            "document",
            ordered ? "read text" : "read unordered text",
            input,
            ordered ? target : targetUnordered,
            [text]
            {
                QV_STORE *store = qvStoreTryDecodeFromTextBuffer( text );
                show( store );
                qvStoreRelease( store );
            },
                  {} };
#ifdef BENCH_GLIB
        const std::string *keyFileText = ordered ? &document->keyFileText : &document->keyFileUnordered;
        reading.peers                  = {
            { "GKeyFile, 8 bits", [keyFileText]
                               {
                  GKeyFile *file = load( *keyFileText );
                  show( file );
                  g_key_file_free( file );
              } } };
#endif
        add( reading );
    }
}

void addMemory( size_t entries, const std::string &input )
{
    Case memory{
        "document",
        "memory of what was read",
        input,
        entries == 100000 ? 2.0 : 0,
        [entries] { notePeak( memoryOf( "ours", entries ) ); },
        {} };
#ifdef BENCH_GLIB
    memory.peers = { { "GKeyFile, 8 bits", [entries] { notePeak( memoryOf( "GKeyFile", entries ) ); } } };
#endif
    add( memory );
}

void addWriting( const Document *document, const std::string &input, double target )
{
    Case writing{
        "document",
        "write text",
        input,
        target,
        [document]
        {
            QV_BUFFER *text = qvStoreEncodeToTextBuffer( document->store );
            show( uint64_t( qvBufferLength( text ) > 0 ) );

            if( comparing )
                show( qvStoreTryDecodeFromTextBuffer( text ) );

            qvBufferRelease( text );
        },
        {} };
#ifdef BENCH_GLIB
    writing.peers = {
        { "GKeyFile, 8 bits", [document]
          {
              gsize size = 0;
              char *text = g_key_file_to_data( document->keyFile, &size, nullptr );
              show( uint64_t( size > 0 ) );

              if( comparing )
                  show( load( text ) );

              g_free( text );
          } } };
#endif
    add( writing );
}

void addBinary( const Document *document, const std::string &input, double readTarget, double writeTarget )
{
    Case reading{
        "document",
        "read binary",
        input,
        readTarget,
        [document]
        {
            QV_STORE *store = qvStoreTryDecodeFromBuffer( document->binary );
            show( store );
            qvStoreRelease( store );
        },
        {} };
    Case writing{
        "document",
        "write binary",
        input,
        writeTarget,
        [document]
        {
            QV_BUFFER *bytes = qvStoreEncodeToBuffer( document->store );
            show( uint64_t( qvBufferLength( bytes ) > 0 ) );

            if( comparing )
                show( qvStoreTryDecodeFromBuffer( bytes ) );

            qvBufferRelease( bytes );
        },
        {} };
#ifdef BENCH_MSGPACK
    auto unpack   = []( const char *data, size_t size ) { return msgpack::unpack( data, size ).get().as< Tree >(); };
    reading.peers = {
        { "msgpack-cxx into a map, 8 bits",
          [document, unpack] { show( unpack( document->packed.data(), document->packed.size() ) ); } } };
    writing.peers = {
        { "msgpack-cxx, 8 bits", [document, unpack]
          {
              msgpack::sbuffer bytes;
              msgpack::pack( bytes, document->tree );
              show( uint64_t( bytes.size() > 0 ) );

              if( comparing )
                  show( unpack( bytes.data(), bytes.size() ) );
          } } };
#endif
    add( reading );
    add( writing );
}

// Entries of one section by C text: the look-up copies nothing of ours, and a text of the peer's.
void addLookUp( const Document *document, const std::string &input )
{
    static Lines found;
    QV_STORE    *section = qvStoreStoreCstr( qvStoreStoreCstr( document->store, "group-3", -1 ), "section-4", -1 );

    for( auto &leaf : document->tree.at( "group-3" ).at( "section-4" ) )
        if( found.size() < 10 )
            found.push_back( leaf.first );

    Case getting{
        "document",
        "get by C text",
        input,
        0.8,
        [section]
        {
            for( const std::string &key : found )
            {
                QV_STRING *value = qvStoreValueCstr( section, key.c_str(), -1 );
                show( value );
                qvStringRelease( value );
            }
        },
        {} };
    Case setting{
        "document",
        "set an integer by C text",
        input,
        0.8,
        [section]
        {
            static QV_STORE *own = qvStoreCreateFrom( section );

            for( size_t i = 0; i < found.size(); i++ )
                qvStoreSetValueIntCstr( &own, found[i].c_str(), -1, static_cast< QV_INT >( i ) );

            QV_INT last = 0;
            qvStoreValueIntCstr( own, &last, found.back().c_str(), -1 );
            show( uint64_t( last ) );
        },
        {} };
#ifdef BENCH_GLIB
    getting.peers = {
        { "GKeyFile, 8 bits", [document]
          {
              for( const std::string &key : found )
              {
                  char *value = g_key_file_get_string( document->keyFile, "group-3.section-4", key.c_str(), nullptr );
                  show( std::string_view( value ) );
                  g_free( value );
              }
          } } };
    setting.peers = {
        { "GKeyFile, 8 bits", [document]
          {
              static GKeyFile *own = load( document->keyFileText );

              for( size_t i = 0; i < found.size(); i++ )
                  g_key_file_set_int64( own, "group-3.section-4", found[i].c_str(), static_cast< gint64 >( i ) );

              show( uint64_t( g_key_file_get_int64( own, "group-3.section-4", found.back().c_str(), nullptr ) ) );
          } } };
#endif
    add( getting );
    add( setting );
}
} // namespace

void printMemory( const std::string &side, size_t entries )
{
    const Document *document = makeDocument( entries );
    malloc_trim( 0 );
    const double before = residentMiB();

    if( side == "ours" )
        show( qvStoreTryDecodeFromTextBuffer( document->text ) );
#ifdef BENCH_GLIB
    else
        show( load( document->keyFileText ) );
#endif
    std::printf( "%f\n", residentMiB() - before );
}

void addDocumentCases()
{
    struct Targets
    {
        size_t entries;
        double read, readUnordered, write, readBinary, writeBinary;
    };

    for( const Targets &target :
         { Targets{ 1000, 0.25, 0.7, 0.12, 0.7, 1.0 }, Targets{ 100000, 0.4, 0.7, 0.5, 0.7, 0.5 },
           Targets{ 1000000, 0, 0, 0, 0, 0 } } )
    {
        const bool isLargest = target.entries == 1000000; // which is read and written to see growth

        if( isLargest && isQuick() )
            continue;

        const Document   *document = makeDocument( target.entries );
        const std::string input    = std::to_string( target.entries ) + " entries";
        addReading( document, input, target.read, target.readUnordered );
        addWriting( document, input, target.write );
        addBinary( document, input, target.readBinary, target.writeBinary );

        if( !isLargest )
            addMemory( target.entries, input );

        if( target.entries == 1000 )
            addLookUp( document, "10 of a section of 10 entries" );
    }
}
} // namespace bench
