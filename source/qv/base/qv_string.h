/** @file
    String: text, a sequence of code points of 32 bits each.

        QV_STRING *qvs = qvStringCreateFromCstr( "port", -1 );
        qvStringAppendFormatCstr( &qvs, "=%i", -1, (QV_INT)8080 );
        qvStringPrependChar( &qvs, U'a' );                      // aport=8080
        QV_INT at = qvStringFindChar( qvs, 0, U'=' );           // 5
        qvStringDelLeading( &qvs, at + 1 );                     // 8080
        qvStringRelease( qvs );

    Value and copy. A String that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the String is shared, replaces it by a private copy first. So retaining is copying.

    Ranges. Indexes and counts are in characters and count from 0. Leading is the first `count` characters, Trailing
    the last, Inner the `count` from `offset`, Outer everything but those. -1 as a result means not found, -1 as a
    limit none.

    Texts. A Cstr is UTF-8 with a length in bytes, a Wcstr wide text with a length in units, Chars an array of QV_CHAR
    with its length; -1 as the length of a Cstr or Wcstr means that it ends at its terminator. What cannot be decoded
    becomes U+FFFD. Characters of 0x110000 and above end the process.

    Costs. Adding and deleting at either end cost what is added or deleted: the text moves as a whole when the memory at
    that end is used up, each time by a constant part of its length, so that this is little in the long run, whichever
    ends take turns. Insertion inside moves the shorter side, or the whole text; deletion inside what follows. A
    mutator copies a String that is shared. Reading costs what it reads.

    Memory. A block of its own has 32 free places at each end, which a String of decoded text, of an array or of a part
    from splitting gets when it grows. An end with more than 64 free places gives memory back. That is what is declared;
    at most twice as much is allocated, and beside it up to 2 KB that came with a String which was created short.

    Threads. Any thread may read a String, also one that others hold. A variable that mutators work on belongs to one
    thread at a time.

    Null as a String or as `*dest`, and an index or range outside the text, end the process. */

#ifndef QV_STRING_H
#define QV_STRING_H

#include "qv/sys/qv_types.h"

QV_FAMILY( String, QV_STRING )

/* Creation ------------------------------------------------------------------------------------------------------- */

/** The empty String. Constant time: there is one, which everybody shares. */
QV_API QV_STRING *qvStringCreate( void );

/** @{ */
/** A new String with its own copy of `src` or of a part of it. */
QV_API QV_STRING *qvStringCreateFrom( QV_STRING *src );
QV_API QV_STRING *qvStringCreateFromLeading( QV_STRING *src, QV_INT count );
QV_API QV_STRING *qvStringCreateFromTrailing( QV_STRING *src, QV_INT count );
QV_API QV_STRING *qvStringCreateFromInner( QV_STRING *src, QV_INT offset, QV_INT count );
QV_API QV_STRING *qvStringCreateFromOuter( QV_STRING *src, QV_INT offset, QV_INT count );
/** @} */

/** A new String that takes over `chars`, a block from qvMemAlloc(). With a length of 0 the block stays the
    caller's. */
QV_API QV_STRING *qvStringCreateFromCharsUse( QV_CHAR *chars, QV_INT length );

/** A new String with a copy of the array. */
QV_API QV_STRING *qvStringCreateFromCharsCopy( const QV_CHAR *chars, QV_INT length );

/** @{ */
/** A new String of decoded text. `length` is in bytes, of a Wcstr in units; -1 means that the text ends at its
    terminator. */
QV_API QV_STRING *qvStringCreateFromAscii( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromCstr( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromUtf8( const char *text, QV_INT length );
QV_API QV_STRING *qvStringCreateFromWcstr( const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** A new String of formatted text; qv_format.h tells the language. A format without a conversion ends the process. */
QV_API QV_STRING *qvStringCreateFromFormat( QV_STRING *fmt, ... );
QV_API QV_STRING *qvStringCreateFromFormatArgList( QV_STRING *fmt, va_list *argList );
QV_API QV_STRING *qvStringCreateFromFormatCstr( const char *fmt, QV_INT fmtLength, ... );
QV_API QV_STRING *qvStringCreateFromFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API QV_STRING *qvStringCreateFromFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API QV_STRING *qvStringCreateFromFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/* Reading -------------------------------------------------------------------------------------------------------- */

/** How many characters there are. */
QV_API QV_INT qvStringLength( QV_STRING *qvs );

/** The first character, valid until the String is changed or released. May be null for an empty String. */
QV_API const QV_CHAR *qvStringBacking( QV_STRING *qvs );

/** The character at an index. */
QV_API QV_CHAR qvStringCharAt( QV_STRING *qvs, QV_INT idx );

/** True for a String without characters other than white space. */
QV_API QV_BOOL qvStringIsBlank( QV_STRING *qvs );

/* Inserting ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** Inserts before the character at `idx`, or at the end where `idx` is the length.

    What goes in: a String, which may be `*dest` itself, or with Leading, Trailing, Inner and Outer a part of it; an
    array of characters, which may lie in `*dest`; one character; decoded text; the text of an object by
    qvObjToString(); formatted text, whose arguments follow `fmtLength` or come from `*argList`. qv_format.h tells the
    language of formats. */
QV_API void qvStringInsert( QV_STRING **dest, QV_INT idx, QV_STRING *src );
QV_API void qvStringInsertLeading( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count );
QV_API void qvStringInsertTrailing( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count );
QV_API void qvStringInsertInner( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringInsertOuter( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringInsertChars( QV_STRING **dest, QV_INT idx, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvStringInsertChar( QV_STRING **dest, QV_INT idx, QV_CHAR ch );
QV_API void qvStringInsertCstr( QV_STRING **dest, QV_INT idx, const char *text, QV_INT length );
QV_API void qvStringInsertWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *text, QV_INT length );
QV_API void qvStringInsertObj( QV_STRING **dest, QV_INT idx, QV_OBJ *obj );
QV_API void qvStringInsertFormat( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, ... );
QV_API void qvStringInsertFormatArgList( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, va_list *argList );
QV_API void qvStringInsertFormatCstr( QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvStringInsertFormatCstrArgList(
    QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API void qvStringInsertFormatWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API void qvStringInsertFormatWcstrArgList(
    QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/** @{ */
/** Inserts at the start what qvStringInsert...() inserts at an index. */
QV_API void qvStringPrepend( QV_STRING **dest, QV_STRING *src );
QV_API void qvStringPrependLeading( QV_STRING **dest, QV_STRING *src, QV_INT count );
QV_API void qvStringPrependTrailing( QV_STRING **dest, QV_STRING *src, QV_INT count );
QV_API void qvStringPrependInner( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringPrependOuter( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringPrependChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvStringPrependChar( QV_STRING **dest, QV_CHAR ch );
QV_API void qvStringPrependCstr( QV_STRING **dest, const char *text, QV_INT length );
QV_API void qvStringPrependWcstr( QV_STRING **dest, const wchar_t *text, QV_INT length );
QV_API void qvStringPrependObj( QV_STRING **dest, QV_OBJ *obj );
QV_API void qvStringPrependFormat( QV_STRING **dest, QV_STRING *fmt, ... );
QV_API void qvStringPrependFormatArgList( QV_STRING **dest, QV_STRING *fmt, va_list *argList );
QV_API void qvStringPrependFormatCstr( QV_STRING **dest, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvStringPrependFormatCstrArgList( QV_STRING **dest, const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API void qvStringPrependFormatWcstr( QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API void qvStringPrependFormatWcstrArgList(
    QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/** @{ */
/** Inserts at the end what qvStringInsert...() inserts at an index. A character costs a few instructions as a rule. */
QV_API void qvStringAppend( QV_STRING **dest, QV_STRING *src );
QV_API void qvStringAppendLeading( QV_STRING **dest, QV_STRING *src, QV_INT count );
QV_API void qvStringAppendTrailing( QV_STRING **dest, QV_STRING *src, QV_INT count );
QV_API void qvStringAppendInner( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringAppendOuter( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count );
QV_API void qvStringAppendChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength );
QV_API void qvStringAppendChar( QV_STRING **dest, QV_CHAR ch );
QV_API void qvStringAppendCstr( QV_STRING **dest, const char *text, QV_INT length );
QV_API void qvStringAppendWcstr( QV_STRING **dest, const wchar_t *text, QV_INT length );
QV_API void qvStringAppendObj( QV_STRING **dest, QV_OBJ *obj );
QV_API void qvStringAppendFormat( QV_STRING **dest, QV_STRING *fmt, ... );
QV_API void qvStringAppendFormatArgList( QV_STRING **dest, QV_STRING *fmt, va_list *argList );
QV_API void qvStringAppendFormatCstr( QV_STRING **dest, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvStringAppendFormatCstrArgList( QV_STRING **dest, const char *fmt, QV_INT fmtLength, va_list *argList );
QV_API void qvStringAppendFormatWcstr( QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, ... );
QV_API void qvStringAppendFormatWcstrArgList(
    QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, va_list *argList );
/** @} */

/** @{ */
/** Appending without a call for each piece: Room makes `*dest` the caller's own and returns the place after its text,
    with room for `count` characters, above 0. The caller writes there, from the first on, then tells Written how many
    characters belong to the text now, 0 to `count`. In between nothing else is done with `*dest`, not even a release.

        QV_CHAR *to = qvStringAppendRoom( &line, size );
        for( QV_INT i = 0; i < size; i++ )
            to[i] = latin1[i];
        qvStringAppendWritten( &line, size );

    What was asked for and not written is given back as after a deletion, so that asking for much more than is
    written costs an allocation each time. Written looks at the characters once; one of 0x110000 or above ends the
    process, and so does a `count` for which there is no room. */
QV_API QV_CHAR *qvStringAppendRoom( QV_STRING **dest, QV_INT count );
QV_API void     qvStringAppendWritten( QV_STRING **dest, QV_INT count );
/** @} */

/** @{ */
/** Appends the text that qvFormatEncodeInt() and qvFormatEncodeReal() make of a number without width and flags: a sign
    if it is below 0, and digits of a base of 2 to 36, other bases ending the process; of a real `precision` places after
    a point, -1 meaning six. Nothing is allocated while the String has room. */
QV_API void qvStringAppendInt( QV_STRING **dest, QV_INT value, QV_INT base );
QV_API void qvStringAppendReal( QV_STRING **dest, QV_REAL value, QV_INT base, QV_INT precision );
/** @} */

/** @{ */
/** Appends the delimiter, unless `*dest` is empty, then `src`. Either may be `*dest` itself, and is read as it was. A
    Cstr or Wcstr form takes both as outside text, a Source form the source only, a Delimiter form the delimiter
    only; a CharDelimiter is one character. */
QV_API void qvStringDelimitedAppend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter );
QV_API void qvStringDelimitedAppendCstr(
    QV_STRING **dest, const char *src, QV_INT srcLength, const char *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedAppendCstrSource(
    QV_STRING **dest, const char *src, QV_INT srcLength, QV_STRING *delimiter );
QV_API void qvStringDelimitedAppendCstrDelimiter(
    QV_STRING **dest, QV_STRING *src, const char *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedAppendWcstr(
    QV_STRING **dest, const wchar_t *src, QV_INT srcLength, const wchar_t *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedAppendWcstrSource(
    QV_STRING **dest, const wchar_t *src, QV_INT srcLength, QV_STRING *delimiter );
QV_API void qvStringDelimitedAppendWcstrDelimiter(
    QV_STRING **dest, QV_STRING *src, const wchar_t *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedAppendCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter );
/** @} */

/** @{ */
/** Prepends the delimiter, unless `*dest` is empty, then `src`, so that `src` stands first. Otherwise as
    qvStringDelimitedAppend() and its forms. */
QV_API void qvStringDelimitedPrepend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter );
QV_API void qvStringDelimitedPrependCstr(
    QV_STRING **dest, const char *src, QV_INT srcLength, const char *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedPrependCstrSource(
    QV_STRING **dest, const char *src, QV_INT srcLength, QV_STRING *delimiter );
QV_API void qvStringDelimitedPrependCstrDelimiter(
    QV_STRING **dest, QV_STRING *src, const char *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedPrependWcstr(
    QV_STRING **dest, const wchar_t *src, QV_INT srcLength, const wchar_t *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedPrependWcstrSource(
    QV_STRING **dest, const wchar_t *src, QV_INT srcLength, QV_STRING *delimiter );
QV_API void qvStringDelimitedPrependWcstrDelimiter(
    QV_STRING **dest, QV_STRING *src, const wchar_t *delimiter, QV_INT delimiterLength );
QV_API void qvStringDelimitedPrependCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter );
/** @} */

/* Changing and deleting ------------------------------------------------------------------------------------------ */

/** Makes `*qvs` the empty String. */
QV_API void qvStringClear( QV_STRING **qvs );

/** Overwrites one character; an `idx` of -1 prepends it instead, one of the length appends it. */
QV_API void qvStringSetCharAt( QV_STRING **qvs, QV_INT idx, QV_CHAR ch );

/** @{ */
/** Deletes the range, or with Outer everything but the range. Deleting all leaves the empty String. */
QV_API void qvStringDelLeading( QV_STRING **qvs, QV_INT count );
QV_API void qvStringDelTrailing( QV_STRING **qvs, QV_INT count );
QV_API void qvStringDelInner( QV_STRING **qvs, QV_INT offset, QV_INT count );
QV_API void qvStringDelOuter( QV_STRING **qvs, QV_INT offset, QV_INT count );
/** @} */

/** @{ */
/** Deletes white space, that is characters of Unicode's property White_Space, from the ends. */
QV_API void qvStringTrimLeading( QV_STRING **qvs );
QV_API void qvStringTrimTrailing( QV_STRING **qvs );
QV_API void qvStringTrim( QV_STRING **qvs );
/** @} */

/** @{ */
/** Maps each character by Unicode's full mapping, which may give more than one; neither context nor locale counts.
    The result is always a String of its own, except that an empty one stays. In linear time. */
QV_API void qvStringToUpper( QV_STRING **qvs );
QV_API void qvStringToLower( QV_STRING **qvs );
QV_API void qvStringToCaseFold( QV_STRING **qvs );
/** @} */

/** @{ */
/** Replaces a text, a character, or UTF-8 text by another, from the left, without overlaps and `maxMatches` times at most
    (-1 sets no limit); returns how often. The replacement may be empty, and either text `*qvs` itself; an empty text to
    replace ends the process. Where there is none, `*qvs` stays the same object. In linear time. */
QV_API QV_INT qvStringReplace( QV_STRING **qvs, QV_STRING *sought, QV_STRING *replacement, QV_INT maxMatches );
QV_API QV_INT qvStringReplaceChar( QV_STRING **qvs, QV_CHAR sought, QV_CHAR replacement, QV_INT maxMatches );
QV_API QV_INT qvStringReplaceCstr(
    QV_STRING **qvs, const char *sought, QV_INT soughtLength, const char *replacement, QV_INT replacementLength,
    QV_INT maxMatches );
/** @} */

/** Combines pairs of surrogates and deletes single ones. */
QV_API void qvStringSanitize( QV_STRING **qvs );

/** @{ */
/** Brings the text into a normal form: composed, decomposed, and both with compatible characters replaced. A text that
    is normal already stays the same object. In linear time. */
QV_API void qvStringNormalizeNFC( QV_STRING **qvs );
QV_API void qvStringNormalizeNFD( QV_STRING **qvs );
QV_API void qvStringNormalizeNFKC( QV_STRING **qvs );
QV_API void qvStringNormalizeNFKD( QV_STRING **qvs );
/** @} */

/* Comparing ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** True for the same characters in the same order. qvStringCompare() orders by code points, a shorter text before a
    longer one that begins with it; neither case nor normal forms count. */
QV_API QV_BOOL qvStringEqualsChars( QV_STRING *qvs, const QV_CHAR *chs, QV_INT chsLen );
QV_API QV_BOOL qvStringEqualsChar( QV_STRING *qvs, QV_CHAR ch );
QV_API QV_BOOL qvStringEqualsCstr( QV_STRING *qvs, const char *text, QV_INT length );
QV_API QV_BOOL qvStringEqualsWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Compares as above what qvStringToCaseFold() makes of both sides, which stay as they are. */
QV_API QV_INT  qvStringCompareCaseFold( QV_STRING *a, QV_STRING *b );
QV_API QV_BOOL qvStringEqualsCaseFold( QV_STRING *a, QV_STRING *b );
QV_API QV_BOOL qvStringEqualsCharCaseFold( QV_STRING *qvs, QV_CHAR ch );
QV_API QV_BOOL qvStringEqualsCharsCaseFold( QV_STRING *qvs, const QV_CHAR *chs, QV_INT length );
QV_API QV_BOOL qvStringEqualsCaseFoldCstr( QV_STRING *qvs, const char *text, QV_INT length );
QV_API QV_BOOL qvStringEqualsCaseFoldWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** True if the String begins, or ends, with these characters. It begins and ends with an empty text. */
QV_API QV_BOOL qvStringBeginsWith( QV_STRING *qvs, QV_STRING *sub );
QV_API QV_BOOL qvStringBeginsWithChars( QV_STRING *qvs, const QV_CHAR *sub, QV_INT subLen );
QV_API QV_BOOL qvStringBeginsWithChar( QV_STRING *qvs, QV_CHAR ch );
QV_API QV_BOOL qvStringBeginsWithCstr( QV_STRING *qvs, const char *text, QV_INT length );
QV_API QV_BOOL qvStringBeginsWithWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length );
QV_API QV_BOOL qvStringEndsWith( QV_STRING *qvs, QV_STRING *sub );
QV_API QV_BOOL qvStringEndsWithChars( QV_STRING *qvs, const QV_CHAR *sub, QV_INT subLen );
QV_API QV_BOOL qvStringEndsWithChar( QV_STRING *qvs, QV_CHAR ch );
QV_API QV_BOOL qvStringEndsWithCstr( QV_STRING *qvs, const char *text, QV_INT length );
QV_API QV_BOOL qvStringEndsWithWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length );
/** @} */

/* Searching ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** The index of the first match that starts at `offset`, 0 to the length, or after it; -1 where there is none. An empty
    text to search for ends the process, here and from the right. In linear time, whatever the texts are. */
QV_API QV_INT qvStringFind( QV_STRING *qvs, QV_INT offset, QV_STRING *subString );
QV_API QV_INT qvStringFindChars( QV_STRING *qvs, QV_INT offset, const QV_CHAR *sub, QV_INT subLength );
QV_API QV_INT qvStringFindChar( QV_STRING *qvs, QV_INT offset, QV_CHAR ch );
QV_API QV_INT qvStringFindCstr( QV_STRING *qvs, QV_INT offset, const char *text, QV_INT length );
QV_API QV_INT qvStringFindWcstr( QV_STRING *qvs, QV_INT offset, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** The index of the last match that starts at `offset` or before it, or -1; of a single character, of the last one that
    stands before `offset`. An `offset` of -1 means the length. */
QV_API QV_INT qvStringFindFromRight( QV_STRING *qvs, QV_INT offset, QV_STRING *subString );
QV_API QV_INT qvStringFindCharsFromRight( QV_STRING *qvs, QV_INT offset, const QV_CHAR *sub, QV_INT subLength );
QV_API QV_INT qvStringFindCharFromRight( QV_STRING *qvs, QV_INT offset, QV_CHAR ch );
QV_API QV_INT qvStringFindFromRightCstr( QV_STRING *qvs, QV_INT offset, const char *text, QV_INT length );
QV_API QV_INT qvStringFindFromRightWcstr( QV_STRING *qvs, QV_INT offset, const wchar_t *text, QV_INT length );
/** @} */

/* Splitting ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** A new Vector of the parts between separators, each a new String. Adjacent separators and one at either end give
    empty parts. There are `maxParts` parts at most, above 0, the last with all the rest; -1 sets no limit. An empty
    separator ends the process. */
QV_API QV_VECTOR *qvStringSplit( QV_STRING *qvs, QV_STRING *sep, QV_INT maxParts );
QV_API QV_VECTOR *qvStringSplitChars( QV_STRING *qvs, const QV_CHAR *sepChars, QV_INT sepLength, QV_INT maxParts );
QV_API QV_VECTOR *qvStringSplitChar( QV_STRING *qvs, QV_CHAR sep, QV_INT maxParts );
QV_API QV_VECTOR *qvStringSplitCstr( QV_STRING *qvs, const char *text, QV_INT length, QV_INT maxParts );
QV_API QV_VECTOR *qvStringSplitWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length, QV_INT maxParts );
/** @} */

/** A new Vector of the parts between runs of white space, without empty parts and at most `maxParts` of them; the white
    space at the ends of `qvs` does not count. The last part allowed keeps its white space, and of the run before it all
    but the first character. Text of white space only gives one empty part. */
QV_API QV_VECTOR *qvStringSplitWhitespace( QV_STRING *qvs, QV_INT maxParts );

/* Reading values ------------------------------------------------------------------------------------------------- */

/** @{ */
/** Reads a value from `maxChars` characters at the most (-1 sets no limit) that start at `offset`. True if there was
    one; `value` and `consumed`, the number of characters read, may be null. qv_format.h tells what is accepted. */
QV_API QV_BOOL qvStringScanBool(
    QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed );
QV_API QV_BOOL qvStringScanInt(
    QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_INT base, QV_INT *value, QV_INT *consumed );
QV_API QV_BOOL qvStringScanReal(
    QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_INT base, QV_REAL *value, QV_INT *consumed );
/** @} */

/* Converting ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** A new block of outside text, which the caller gives to qvMemFree(); null where it would be empty. With `addNull` a
    terminator is added. `outLength`, which may be null, gets the number of bytes, or of units of a Wcstr, terminator
    included. qv_chars.h tells how characters that cannot be written are replaced. */
QV_API char    *qvStringConvertToAscii( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength );
QV_API char    *qvStringConvertToCstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength );
QV_API char    *qvStringConvertToUtf8( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength );
QV_API wchar_t *qvStringConvertToWcstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength );
/** @} */

#endif
