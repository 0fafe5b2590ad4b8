#include "bench.h"

#include <filesystem>
#include <fstream>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_QT
#include <QFile>
#include <QTextStream>
#endif

// Files: read and written whole, and by lines.

namespace bench
{
namespace
{
// Lines of about 60 characters in all languages, a block of them again and again up to a size.
const std::string &fileOf( size_t size, const char *name )
{
    std::string *path = new std::string( temporaryFolder() + "/" + name ), block;

    if( std::filesystem::exists( *path ) )
        return *path;

    for( const Language &language : languages() )
        for( const std::string &text : language.utf8Strings )
            block += text + text + "\n";

    std::ofstream file( *path, std::ios::binary );

    for( ; size > block.size(); size -= block.size() )
        file << block;

    file << block.substr( 0, block.rfind( '\n', size ) );
    return *path;
}

void addLines()
{
    static const std::string &path = fileOf( 64 << 20, "lines" );
    static QV_STRING         *name = qvStringCreateFromCstr( path.c_str(), -1 );

    Case reading{
        "lines",
        "read decoded",
        "64 MiB",
        0.5,
        []
        {
            QV_LINE_SOURCE *source = qvFileOpenLineSource( name, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );

            while( QV_STRING *line = qvLineSourceRead( source ) )
            {
                show( line );
                qvStringRelease( line );
            }

            qvLineSourceRelease( source );
        },
        {} };
#ifdef BENCH_QT
    reading.peers = {
        { "QTextStream, 16 bits", []
          {
              QFile file( QString::fromStdString( path ) );
              file.open( QIODevice::ReadOnly );
              QTextStream stream( &file );
              stream.setCodec( "UTF-8" );
              QString line;

              while( stream.readLineInto( &line ) )
                  show( view( line ) );
          } } };
#endif
    add( reading );
}

void addWhole( size_t size, const char *input )
{
    const std::string path    = fileOf( size, input );
    const std::string target  = path + ".out";
    QV_STRING        *name    = qvStringCreateFromCstr( path.c_str(), -1 );
    QV_STRING        *outName = qvStringCreateFromCstr( target.c_str(), -1 );
    QV_BUFFER        *content = qvFileReadBuffer( name, -1 );

    const auto showTarget = [target]
    {
        if( !comparing )
            return;

        std::ifstream file( target, std::ios::binary );
        answer( std::string( std::istreambuf_iterator< char >( file ), {} ) );
    };

    Case reading{
        "file",
        "read whole",
        input,
        1.1,
        [name]
        {
            QV_BUFFER *bytes = qvFileReadBuffer( name, -1 );
            show( bytes );
            qvBufferRelease( bytes );
        },
        {} };
    Case writing{
        "file",
        "write whole",
        input,
        1.1,
        [outName, content, showTarget]
        {
            qvFileWriteBuffer( outName, content );
            showTarget();
        },
        {} };
#ifdef BENCH_GLIB
    reading.peers.push_back(
        { "GLib", [path]
          {
              char *bytes  = nullptr;
              gsize length = 0;
              g_file_get_contents( path.c_str(), &bytes, &length, nullptr );
              show( std::string_view( bytes, length ) );
              g_free( bytes );
          } } );
    writing.peers.push_back(
        { "GLib", [target, content, showTarget]
          {
              g_file_set_contents_full(
                  target.c_str(), reinterpret_cast< const char * >( qvBufferBacking( content ) ),
                  gssize( qvBufferLength( content ) ), G_FILE_SET_CONTENTS_NONE, 0666, nullptr );
              showTarget();
          } } );
#endif
#ifdef BENCH_QT
    reading.peers.push_back(
        { "QFile", [path]
          {
              QFile file( QString::fromStdString( path ) );
              file.open( QIODevice::ReadOnly );
              const QByteArray bytes = file.readAll();
              show( std::string_view( bytes.data(), size_t( bytes.size() ) ) );
          } } );
    writing.peers.push_back(
        { "QFile", [target, content, showTarget]
          {
              QFile file( QString::fromStdString( target ) );
              file.open( QIODevice::WriteOnly | QIODevice::Truncate );
              file.write( reinterpret_cast< const char * >( qvBufferBacking( content ) ), qvBufferLength( content ) );
              file.close();
              showTarget();
          } } );
#endif
    add( reading );
    add( writing );
}
} // namespace

void addFileCases()
{
    addLines();
    addWhole( 4 << 10, "4 KiB" );
    addWhole( 16 << 20, "16 MiB" );
}
} // namespace bench
