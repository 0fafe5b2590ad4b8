#!/usr/bin/env python3
"""Runs the generators of tables again and compares their output with what is committed.

MORVANE_DATA_DIR names the folder that holds the data: ucd-<version>/UnicodeData.txt and so on, windows_zones.tsv.
Without it there is nothing to compare with, and the exit code 77 tells that the check was skipped.
"""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path( __file__ ).resolve().parent.parent.parent
SOURCES = ROOT / "source" / "qv"
SKIPPED = 77


def unicode_version( tables ):
    return tables.split( b"\n", 1 )[0].split()[-1].rstrip( b"." ).decode()


def is_current( generator, tables, data ):
    """`data` gives the folder that a generator reads, from what is committed."""
    committed = ( SOURCES / tables ).read_bytes()
    generated = subprocess.run(
        [ sys.executable, str( ROOT / "generators" / generator ), str( data( committed ) ), "-" ],
        check = True, stdout = subprocess.PIPE ).stdout

    if generated != committed:
        print( f"{tables} is not what generators/{generator} writes" )

    return generated == committed


def main():
    data = os.environ.get( "MORVANE_DATA_DIR" )
    if not data:
        print( "MORVANE_DATA_DIR is not set" )
        return SKIPPED

    folder = pathlib.Path( data )
    current = [
        is_current(
            "unicode_tables.py", "unicode/qv_unicode_tables.cpp",
            lambda committed: folder / f"ucd-{unicode_version( committed )}" ),
        is_current( "timezone_tables.py", "base/qv_timezone_tables.cpp", lambda committed: folder ),
    ]

    return 0 if all( current ) else 1


sys.exit( main() )
