#include "bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

namespace bench
{
namespace
{
// Words of each kind; texts are made of them in random order. The Vietnamese ones are decomposed.
struct Vocabulary
{
    const char                   *name;
    std::vector< std::u32string > words;
};

const std::vector< Vocabulary > VOCABULARIES = {
    { "English",
      { U"the", U"server", U"reads", U"every", U"document", U"Before", U"it", U"answers", U"and", U"nothing", U"is",
        U"Lost", U"when", U"a", U"disk", U"fills", U"up", U"quickly" } },
    { "German/French",
      { U"größer", U"Straße", U"été", U"où", U"Übung", U"garçon", U"müssen", U"déjà", U"schön", U"naïve", U"Maß",
        U"façade", U"für", U"élève", U"Zürich", U"brûlé" } },
    { "Cyrillic/Greek",
      { U"сервер", U"Документ", U"память", U"файл", U"λόγος", U"Αθήνα", U"γραφή", U"строка", U"ключ", U"δέντρο",
        U"значение", U"πίνακας" } },
    { "Chinese", { U"服务器", U"读取", U"文件", U"之前", U"内存", U"字符串", U"数据", U"系统", U"值", U"没有丢失" } },
    { "Vietnamese",
      { U"tie\u0302\u0301ng", U"Vie\u0323\u0302t", U"ca\u0301ch", U"du\u031B\u0303", U"lie\u0323\u0302u",
        U"cho\u0302\u0303", U"no\u0301i", U"ma\u0301y", U"chu\u0309" } },
    { "Hangul", { U"서버", U"문서", U"읽기", U"메모리", U"문자열", U"값", U"없음", U"디스크", U"시스템" } },
    { "mixed",
      { U"port", U"größe", U"файл", U"服务", U"문서", U"a=1", U"λόγος", U"100%", U"naïve", U"ti\u0301nh", U"OK" } } };

struct Result
{
    std::string name;
    Work        work;
    bool        isTimed;
};

std::vector< Result > registered;
double                seconds; // of the parts that count, of the work that runs
double                peak;    // MiB, of the work that runs; 0 where nobody looks
std::string           folder;  // empty until somebody needs it

void enter( const std::string &prefix, double target, bool isTimed, const Work &ours, const std::vector< Peer > &peers )
{
    char targetText[16];
    std::snprintf( targetText, sizeof( targetText ), "%g", target );

    registered.push_back( { prefix + targetText + "|ours", ours, isTimed } );

    for( const Peer &peer : peers )
        registered.push_back( { prefix + targetText + "|" + peer.library, peer.work, isTimed } );
}

Language makeLanguage( const Vocabulary &vocabulary )
{
    Language     language;
    std::mt19937 random( 1 );
    language.name      = vocabulary.name;
    language.isEnglish = std::string( vocabulary.name ) == "English";

    auto grow = [&]( std::u32string &text )
    {
        text += vocabulary.words[random() % vocabulary.words.size()];
        text += U' ';
    };

    while( language.utf8.size() < 32 * 1024 )
    {
        std::u32string piece;
        grow( piece );
        language.text += piece;
        language.utf8 += toUtf8( piece );
    }

    language.utf16.assign( language.text.begin(), language.text.end() ); // all of them have one unit

    for( int i = 0; i < 256; i++ )
    {
        std::u32string text;

        while( text.size() < 24 )
            grow( text );

        text.resize( 24 );
        language.strings.push_back( text );
        language.utf8Strings.push_back( toUtf8( text ) );
    }

    return language;
}
} // namespace

std::string toUtf8( const std::u32string &text )
{
    QV_INT      size = qvCharsConvertToUtf8( nullptr, 0, text.data(), static_cast< QV_INT >( text.size() ), QV_FALSE );
    std::string utf8( static_cast< size_t >( size ), '\0' );
    qvCharsConvertToUtf8( utf8.data(), size, text.data(), static_cast< QV_INT >( text.size() ), QV_FALSE );

    return utf8;
}

const std::vector< Language > &languages()
{
    static const std::vector< Language > all = []
    {
        std::vector< Language > result;

        for( const Vocabulary &vocabulary : VOCABULARIES )
            result.push_back( makeLanguage( vocabulary ) );

        return result;
    }();

    return all;
}

std::vector< std::string > keys( size_t count )
{
    std::vector< std::string > result;
    std::mt19937               random( 2 );

    for( size_t i = 0; i < count; i++ )
    {
        char key[32];
        std::snprintf(
            key, sizeof( key ), "key%05x%08x", static_cast< unsigned >( i ), static_cast< unsigned >( random() ) );
        result.emplace_back( key );
    }

    std::shuffle( result.begin(), result.end(), random );
    return result;
}

void add(
    const std::string &subject, const std::string &operation, const std::string &input, double target, Work ours,
    std::vector< Peer > peers )
{
    enter( subject + "|" + operation + "|" + input + "|", target, false, ours, peers );
}

void addTimed(
    const std::string &subject, const std::string &operation, const std::string &input, double target, Work ours,
    std::vector< Peer > peers )
{
    enter( subject + "|" + operation + "|" + input + "|", target, true, ours, peers );
}

void notePeak( double mebibytes )
{
    peak = mebibytes;
}

const std::string &temporaryFolder()
{
    if( folder.empty() )
    {
        folder = std::filesystem::temp_directory_path() / "qv-bench-XXXXXX";

        if( !mkdtemp( folder.data() ) )
            std::exit( ( std::perror( folder.c_str() ), 1 ) );
    }

    return folder;
}

void timed( const std::function< void() > &part )
{
    auto start = std::chrono::steady_clock::now();
    part();
    seconds += std::chrono::duration< double >( std::chrono::steady_clock::now() - start ).count();
}

void timedElsewhere( double elapsed )
{
    seconds += elapsed;
}
} // namespace bench

int main( int argc, char **argv )
{
    using namespace bench;

    // The C++ library counts its references without locked instructions until a process has had a second thread. A
    // program of the product always has one.
    std::thread( [] {} ).join();

    qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );

    addObjectCases();
    addStringCases();
    addTextCases();
    addUtfCases();
    addCharsetCases();
    addContainerCases();
    addNormalizeCases();
    addNumberCases();
    addDocumentCases();
    addLineCases();
    addConcurrencyCases();
    addProcessCases();
    addConvertCases();

    // The first argument picks cases by a part of their names.
    std::string pick = argc > 1 && argv[1][0] != '-' ? argv[1] : "";
    bool        same = true;
    uint64_t    ours = 0;

    for( const Result &result : registered )
    {
        if( result.name.find( pick ) == std::string::npos )
            continue;

        uint64_t answer = result.work();

        if( result.name.ends_with( "|ours" ) )
            ours = answer;
        else if( answer != ours )
        {
            std::fprintf(
                stderr, "not the same answer: %s: %llu, ours %llu\n", result.name.c_str(),
                static_cast< unsigned long long >( answer ), static_cast< unsigned long long >( ours ) );
            same = false;
        }

        auto *entered = benchmark::RegisterBenchmark(
            result.name.c_str(),
            [result]( benchmark::State &state )
            {
                for( auto _ : state )
                {
                    seconds = 0;
                    peak    = 0;
                    benchmark::DoNotOptimize( result.work() );

                    if( result.isTimed )
                        state.SetIterationTime( seconds );
                }

                if( peak > 0 )
                    state.counters["peak"] = peak;
            } );

        if( result.isTimed )
            entered->UseManualTime();
        else
            entered->UseRealTime();
    }

    if( same )
    {
        benchmark::Initialize( &argc, argv );
        benchmark::RunSpecifiedBenchmarks();
        std::fflush( stdout );
    }

    if( !folder.empty() )
        std::filesystem::remove_all( folder );

    std::_Exit( same ? 0 : 1 ); // what the cases hold goes with the process
}
