// Counts the words of files in any charset, the most frequent first. wordcount.c is the same program in C.
#include <qv/qv.hpp>

int main( int argc, char **argv )
{
    qv::Runtime run( "wordcount", "Word counter", "1.0", QV_RUNTIME_FLAG_MINIMAL );
    {
        qv::String  charset = "utf-8", configuration;
        QV_INT      top     = 10;
        qv::Options options( "wordcount [OPTION...] [FILE...]", "Counts words, the most frequent first." );
        options.add( U'e', "encoding=CHARSET", charset, "the charset of the files" );
        options.add( U'n', "top=COUNT", top, "how many words to show; -1 for all" );
        options.addFile( U'c', "config=FILE", configuration, "a document with encoding and top instead" );
        if( auto status = options.main( argc, argv ) )
            return *status;
        auto config   = configuration.empty() ? qv::Store() : qv::readStore( configuration );
        auto encoding = qv::charsetNamed( ( config ? config->get( "encoding" ) : std::nullopt ).value_or( charset ) );
        if( auto error = qv::firstError( config, encoding ) )
            return qv::print( "%s\n%s", error->text(), options.usage() ), 2;

        qv::Dict< qv::String, QV_INT > counts;
        for( auto files = options.words(); qv::String file : files.empty() ? files.append( "/dev/stdin" ) : files )
        {
            qv::Lines lines = qv::lines( file, *encoding );
            for( const qv::String &line : lines )
                for( std::u32string_view word : line.words() )
                    counts.update( word, []( auto count ) { return count.value_or( 0 ) + 1; } );
            if( auto error = lines.error() )
                return qv::print( "%s\n", error->text() ), 1;
        }

        std::vector< std::pair< qv::String, QV_INT > > sorted( counts.begin(), counts.end() );
        std::ranges::stable_sort( sorted, std::greater(), []( auto &entry ) { return entry.second; } );
        sorted.resize( std::min( sorted.size(), size_t( config->get< QV_INT >( "top" ).value_or( top ) ) ) );
        for( const auto &[word, count] : sorted )
            qv::print( "%7i %s\n", count, word );
    }
    for( const qv::Leak &leak : run.stop() )
        std::printf( "%d of %s are left\n", static_cast< int >( leak.objects ), leak.sort );
}
