/** @file
    The frame of the benchmarks: a case is the same work done by this library and by others. */

#ifndef BENCH_H
#define BENCH_H

#include <qv/qv.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench
{
/** Does the work once and gives a checksum of its result, which all sides must agree on. */
using Work = std::function< uint64_t() >;

struct Peer
{
    const char *library;
    Work        work;
};

/** Adds a case. `target` is the ratio that ours may have to the fastest peer, 0 for none. */
void add(
    const std::string &subject, const std::string &operation, const std::string &input, double target, Work ours,
    std::vector< Peer > peers );

/** The same where only a part of the work counts: the part that it runs through `timed`, or of which it tells how many
    seconds another process has taken for it. */
void addTimed(
    const std::string &subject, const std::string &operation, const std::string &input, double target, Work ours,
    std::vector< Peer > peers );
void timed( const std::function< void() > &part );
void timedElsewhere( double seconds );

/** To be called by work that looks at memory: the most that it has held, in MiB. */
void notePeak( double mebibytes );

/** A folder for the time of the run. */
const std::string &temporaryFolder();

/** Text in one kind of language, the same for everybody. */
struct Language
{
    const char                   *name;
    bool                          isEnglish;
    std::u32string                text; // of 32 KiB in UTF-8, about
    std::string                   utf8;
    std::u16string                utf16;
    std::vector< std::u32string > strings; // of 24 characters
    std::vector< std::string >    utf8Strings;
};

const std::vector< Language > &languages();

/** A new String of code points, owned by the caller. */
inline QV_STRING *string( const std::u32string &text )
{
    return qvStringCreateFromCharsCopy( text.data(), static_cast< QV_INT >( text.size() ) );
}

std::string toUtf8( const std::u32string &text );

/** Keys of 16 characters, all different, in random order. */
std::vector< std::string > keys( size_t count );

void addObjectCases();
void addStringCases();
void addTextCases();
void addUtfCases();
void addCharsetCases();
void addContainerCases();
void addNormalizeCases();
void addNumberCases();
void addDocumentCases();
void addLineCases();
void addConcurrencyCases();
void addProcessCases();
void addConvertCases();
} // namespace bench

#endif
