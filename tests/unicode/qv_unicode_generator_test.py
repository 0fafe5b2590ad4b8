#!/usr/bin/env python3
"""Runs the generators of the Unicode tables again and compares their output with what is committed.

MORVANE_DATA_DIR names the folder that holds the data, as ucd-<version>/UnicodeData.txt and so on. Without it there is
nothing to compare with, and the exit code 77 tells that the check was skipped.
"""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path( __file__ ).resolve().parent.parent.parent
TABLES = ROOT / "source" / "qv" / "unicode" / "qv_unicode_tables.cpp"
SKIPPED = 77


def main():
    data = os.environ.get( "MORVANE_DATA_DIR" )
    if not data:
        print( "MORVANE_DATA_DIR is not set" )
        return SKIPPED

    committed = TABLES.read_bytes()
    version = committed.split( b"\n", 1 )[0].split()[-1].rstrip( b"." ).decode()
    generator = ROOT / "generators" / "unicode_tables.py"
    folder = pathlib.Path( data ) / f"ucd-{version}"
    generated = subprocess.run(
        [ sys.executable, str( generator ), str( folder ), "-" ], check = True, stdout = subprocess.PIPE ).stdout

    if generated != committed:
        print( f"{TABLES} is not what {generator} writes" )
        return 1

    return 0


sys.exit( main() )
