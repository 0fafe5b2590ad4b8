#!/usr/bin/env python3
"""Writes source/qv/unicode/qv_unicode_tables.cpp from the files of the Unicode Character Database.

    generators/unicode_tables.py FOLDER [OUTPUT]

FOLDER holds UnicodeData.txt, SpecialCasing.txt, CaseFolding.txt, CompositionExclusions.txt and Scripts.txt of one
version. OUTPUT is the file to write, `-` for the standard output. The same data gives the same bytes every time.

Every property of a code point is found by two array reads: the first array has the number of the block that the
code point lies in, the second one the blocks, of which equal ones are kept once. Mappings are offsets into pools of
characters, so that the tables need no relocation. qv_unicode_tables_private.h reads them.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path( __file__ ).resolve().parent.parent
HEADERS = ROOT / "source" / "qv" / "unicode"
OUTPUT = HEADERS / "qv_unicode_tables.cpp"

CODE_POINTS = 0x110000
BLOCK_BITS = 7  # that of the header too
LONGEST_DECOMPOSITION = 18  # that of the header too
LOOK_CLOSER = 255  # that of the header too; no combining class is as high
LONGER_MAPPING = 0x8000  # that of the header too; no case mapping is as far away

# In the order of their values.
CATEGORIES = ( "Cn Lu Ll Lt Lm Lo Mn Mc Me Nd Nl No Pc Pd Ps Pe Pi Pf Po Sm Sc Sk So Zs Zl Zp Cc Cf Cs Co" ).split()


def fail( text ):
    sys.exit( f"{sys.argv[0]}: {text}" )


# Reading --------------------------------------------------------------------------------------------------------------


def rows( folder, name ):
    """The rows of a file as lists of fields, without comments."""
    for line in ( folder / name ).read_text( encoding = "utf-8" ).splitlines():
        line = line.split( "#" )[0].strip()
        if line:
            yield [ field.strip() for field in line.split( ";" ) ]


def version( folder ):
    first = ( folder / "Scripts.txt" ).read_text( encoding = "utf-8" ).splitlines()[0]
    match = re.fullmatch( r"# Scripts-(\d+\.\d+\.\d+)\.txt", first )
    return match[1] if match else fail( f"Scripts.txt tells no version: {first}" )


def chars( text ):
    return tuple( int( value, 16 ) for value in text.split() )


def points( text ):
    """The code points of `XXXX` or `XXXX..YYYY`."""
    first, _, last = text.partition( ".." )
    return range( int( first, 16 ), int( last or first, 16 ) + 1 )


def constants( header, prefix ):
    """The values of the macros with a prefix: the header keeps the list, the generator has none of its own."""
    text = ( HEADERS / header ).read_text( encoding = "utf-8" )
    return { name: int( value ) for name, value in re.findall( rf"^#define {prefix}(\w+) +(\d+)\b", text, re.M ) }


class Data:
    def __init__( self, folder ):
        self.category = {}
        self.combining = {}
        self.decimal = {}
        self.script = {}
        self.upper = {}
        self.lower = {}
        self.fold = {}
        self.decomposition = {}
        self.composition = {}

        types = constants( "qv_unicode_cdmt.h", "QV_UNICODE_CDMT_" )
        scripts = constants( "qv_unicode_properties.h", "QV_UNICODE_SCRIPT_" )
        first = None

        for fields in rows( folder, "UnicodeData.txt" ):
            ch = int( fields[0], 16 )

            if fields[1].endswith( ", First>" ):
                first = ch
                continue

            span = range( ch if first is None else first, ch + 1 )
            first = None

            for each in span:
                self.category[each] = CATEGORIES.index( fields[2] )
                if int( fields[3] ):
                    self.combining[each] = int( fields[3] )

            if fields[6]:
                self.decimal[ch] = int( fields[6] )
            if fields[12]:
                self.upper[ch] = chars( fields[12] )
            if fields[13]:
                self.lower[ch] = chars( fields[13] )
            if fields[5]:
                tag, mapping = re.fullmatch( r"(?:<(\w+)> )?([0-9A-F ]+)", fields[5] ).groups()
                self.decomposition[ch] = ( types[tag.upper() if tag else "CANONICAL"], chars( mapping ) )

        # The unconditional rows of the special mappings go before the simple ones.
        for fields in rows( folder, "SpecialCasing.txt" ):
            if not fields[4]:
                ch = int( fields[0], 16 )
                self.lower[ch] = chars( fields[1] )
                self.upper[ch] = chars( fields[3] )

        for fields in rows( folder, "CaseFolding.txt" ):
            if fields[1] in ( "C", "F" ):
                self.fold[int( fields[0], 16 )] = chars( fields[2] )

        for mappings in ( self.upper, self.lower, self.fold ):
            for ch in [ ch for ch, mapping in mappings.items() if mapping == ( ch, ) ]:
                del mappings[ch]

        for fields in rows( folder, "Scripts.txt" ):
            for ch in points( fields[0] ):
                self.script[ch] = scripts[fields[1].upper()]

        excluded = { int( fields[0], 16 ) for fields in rows( folder, "CompositionExclusions.txt" ) }

        for ch, ( kind, mapping ) in self.decomposition.items():
            if kind == types["CANONICAL"] and ch not in excluded and len( mapping ) == 2:
                if ch not in self.combining and mapping[0] not in self.combining:
                    if mapping in self.composition:
                        fail( f"two compositions of {mapping}" )
                    self.composition[mapping] = ch

        self.normal_forms( types["CANONICAL"] )

    def normal_forms( self, canonical ):
        """Decompositions in all steps, and what each character does in a text in a normal form."""

        def full( ch, compatible ):
            kind, mapping = self.decomposition.get( ch, ( 0, () ) )
            if not kind or ( kind != canonical and not compatible ):
                return ( ch, )
            return tuple( each for part in mapping for each in full( part, compatible ) )

        def normalize( ch, compatible ):
            text = list( full( ch, compatible ) )
            at = 1
            while at < len( text ):
                k = self.combining.get( text[at], 0 )
                if at and k and k < self.combining.get( text[at - 1], 0 ):
                    text[at - 1 : at + 1] = text[at], text[at - 1]
                    at -= 1
                else:
                    at += 1
            if self.combining.get( text[0], 0 ):
                return text
            result, last = text[:1], 0
            for each in text[1:]:
                k = self.combining.get( each, 0 )
                pair = ( result[0], each )
                # Enough for one character, whose decomposition composes to its first character or not at all.
                if pair in self.composition and ( last < k or len( result ) == 1 ):
                    result[0] = self.composition[pair]
                else:
                    result.append( each )
                    last = k or 255
            return result

        self.full = {}
        for compatible in ( False, True ):
            self.full[compatible] = {
                ch: mapping
                for ch in self.decomposition for mapping in [ full( ch, compatible ) ] if mapping != ( ch, )
            }

        if max( map( len, self.full[True].values() ) ) > LONGEST_DECOMPOSITION:
            fail( "a decomposition is longer than the header tells" )

        # What decomposes in another way than by its mapping: Hangul by rule, surrogates not alone.
        self.special = { *range( 0xAC00, 0xD7A4 ), *range( 0xD800, 0xE000 ) }

        # Characters that may change in a text in a form with composition have LOOK_CLOSER, others their class.
        joins = { pair[1] for pair in self.composition } | { *range( 0x1161, 0x1176 ), *range( 0x11A8, 0x11C3 ) }
        self.quick = {}

        for compatible in ( False, True ):
            quick = { ch: LOOK_CLOSER for ch in range( 0xD800, 0xE000 ) }
            for ch in { *self.decomposition, *self.combining, *joins }:
                first = full( ch, compatible )[0]
                stays = normalize( ch, compatible ) == [ ch ] and first not in joins
                if ch not in self.combining and first in self.combining:
                    stays = False
                quick[ch] = self.combining.get( ch, 0 ) if stays else LOOK_CLOSER
            self.quick[compatible] = quick

    def with_classes( self, mapping ):
        """A decomposition as the pool has it: its length, the place of its last starter and whether it begins with a
        starter and is in order, and the characters, each with its combining class in the 8 topmost bits."""
        classes = [ self.combining.get( ch, 0 ) for ch in mapping ]
        ordered = classes[0] == 0 and all( not b or a <= b for a, b in zip( classes, classes[1:] ) )
        starter = max( ( i for i, k in enumerate( classes ) if k == 0 ), default = 0 )
        return ( len( mapping ) | starter << 8 | ordered << 16, *( ch | k << 24 for ch, k in zip( mapping, classes ) ) )


# Writing --------------------------------------------------------------------------------------------------------------


class Writer:
    def __init__( self ):
        self.text = []

    def array( self, ctype, name, values, comment ):
        self.text.append( f"\n// {comment}\nconst {ctype} {name}[{len( values )}] = {{" )
        line = "   "
        for value in values:
            item = f" {value:#x}," if ctype == "QV_CHAR" and value > 9 else f" {value},"
            if len( line ) + len( item ) > 120:
                self.text.append( line )
                line = "   "
            line += item
        self.text.append( line )
        self.text.append( "};" )

    def table( self, ctype, name, values, comment ):
        """The two arrays of a property. `values` has the code points whose value is not 0. Returns the code points whose
        values are in the blocks."""
        size = 1 << BLOCK_BITS
        blocks = {}
        first = []
        points = []

        for start in range( 0, CODE_POINTS, size ):
            block = tuple( values.get( ch, 0 ) for ch in range( start, start + size ) )
            if block not in blocks:
                points.extend( range( start, start + size ) )
            first.append( blocks.setdefault( block, len( blocks ) ) )

        if len( blocks ) > 256:
            fail( f"{name}: {len( blocks )} blocks" )

        second = [ value for block in blocks for value in block ]
        if max( second ) >= ( 1 << 8 if ctype == "uint8_t" else 1 << 16 ):
            fail( f"{name}: {max( second )} is too much" )

        self.array( "uint8_t", f"{name}Blocks", first, f"{comment}: the block of a code point." )
        self.array( ctype, name, second, f"{comment}: {len( blocks )} blocks." )
        return points


def pool( mappings, encode ):
    """A pool in which each sequence stands once, and the place of each. Place 0 is that of no mapping."""
    content = [ 0 ]
    places = {}

    for mapping in sorted( set( mappings ) ):
        places[mapping] = len( content )
        content.extend( encode( mapping ) )

    return content, places


def write( data, version_text ):
    out = Writer()
    out.text.append(
        f"""\
// Tables of the Unicode Character Database {version_text}.
//
// This file is generated by generators/unicode_tables.py; changes go there.

#include "qv/unicode/qv_unicode_tables_private.h"

namespace qv::unicode
{{""" )

    out.table( "uint8_t", "category", data.category, "General category" )
    out.table( "uint8_t", "combining", data.combining, "Combining class" )
    out.table( "uint8_t", "decimal", { ch: value + 1 for ch, value in data.decimal.items() }, "Decimal digit, plus 1" )
    out.table( "uint8_t", "script", data.script, "Script" )

    # Case mappings have at most 3 characters: the place in the pool and, in the two topmost bits, the length. Where a
    # character maps to one, the distance is the same with 16 bits, so that nothing but the lowest 16 bits changes.
    cased = ( data.upper, data.lower, data.fold )
    content, places = pool( [ m for each in cased for m in each.values() ], lambda mapping: mapping )
    for name, mappings, comment in zip(
        ( "upper", "lower", "fold" ), cased, ( "Upper case", "Lower case", "Case fold" ) ):
        values = {}
        distances = {}
        for ch, mapping in mappings.items():
            if len( mapping ) > 3 or places[mapping] >= 1 << 14 or mapping == ( ch, ):
                fail( f"case mapping of {ch:X}" )
            values[ch] = len( mapping ) << 14 | places[mapping]
            distances[ch] = ( mapping[0] - ch ) & 0xFFFF if len( mapping ) == 1 else LONGER_MAPPING
            if len( mapping ) == 1 and ( distances[ch] == LONGER_MAPPING or mapping[0] >> 16 != ch >> 16 ):
                fail( f"distance of {ch:X}" )
        blocks = out.table( "uint16_t", name, values, f"{comment}: length in 2 bits, place in the pool" )
        if not distances.keys() <= set( blocks ):
            fail( f"{name}: characters share a block that have no common distances" )
        out.array(
            "uint16_t", f"{name}Distances", [ distances.get( ch, 0 ) for ch in blocks ],
            f"{comment}: the distance to the mapping, in the same blocks." )
    out.array( "QV_CHAR", "caseMappings", content, "Pool of the case mappings." )

    # In front of a decomposition stands its type, times 256, plus its length.
    content, places = pool( data.decomposition.values(), lambda each: ( each[0] << 8 | len( each[1] ), *each[1] ) )
    out.table(
        "uint16_t", "decomposition", { ch: places[each] for ch, each in data.decomposition.items() },
        "Decomposition: place in the pool" )
    out.array( "QV_CHAR", "decompositions", content, "Pool of the decompositions." )

    # The same in all steps. A character that does not decompose has its class instead of the place.
    content, places = pool( [ each for mappings in data.full.values() for each in mappings.values() ], data.with_classes )
    content += [ 0 ] * 3  # so that four characters can be read at once
    for compatible, name, comment in (
        ( False, "canonical", "Full canonical decomposition" ), ( True, "compatible", "Full compatible decomposition" ) ):
        values = { **data.combining, **{ ch: LOOK_CLOSER for ch in data.special } }
        values.update( { ch: places[each] + LOOK_CLOSER for ch, each in data.full[compatible].items() } )
        out.table( "uint16_t", name, values, f"{comment}: class, or place in the pool" )
    out.array( "uint32_t", "fullDecompositions", content, "Pool of the full decompositions." )
    out.table( "uint8_t", "nfc", data.quick[False], "Quick check of NFC: class, or a closer look" )
    out.table( "uint8_t", "nfkc", data.quick[True], "Quick check of NFKC: class, or a closer look" )

    # What vectors check of each form: a bit for each 32 characters that are all 0 to the tables above, below U+0800 one
    # for each character, and again one for each 32 from U+10000 to U+1FFFF; and for two blocks with marks the classes, or
    # a closer look.
    bits, marks = [], []
    for quick in (
        data.quick[False], data.quick[True],
        *( { **data.combining, **{ ch: LOOK_CLOSER for ch in ( *data.special, *data.full[compatible] ) } }
           for compatible in ( False, True ) ) ):
        for step, first, end in ( ( 32, 0, 0x10000 ), ( 1, 0, 0x800 ), ( 32, 0x10000, 0x20000 ) ):
            inert = [
                not any( quick.get( ch, 0 ) for ch in range( at, at + step ) ) for at in range( first, end, step ) ]
            bits.extend( sum( inert[at + k] << k for k in range( 8 ) ) for at in range( 0, len( inert ), 8 ) )
        marks.extend( quick.get( ch, 0 ) for ch in ( *range( 0x300, 0x380 ), *range( 0x580, 0x600 ) ) )
    out.array( "uint8_t", "inertBits", bits, "For each form bits of 32 characters and of single ones that just stay." )
    out.array( "uint8_t", "markClasses", marks, "For each form the classes from U+0300 and U+0580 on, or a closer look." )

    # Compositions: a row for each first character, a column for each second one; 0 where there is none.
    firsts = sorted( { pair[0] for pair in data.composition } )
    seconds = sorted( { pair[1] for pair in data.composition } )
    out.table(
        "uint16_t", "compositionFirst", { ch: i + 1 for i, ch in enumerate( firsts ) }, "Row of the compositions" )
    out.table(
        "uint8_t", "compositionSecond", { ch: i + 1 for i, ch in enumerate( seconds ) }, "Column of the compositions" )
    composites = sorted( data.composition.values() )
    numbers = { ch: i + 1 for i, ch in enumerate( composites ) }
    matrix = [ 0 ] * ( len( seconds ) + 1 )
    for first in firsts:
        matrix.append( 0 )
        matrix.extend( numbers.get( data.composition.get( ( first, second ) ), 0 ) for second in seconds )
    out.text.append( f"\nconst uint32_t compositionColumns = {len( seconds ) + 1};" )
    out.array( "uint16_t", "compositionCells", matrix, "Compositions by row and column: number of the composite." )
    out.array( "QV_CHAR", "composites", [ 0 ] + composites, "The composites." )

    out.text.append( "} // namespace qv::unicode\n" )
    return "\n".join( out.text )


def main():
    if len( sys.argv ) not in ( 2, 3 ):
        fail( "arguments: FOLDER [OUTPUT]" )

    folder = pathlib.Path( sys.argv[1] )
    text = write( Data( folder ), version( folder ) )

    if sys.argv[2:] == [ "-" ]:
        sys.stdout.write( text )
    else:
        ( pathlib.Path( sys.argv[2] ) if sys.argv[2:] else OUTPUT ).write_text( text, encoding = "utf-8" )


main()
