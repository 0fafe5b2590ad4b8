#!/usr/bin/env python3
"""The listings of the manual, which stand in its chapters and nowhere else: takes them out to be compiled, runs them, and
compares what they print with what the chapter says.

    listings.py extract FOLDER                  writes listings.c, listings.cpp and the modules among the files
    listings.py run PROGRAM TOOLS MODULES       runs all listings and shell sessions
    listings.py installed PREFIX                runs the sessions that need an installation

In a chapter, a block of `c` or `cpp` is a listing. One with a main() is a program. Of any other, definitions at its start
stand outside functions, and the rest is run between the start and the stop of the library. The block of `text` right after
it is what it prints; without one it prints nothing. A block of `console` is a session of a shell: commands after `$ `,
with what they print. In what is printed, a line of `...` stands for any lines, and `...` in a line for any characters.

A comment before a block changes that:

    <!-- file: NAME -->             the block is a file in the folder where the chapter's listings run
    <!-- args: WORD... -->          the arguments of a program
    <!-- input: NAME -->            a file is the standard input
    <!-- status: N, errors -->      it exits with N, which is negative for a signal; standard error is compared too
    <!-- leaks -->                  objects may be left
    <!-- installed -->              the session needs the installed library

Listings leave no object behind, which is checked after each."""

import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

MANUAL = pathlib.Path(__file__).resolve().parent
BLOCK = re.compile(r"^(?:<!-- (?P<notes>[^\n]*?) -->\n)?```(?P<language>\w*)\n(?P<text>.*?)^```$", re.M | re.S)
DEFINITION = re.compile(r"(static |struct |enum |typedef |namespace |template|constexpr |#define |class |QV_\w*FAMILY)")


class Block:
    def __init__(self, chapter, match, line):
        self.chapter, self.line, self.language, self.text = chapter, line, match["language"], match["text"]
        self.notes = {}
        for note in (match["notes"] or "").split(", "):
            key, _, value = note.partition(":")
            self.notes[key.strip()] = value.strip()
        self.output, self.number = "", None

    @property
    def is_listing(self):
        return self.language in ("c", "cpp") and "file" not in self.notes

    @property
    def place(self):
        return f"{self.chapter.name}:{self.line}"


def chapters():
    """The blocks of each chapter, with what listings print and their numbers."""
    number = 0
    for path in sorted(MANUAL.glob("*.md")):
        content, blocks, end = path.read_text(encoding="utf-8"), [], -1
        for match in BLOCK.finditer(content):
            block = Block(path, match, content.count("\n", 0, match.start("text")) + 1)
            follows = blocks and not content[end : match.start()].strip()
            end = match.end()
            if block.language == "text" and not block.notes.get("file") and follows and blocks[-1].is_listing:
                blocks[-1].output = block.text
                continue
            if block.is_listing:
                number += 1
                block.number = number
            blocks.append(block)
        yield path, blocks


def split(block):
    """The includes, the definitions and the statements of a listing, the last two with the line that they begin at."""
    lines = block.text.split("\n")
    includes = [line for line in lines if line.startswith("#include")]
    lines = ["" if line.startswith("#include") else line for line in lines]
    if re.search(r"^int main\(", block.text, re.M):
        return includes, lines, []
    at = end = 0
    while at < len(lines):
        if lines[at] and not re.match(r"(/\*.*\*/|//.*)$", lines[at]):
            if not DEFINITION.match(lines[at]):
                break
            if not lines[at].endswith(";") and not lines[at].startswith("#"):
                while not lines[at].startswith("}"):
                    at += 1
            end = at + 1
        at += 1
    return includes, lines[:end], lines[end:]


def extract(folder):
    folder.mkdir(parents=True, exist_ok=True)
    includes = {"c": ["#include <qv/qv.h>"], "cpp": ["#include <qv/qv.hpp>"]}
    bodies, calls = {"c": [], "cpp": []}, []
    for _, blocks in chapters():
        for block in blocks:
            if not block.is_listing:
                continue
            language, name = block.language, f"listing{block.number}"
            more, definitions, statements = split(block)
            includes[language] += [line for line in more if line not in includes[language]]
            place = lambda line: f'#line {line} "{block.chapter}"'
            body = [place(block.line)] + definitions
            if statements:
                body += [f"int {name}( int argc, char **argv )", "{", "(void)argc;", "(void)argv;"]
                body += [place(block.line + len(definitions))] + statements + ["return 0;", "}"]
            if language == "cpp":
                body = [f"namespace in_{name}", "{"] + body + ["}", f"int {name}( int argc, char **argv )", "{"]
                takes = "argc, argv" if statements or "argc" in block.text else ""
                body += ["(void)argc; (void)argv;", f"return in_{name}::{name}( {takes} );", "}"]
            elif not statements and "argc" not in block.text:
                body += [f"int run_{name}( int argc, char **argv ) {{ (void)argc; (void)argv; return {name}(); }}"]
            else:
                body += [f"int run_{name}( int argc, char **argv ) {{ return {name}( argc, argv ); }}"]
            bodies[language] += [f"#define main {name}"] + body + ["#undef main"]
            call = f'{"run_" if language == "c" else ""}{name}'
            linkage = 'extern "C" ' if language == "c" else ""
            declared = f"{linkage}int {call}( int, char ** );"
            leaks = "true" if "leaks" in block.notes else "false"
            calls.append((declared, f"{{ {call}, {'true' if statements else 'false'}, {leaks} }},"))

    includes["cpp"] += ["#include <cstdio>", "#include <cstdlib>"]
    main = ["struct Listing { int ( *run )( int, char ** ); bool inRun, leaks; };"] + [call[0] for call in calls]
    main += ["static const Listing LISTINGS[] = {"] + [call[1] for call in calls] + ["};"]
    main += [RUN]
    for language in includes:
        pragma = ['#pragma GCC diagnostic ignored "-Wmissing-prototypes"'] if language == "c" else []
        pragma += ['#pragma GCC diagnostic ignored "-Wmissing-declarations"']
        text = "\n".join(pragma + includes[language] + bodies[language] + (main if language == "cpp" else [])) + "\n"
        folder.joinpath(f"listings.{language}").write_text(text, encoding="utf-8")
    for _, blocks in chapters():
        for block in blocks:
            if block.notes.get("file", "").endswith((".c", ".cpp")):
                (folder / block.notes["file"]).write_text(block.text, encoding="utf-8")


# What runs a listing by its number, and then says which objects are left: in a run of its own for a program, which has
# stopped the library itself.
RUN = """
int main( int argc, char **argv )
{
    const Listing &listing = LISTINGS[std::atoi( argv[1] ) - 1];
    int            status  = listing.inRun ? 0 : listing.run( argc - 1, argv + 1 );
    qv::Runtime    run( "manual", "Listings of the manual", "1.0", QV_RUNTIME_FLAG_MINIMAL );

    if( listing.inRun )
        status = listing.run( argc - 1, argv + 1 );

    std::fflush( stdout );
    for( const qv::Leak &leak : run.stop() )
        if( !listing.leaks )
            std::fprintf( stderr, "%d of %s are left\\n", int( leak.objects ), leak.sort ), status = 97;

    return status;
}
"""


def matches(expected, printed):
    """True if what was printed is what the chapter says."""
    pattern = ""
    for line in expected.splitlines(keepends=True):
        if line.strip() == "...":
            pattern += r"(?:.*\n)*?"
        else:
            pattern += r"[^\n]*?".join(re.escape(part) for part in line.split("..."))
    return re.fullmatch(pattern, printed) is not None


def run(block, command, folder, environment, **more):
    if "leaks" in block.notes:
        environment = dict(environment, ASAN_OPTIONS="detect_leaks=0")
    return subprocess.run(
        command, cwd=folder, env=environment, text=True, encoding="utf-8", errors="backslashreplace", stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT if "errors" in block.notes else None, timeout=120, **more)


def check(block, expected, done):
    status = int(block.notes.get("status", 0))
    if done.returncode == status and matches(expected, done.stdout):
        return True
    print(f"{block.place}: status {done.returncode}, printed\n{done.stdout}\nand not\n{expected}")
    return False


def commands(text):
    """The commands of a session, each with what it prints."""
    found = []
    for line in text.splitlines(keepends=True):
        if line.startswith("$ "):
            found.append([line[2:], ""])
        elif found[-1][0].endswith("\\\n"):
            found[-1][0] += line
        else:
            found[-1][1] += line
    return found


def run_all(program, environment, installed):
    count, good = 0, True
    for path, blocks in chapters():
        if installed and not any("installed" in block.notes for block in blocks):
            continue
        with tempfile.TemporaryDirectory() as scratch:
            environment["XZ_MORVANE_DATA_PATH"] = f"{scratch}/.data"
            for block in blocks:
                if "file" in block.notes:
                    file = pathlib.Path(scratch, block.notes["file"])
                    file.parent.mkdir(parents=True, exist_ok=True)
                    file.write_text(block.text, encoding="utf-8")
                elif block.is_listing and not installed:
                    source = pathlib.Path(scratch, block.notes["input"]).open() if "input" in block.notes else subprocess.DEVNULL
                    words = [program, str(block.number)] + block.notes.get("args", "").split()
                    good &= check(block, block.output, run(block, words, scratch, environment, stdin=source))
                    count += 1
                elif block.language == "console" and ("installed" in block.notes) == installed:
                    for command, expected in commands(block.text):
                        good &= check(block, expected, run(block, ["sh", "-c", command], scratch, environment))
                        count += 1
    print(f"{count} listings and commands ran")
    return good and count > 0


def main():
    what, *arguments = sys.argv[1:]
    environment = dict(os.environ, TZ="UTC", LC_ALL="C.UTF-8")
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if what == "extract":
        extract(pathlib.Path(arguments[0]))
    elif what == "run":
        program, tools, modules = (os.path.abspath(path) for path in arguments)
        environment["PATH"] = f"{pathlib.Path(tools).parent}:{environment['PATH']}"
        environment["XZ_MORVANE_BIN_PATH"] = modules
        sys.exit(0 if run_all(program, environment, False) else 1)
    elif what == "installed":
        environment["PATH"] = f"{arguments[0]}/bin:{environment['PATH']}"
        environment["CMAKE_PREFIX_PATH"] = arguments[0]
        sys.exit(0 if run_all(None, environment, True) else 1)
    else:
        sys.exit(__doc__)


main()
