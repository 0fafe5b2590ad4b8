#ifndef QV_UNICODE_NORMALIZER_STAGES_PRIVATE_H
#define QV_UNICODE_NORMALIZER_STAGES_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_tables_private.h"

/* The normalizer and its stages. One array holds the text in three parts, one after the other:

   - from `first` to `readable` the characters that are finished;
   - from `readable` to `pending`, only in forms that compose, the current starter (a character of class 0) and the marks
     after it that have not composed with it;
   - from `pending` to `length` what is decomposed, but not yet in order: the last starter and what follows it.

   A character goes on to the next stage when a border moves; most characters never move themselves.

   step() takes a character through all stages. Most text takes shorter ways that leave the same state: pass() copies
   text that is in the form already, as far as check() has found; text that needs no ordering is composed or decomposed at
   once. */

struct QV_UNICODE_NORMALIZER : QV_OBJ
{
    QV_CHAR  highSurrogate; // one that waits for the low one, or 0
    QV_INT   normalForm;
    QV_CHAR *chars; // the array, or null
    QV_INT   capacity;
    QV_INT   first;
    QV_INT   readable;
    QV_INT   pending;
    QV_INT   length;
    QV_CHAR  starter;     // the current starter, chars[readable], or 0 if there is none
    QV_INT   lastCccv;    // the highest class since the starter; 255 without one, so that nothing joins
    QV_INT   pendingCccv; // class of the last character from `pending` on; 0 if there is none
    bool     unordered;   // the marks from `pending` on are not in order
    bool     isLent;      // the array is memory of somebody else's
};

namespace qv::normalizer
{
using namespace qv::unicode;

/** The number of characters that wait for the end of a run of marks. */
const QV_INT LIMIT = 4096;

/** The first Hangul syllable, the first consonant, vowel and, less one, trailing consonant, and their numbers. */
const QV_CHAR HANGUL_S = 0xAC00, HANGUL_L = 0x1100, HANGUL_V = 0x1161, HANGUL_T = 0x11A7;
const QV_CHAR L_COUNT = 19, V_COUNT = 21, T_COUNT = 28, S_COUNT = L_COUNT * V_COUNT * T_COUNT;

/** True for the forms that compose. */
inline bool composes( const QV_UNICODE_NORMALIZER *norm )
{
    return norm->normalForm <= QV_UNICODE_NORMAL_FORM_NFKC;
}

/** True for the forms that use all mappings, and not only the canonical ones. */
inline bool isCompatible( const QV_UNICODE_NORMALIZER *norm )
{
    return norm->normalForm & 1;
}

/* The array ------------------------------------------------------------------------------------------------------ */

/** Moves the text to the start of the array. */
void toFront( QV_UNICODE_NORMALIZER *norm );

/** Makes room for `count` more characters, if reserve() has found that there is too little. */
void enlarge( QV_UNICODE_NORMALIZER *norm, QV_INT count );

/** Frees the array. */
void freeArray( QV_UNICODE_NORMALIZER *norm );

/** Makes sure that there is room for `count` more characters. */
inline void reserve( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    if( norm->capacity - norm->length < count )
        enlarge( norm, count );
}

/** Checks the state after a change. */
inline void watch( const QV_UNICODE_NORMALIZER *norm )
{
    QV_ASSERT( norm->first >= 0 && norm->first <= norm->readable && norm->readable <= norm->pending );
    QV_ASSERT( norm->pending <= norm->length && norm->length <= norm->capacity );
    QV_ASSERT( composes( norm ) || norm->readable == norm->pending );
    QV_ASSERT( norm->starter == 0 || norm->chars[norm->readable] == norm->starter );
    QV_ASSERT( norm->highSurrogate == 0 || norm->highSurrogate - 0xD800 < 0x400 );
    QV_ASSERT( norm->lastCccv >= 0 && norm->lastCccv <= 255 && norm->pendingCccv >= 0 && norm->pendingCccv < 255 );
    QV_ASSERT( norm->length - norm->pending < LIMIT + LONGEST_DECOMPOSITION );
}

/* The stages ----------------------------------------------------------------------------------------------------- */

/** Stores the decomposition of a Hangul syllable. Returns its length, 2 or 3; three characters are stored always. */
inline QV_INT decomposeHangul( QV_CHAR ch, QV_CHAR *to )
{
    QV_CHAR syllable = ch - HANGUL_S;
    QV_CHAR trailing = syllable % T_COUNT;

    to[0] = HANGUL_L + syllable / ( V_COUNT * T_COUNT );
    to[1] = HANGUL_V + syllable % ( V_COUNT * T_COUNT ) / T_COUNT;
    to[2] = HANGUL_T + trailing;

    return trailing ? 3 : 2;
}

/** What a starter and a later character compose to, or 0. Hangul composes only if the two are adjacent. */
inline QV_CHAR composePair( QV_CHAR starter, QV_CHAR ch, bool adjacent )
{
    if( isSecond( ch ) )
        return qv::unicode::compose( starter, ch );

    if( !adjacent )
        return 0;

    if( starter - HANGUL_L < L_COUNT && ch - HANGUL_V < V_COUNT )
        return HANGUL_S + ( ( starter - HANGUL_L ) * V_COUNT + ( ch - HANGUL_V ) ) * T_COUNT;

    if( starter - HANGUL_S < S_COUNT && ( starter - HANGUL_S ) % T_COUNT == 0 && ch - HANGUL_T - 1 < T_COUNT - 1 )
        return starter + ( ch - HANGUL_T );

    return 0;
}

/** Brings the marks of a text into the order of their classes, run by run. */
void order( QV_CHAR *chars, QV_INT length );

/** Composes the pending characters up to `end`, and closes the gap that this leaves. */
void composeTo( QV_UNICODE_NORMALIZER *norm, QV_INT end );

/** Ends the stage of ordering for the characters up to `end`, which those that follow can no longer change. */
inline void moveOn( QV_UNICODE_NORMALIZER *norm, QV_INT end )
{
    if( norm->unordered )
        order( norm->chars + norm->pending, norm->length - norm->pending );

    norm->unordered = false;

    if( composes( norm ) )
        composeTo( norm, end );
    else
        norm->pending = norm->readable = end;
}

/** Writes a character that is no surrogate, through all stages. */
void step( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch );

/** Writes any value, through all stages. */
void writeChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch );

/* Shorter ways --------------------------------------------------------------------------------------------------- */

/** The part of a text that is in the form; check() tells nothing but the length if that is all of it. A starter is the
    index of a character of class 0 that stays as it is, or -1. */
struct Run
{
    QV_INT length;
    QV_INT starter;  // of the last starter
    QV_INT previous; // of the one before it
};

/** For each form, a limit below which no character changes or joins another one. */
const QV_CHAR SIMPLE[] = { 0x300, 0xA0, 0xC0, 0xA0 };

/** How far a text is in a normal form, as a quick check tells. */
Run check( const QV_CHAR *chs, QV_INT count, QV_INT form );

/** The most characters that writeInOrder() takes, and the room that it needs. */
const QV_INT FEW      = 64;
const QV_INT FEW_ROOM = ( FEW + 1 ) * LONGEST_DECOMPOSITION;

/** Writes the normal form of a whole text of 1 to FEW characters, if that takes no ordering. Returns its length, or -1 if
    only the stages can tell. */
QV_INT writeInOrder( const QV_CHAR *chs, QV_INT count, QV_INT form, QV_CHAR *to );

/** Writes a run that begins with a starter as it is, up to its last starter, which has to be written next. */
void pass( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, const Run &run );

/** Writes characters, by the shorter ways where there is one. */
void writeChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count );
} // namespace qv::normalizer

#endif
