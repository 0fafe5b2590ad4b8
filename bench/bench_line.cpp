#include "bench.h"

#include <fstream>

#ifdef BENCH_QT
#include <QFile>
#include <QTextStream>
#endif

namespace bench
{
namespace
{
// A file of 64 MiB of lines of about 60 characters in all languages.
const std::string &fileOfLines()
{
    static const std::string name = []
    {
        std::string block;

        for( const Language &language : languages() )
            for( const std::string &text : language.utf8Strings )
                block += text + text + "\n";

        std::ofstream file( temporaryFolder() + "/lines", std::ios::binary );

        for( size_t size = 0; size < 64u << 20; size += block.size() )
            file << block;

        return temporaryFolder() + "/lines";
    }();

    return name;
}
} // namespace

void addLineCases()
{
    add( "lines", "read decoded", "64 MiB", 0.8,
         []
         {
             QV_STRING      *name   = qvStringCreateFromCstr( fileOfLines().c_str(), -1 );
             QV_LINE_SOURCE *source = qvFileOpenLineSource( name, QV_CHARSET_UTF_8, 0, QV_NLF_FLAG_LF );
             uint64_t        sum    = 0;

             while( QV_STRING *line = qvLineSourceRead( source ) )
             {
                 sum += static_cast< uint64_t >( qvStringLength( line ) ) + 1;
                 qvStringRelease( line );
             }

             qvLineSourceRelease( source );
             qvStringRelease( name );
             return sum;
         },
         {
#ifdef BENCH_QT
             { "QTextStream",
               []
               {
                   QFile file( QString::fromStdString( fileOfLines() ) );
                   file.open( QIODevice::ReadOnly );
                   QTextStream stream( &file );
                   stream.setCodec( "UTF-8" );
                   QString  line;
                   uint64_t sum = 0;

                   while( stream.readLineInto( &line ) )
                       sum += static_cast< uint64_t >( line.size() ) + 1;

                   return sum;
               } },
#endif
         } );
}
} // namespace bench
