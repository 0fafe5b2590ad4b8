/** @file
    How many cells text takes in the columns of a terminal, and text cut, filled and wrapped to a number of cells.

        qvStringDisplayFit( &name, 20, QV_DISPLAY_FLAG_ELLIPSIS );      // 20 cells: cut, or filled up with spaces
        qvStringDisplayFit( &count, 6, QV_DISPLAY_FLAG_RIGHT );
        qvPrintFormatCstr( "%s %s\n", -1, name, count );

    A character takes one cell; two if it is wide or fullwidth, as ideographs, Hangul, kana and emojis are; none if it is
    a mark that goes onto the character before it, or invisible: controls, joiners, ends of lines. Tabulators are
    controls: they take no cell here. Ambiguous characters, among them Greek and Cyrillic letters in old East Asian fonts,
    take one cell unless a flag says two. A code point without a character takes one, or two at a place that is kept for
    ideographs or emojis. The data is that of version 14 of Unicode, which is newer than that of the other properties,
    since terminals are.

    Characters that are shown as one picture count as one and are never torn apart: a letter with its marks, a syllable of
    Hangul, a flag of two letters, a digit as a keycap, an emoji with its skin colour and variation selector, emojis with
    joiners between them. Terminals differ in the last two; this counts as the newer ones do: two cells for the whole.

    Texts are values: a function that changes one takes the address of the caller's reference, which it may replace. Every
    function is linear in the length of the text. Any thread may call. Null as an object, a negative width and a character
    of 0x110000 or above end the process. */

#ifndef QV_UNICODE_WIDTH_H
#define QV_UNICODE_WIDTH_H

#include "qv/sys/qv_types.h"

#define QV_DISPLAY_FLAG_AMBIGUOUS_WIDE 1 /**< ambiguous characters take two cells */
#define QV_DISPLAY_FLAG_ELLIPSIS       2 /**< what is cut ends with U+2026, if that fits */
#define QV_DISPLAY_FLAG_RIGHT          4 /**< what is filled stands at the right */
#define QV_DISPLAY_FLAG_CENTER         8 /**< what is filled stands in the middle; of an odd rest one more at the right */

/** The cells of one character on its own: 0, 1 or 2. A skin colour on its own takes two. */
QV_API QV_INT qvUnicodeDisplayWidth( QV_CHAR ch, QV_INT flags );

/** The cells of a text in one line. */
QV_API QV_INT qvStringDisplayWidth( QV_STRING *qvs, QV_INT flags );

/** How many characters at the start of a text fit into `width` cells. They end before what is shown as one picture or
    after it; marks without cells are counted in. */
QV_API QV_INT qvStringDisplayPrefix( QV_STRING *qvs, QV_INT width, QV_INT flags );

/** Cuts a text to at most `width` cells. It may be a cell less where a wide character does not fit. */
QV_API void qvStringDisplayTruncate( QV_STRING **qvs, QV_INT width, QV_INT flags );

/** Fills a text up with spaces to `width` cells. A wider text stays as it is. */
QV_API void qvStringDisplayPad( QV_STRING **qvs, QV_INT width, QV_INT flags );

/** Cuts a text, or fills it up, to exactly `width` cells. */
QV_API void qvStringDisplayFit( QV_STRING **qvs, QV_INT width, QV_INT flags );

/** A new Vector of the lines, as Strings, that a text makes in a column of `width` cells. It is broken at white space,
    which goes with the break, and at its own ends of lines; no-break spaces do not break it. White space at the start
    of a line of the text stays. A word that is wider than the column has a line of its own and is not cut. The empty
    text makes one empty line. */
QV_API QV_VECTOR *qvStringDisplayWrap( QV_STRING *qvs, QV_INT width, QV_INT flags );

#endif
