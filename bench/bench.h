/** @file
    The frame of the benchmarks: a case is the same work done by this library and by others. Every side shows its whole
    answer; before anything is timed the answers are compared. */

#ifndef BENCH_H
#define BENCH_H

#include <qv/qv.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#ifdef BENCH_QT
#include <QString>
#endif

namespace bench
{
using Work = std::function< void() >;

struct Peer
{
    std::string library; /**< Its name; what makes its work cheaper stands after a comma: "QString, 16 bits". */
    Work        work;
    bool        isLoose = false; /**< Knows a simpler rule: left out of a row in which its answer is another one. */
};

struct Case
{
    std::string         subject, operation, input;
    double              target; /**< The most that our time may be of the fastest peer's; 0 where there is no target. */
    Work                ours;
    std::vector< Peer > peers;
    Peer                bound   = {};    /**< What the machine needs for the part that nobody can leave out. */
    bool                isTimed = false; /**< Only what the work runs through `timed` counts. */
};

void add( Case added );

/** Bounds: so many locked additions, so many of them in pairs by two exported functions, so many calls of an exported
    function that reads one field, so many blocks of `size` bytes allocated and freed, and a copy of so many bytes into
    fresh memory. */
Peer lockedAdditions( size_t count );
Peer retainsAndReleases( size_t count );
Peer exportedCalls( size_t count );
Peer allocations( size_t count, size_t size );
Peer memoryCopy( size_t size );

/** The part of the work that counts; or the seconds that another process has taken for it. */
void timed( const std::function< void() > &part );
void timedElsewhere( double seconds );

/** To be called by work that looks at memory: the most that it has held, in MiB. */
void notePeak( double mebibytes );

/** True while answers are compared, false while work is timed. */
extern bool comparing;
void        answer( std::string_view utf8 );
std::string toUtf8( std::u32string_view text );
std::string toUtf8( std::u16string_view text );

/** Shows a part of the answer. While work is timed, that costs nothing but that the value has to be there.
    @{ */
inline void show( uint64_t number )
{
    asm volatile( "" : : "r"( number ) : "memory" );

    if( comparing )
        answer( std::to_string( number ) + "\n" );
}

inline void show( std::string_view bytes )
{
    asm volatile( "" : : "r"( bytes.data() ) : "memory" );

    if( comparing )
        answer( bytes );
}

inline void show( std::u32string_view text )
{
    asm volatile( "" : : "r"( text.data() ) : "memory" );

    if( comparing )
        answer( toUtf8( text ) );
}

inline void show( std::u16string_view text )
{
    asm volatile( "" : : "r"( text.data() ) : "memory" );

    if( comparing )
        answer( toUtf8( text ) );
}

inline void show( QV_STRING *text )
{
    asm volatile( "" : : "r"( text ) : "memory" );

    if( comparing )
        answer( toUtf8( std::u32string_view( qvStringBacking( text ), size_t( qvStringLength( text ) ) ) ) );
}

inline void show( QV_BUFFER *bytes )
{
    asm volatile( "" : : "r"( bytes ) : "memory" );

    if( comparing )
        answer( { reinterpret_cast< const char * >( qvBufferBacking( bytes ) ), size_t( qvBufferLength( bytes ) ) } );
}
/** @} */

#ifdef BENCH_QT
inline std::u16string_view view( const QString &text )
{
    return { reinterpret_cast< const char16_t * >( text.utf16() ), size_t( text.size() ) };
}
#endif

/** Prints how many MiB a document holds that one of the sides has read: the work of a process of its own. */
void printMemory( const std::string &side, size_t entries );

/** True for a run of a minute or two, which leaves out the largest inputs. */
bool isQuick();

/** A folder for the time of the run. */
const std::string &temporaryFolder();

/** Text in one kind of language, the same for everybody. */
struct Language
{
    const char                   *name;
    std::u32string                text; // of 32 KiB in UTF-8, about
    std::string                   utf8;
    std::u16string                utf16;
    std::vector< std::u32string > strings; // of 24 characters
    std::vector< std::string >    utf8Strings;
    std::vector< std::u16string > utf16Strings;

    bool isEnglish() const;
};

const std::vector< Language > &languages();

std::u16string toUtf16( std::u32string_view text );

/** A new String of code points, owned by the caller. */
inline QV_STRING *string( std::u32string_view text )
{
    return qvStringCreateFromCharsCopy( text.data(), static_cast< QV_INT >( text.size() ) );
}

/** A new Buffer of bytes, owned by the caller. */
inline QV_BUFFER *buffer( std::string_view bytes )
{
    return qvBufferCreateFromBytesCopy(
        reinterpret_cast< const uint8_t * >( bytes.data() ), static_cast< QV_INT >( bytes.size() ) );
}

/** Keys of 16 characters, all different, in random order. */
std::vector< std::string > keys( size_t count );

void addObjectCases();
void addStringCases();
void addTextCases();
void addUtfCases();
void addCharsetCases();
void addDictCases();
void addContainerCases();
void addOrderCases();
void addNormalizeCases();
void addNumberCases();
void addDocumentCases();
void addFileCases();
void addConcurrencyCases();
void addTimerCases();
void addProcessCases();
void addConvertCases();
} // namespace bench

#endif
