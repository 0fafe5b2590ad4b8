#include "bench.h"

#include <map>
#include <sstream>
#include <variant>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_MSGPACK
#include <msgpack.hpp>
#endif

// Documents of so many entries, nested three deep: ten groups of groups, so that every entry is a.b.c=value.

namespace bench
{
namespace
{
#ifdef BENCH_MSGPACK
using Leaves = std::map< std::string, std::string >;
using Tree   = std::map< std::string, std::map< std::string, Leaves > >;
#endif

struct Document
{
    int        entries;
    QV_STORE  *store;
    QV_BUFFER *text, *binary;
#ifdef BENCH_GLIB
    GKeyFile   *keyFile;
    std::string keyFileText;
#endif
#ifdef BENCH_MSGPACK
    Tree        tree;
    std::string packed;
#endif
};

Document *makeDocument( int entries )
{
    Document                  *document = new Document;
    std::vector< std::string > names    = keys( static_cast< size_t >( entries ) );
    std::string                text, keyFileText;
    document->entries = entries;

    for( int group = 0; group < 10; group++ )
        for( int inner = 0; inner < 10; inner++ )
        {
            std::string outerName = "group-" + std::to_string( group ),
                        innerName = "section-" + std::to_string( inner );
            keyFileText += "[" + outerName + "." + innerName + "]\n";

            for( int i = 0; i < entries / 100; i++ )
            {
                const std::string &name =
                    names[static_cast< size_t >( ( group * 10 + inner ) * ( entries / 100 ) + i )];
                std::string value = "value of entry " + std::to_string( i );
                text += outerName + "." + innerName + "." + name + "=" + value + "\n";
                keyFileText += name + "=" + value + "\n";
#ifdef BENCH_MSGPACK
                document->tree[outerName][innerName][name] = value;
#endif
            }
        }

    QV_BUFFER *bytes = qvBufferCreateFromBytesCopy(
        reinterpret_cast< const uint8_t * >( text.data() ), static_cast< QV_INT >( text.size() ) );
    document->store  = qvStoreTryDecodeFromTextBuffer( bytes );
    document->text   = qvStoreEncodeToTextBuffer( document->store );
    document->binary = qvStoreEncodeToBuffer( document->store );
    qvBufferRelease( bytes );
#ifdef BENCH_GLIB
    document->keyFileText = keyFileText;
    document->keyFile     = g_key_file_new();
    g_key_file_load_from_data( document->keyFile, keyFileText.data(), keyFileText.size(), G_KEY_FILE_NONE, nullptr );
#endif
#ifdef BENCH_MSGPACK
    std::stringstream stream;
    msgpack::pack( stream, document->tree );
    document->packed = stream.str();
#endif
    return document;
}

// How many values a store holds, to compare the sides by.
uint64_t entriesOf( QV_STORE *store )
{
    QV_STORE *group   = qvStoreStoreCstr( store, "group-3", -1 );
    QV_STORE *section = qvStoreStoreCstr( group, "section-4", -1 );
    uint64_t  entries = static_cast< uint64_t >( qvStoreLength( section ) );
    qvStoreRelease( section );
    qvStoreRelease( group );

    return entries;
}
} // namespace

void addDocumentCases()
{
    for( int entries : { 1000, 100000 } )
    {
        Document   *document = makeDocument( entries );
        std::string input    = std::to_string( entries ) + " entries";

        add( "document", "read text", input, 0.35,
             [document]
             {
                 QV_STORE *store = qvStoreTryDecodeFromTextBuffer( document->text );
                 uint64_t  found = entriesOf( store );
                 qvStoreRelease( store );
                 return found;
             },
             {
#ifdef BENCH_GLIB
                 { "GKeyFile",
                   [document]
                   {
                       GKeyFile *file = g_key_file_new();
                       g_key_file_load_from_data(
                           file, document->keyFileText.data(), document->keyFileText.size(), G_KEY_FILE_NONE, nullptr );
                       gsize  found = 0;
                       char **all   = g_key_file_get_keys( file, "group-3.section-4", &found, nullptr );
                       g_strfreev( all );
                       g_key_file_free( file );
                       return static_cast< uint64_t >( found );
                   } },
#endif
             } );

        add( "document", "write text", input, 0.4,
             [document]
             {
                 QV_BUFFER *text = qvStoreEncodeToTextBuffer( document->store );
                 bool       full = qvBufferLength( text ) > document->entries * 10;
                 qvBufferRelease( text );
                 return uint64_t( full );
             },
             {
#ifdef BENCH_GLIB
                 { "GKeyFile",
                   [document]
                   {
                       gsize size = 0;
                       g_free( g_key_file_to_data( document->keyFile, &size, nullptr ) );
                       return uint64_t( size > static_cast< gsize >( document->entries ) * 10 );
                   } },
#endif
             } );

        add( "document", "read binary", input, 1.0,
             [document]
             {
                 QV_STORE *store = qvStoreTryDecodeFromBuffer( document->binary );
                 uint64_t  found = entriesOf( store );
                 qvStoreRelease( store );
                 return found;
             },
             {
#ifdef BENCH_MSGPACK
                 { "msgpack-cxx into a map",
                   [document]
                   {
                       msgpack::object_handle handle =
                           msgpack::unpack( document->packed.data(), document->packed.size() );
                       Tree tree = handle.get().as< Tree >();
                       return static_cast< uint64_t >( tree["group-3"]["section-4"].size() );
                   } },
#endif
             } );

        add( "document", "write binary", input, 1.5,
             [document]
             {
                 QV_BUFFER *bytes = qvStoreEncodeToBuffer( document->store );
                 bool       full  = qvBufferLength( bytes ) > document->entries * 10;
                 qvBufferRelease( bytes );
                 return uint64_t( full );
             },
             {
#ifdef BENCH_MSGPACK
                 { "msgpack-cxx",
                   [document]
                   {
                       msgpack::sbuffer buffer;
                       msgpack::pack( buffer, document->tree );
                       return uint64_t( buffer.size() > static_cast< size_t >( document->entries ) * 10 );
                   } },
#endif
             } );
    }
}
} // namespace bench
