"""Programs in C++ that must not compile: each row has a statement and what every compiler's message about it has to say.
Arguments: the folder of the headers, the compilers."""

import re
import subprocess
import sys

START = """#include "qv/qv.hpp"
using namespace qv::literals;
enum Bare { BARE };
enum class Named { ONE };
qv::String toString( Named );
struct Other {};
qv::String s; qv::Object o = 1; const char *cstr = ""; std::string str; int i; double r; bool b; Named named; Other other;
char32_t ch; std::optional< int > maybe;
"""

WRONG = [
    # What is lent or borrowed is not released, and what is a reference is not left without an owner.
    ("qvStringRelease( s.c() );", "deleted"),
    ("qvObjRelease( o.c() );", "deleted"),
    ("qvObjRelease( s.c() );", "deleted|no matching|cannot convert"),
    ("qv::String t( qvStringCreate() );", "no matching"),
    ("qv::String t = qvStringCreate();", "conversion"),
    ("s = qvStringCreate();", "no match|no viable|ambiguous"),
    ("qv::String t( nullptr );", "deleted"),
    ("QV_STRING *p = qv::String( cstr ).c();", "deleted|void"),
    ("std::u32string_view v = qv::String( cstr );", "deleted|conversion"),
    ("auto v = qv::String( cstr ).view();", "deleted|void"),
    ("QV_STRING **p = qv::String( cstr ).variable();", "rvalue|discards|no matching|not viable|passing"),
    ("QV_STRING *p = s.giveUp();", "lvalue|discards|no matching|not viable|passing"),
    ("qv::Vector< Other > v;", "an element is a value type"),
    ("qv::Vector< qv::String > v{ 1 };", "convert|no matching"),
    ("auto x = o.as< Other >();", "constraints|no match"),
    ("qv::Store t; auto x = t.get< char * >( s );", "a value is a text"),
    ('qv::Options options( s ); options.add( 0, s, ch, s );', "no option sets a variable of this type"),
    ("qv::Decoder in( qv::Buffer{} ); auto x = in.decode< Other >();", "no such value can be decoded"),
    # Formats. The message is the library's own sentence about the conversion.
    ('qv::print( "%i", r );', "%i takes an integer"),
    ('qv::print( "%i", b );', "%i takes an integer"),
    ('qv::print( "%i", cstr );', "%i takes an integer"),
    ('qv::print( "%s %i", i, i );', "%s takes a text"),
    ('qv::print( "%X", L\'x\' );', "%X takes an integer"),
    ('qv::print( "%.99A", r );', "%A takes an integer"),
    ('qv::print( "%r", i );', "%r takes a float or double"),
    ('qv::print( "%b", i );', "%b takes a bool"),
    ('qv::print( "%c", i );', "%c takes a char32_t or char"),
    ('qv::print( "%s", qv::Vector<>() );', "%s takes a text"),
    ('qv::print( "%s", maybe );', "%s takes a text"),
    ('qv::print( "%i", named );', "%i takes an integer"),
    ('qv::print( "%o", other );', "%o takes a value or a text"),
    ('qv::print( "%s", qvStringCreate() );', "%s takes a text"),
    ('qv::print( "%~s", s );', "~ takes over a value that is moved"),
    ('qv::print( "%~s", str );', "~ takes over a value that is moved"),
    ('qv::print( "%~s", s.c() );', "~ takes over a value that is moved"),
    ('qv::print( "%~i", i );', "~ is for %o and %s"),
    ('qv::print( "%lc", s );', "%lc takes a C string"),
    ('qv::print( "%lw", cstr );', "%lw takes a text of wchar_t"),
    ('qv::print( "%lC", str );', "%lC takes a C string and its length"),
    ('qv::print( "%lC", cstr, r );', "%lC and %lW take an integer as the length"),
    ('qv::print( "%*i", r, i );', r"\* takes an integer"),
    ('qv::print( "%.*r", r, r );', r"\* takes an integer"),
    ('qv::print( "%!1i", i );', "! takes a base of 2 to 36"),
    ('qv::print( "%!8s", s );', "! is for %i"),
    ('qv::print( "%d", i );', "there is no such conversion"),
    ('qv::print( "%lx", i );', "%l is followed by"),
    ('qv::print( "%i %i", i );', "fewer arguments"),
    ('qv::print( "%lC", cstr );', "fewer arguments"),
    ('qv::print( "%i", i, i );', "more arguments"),
    ('qv::print( "plain %%" );', "a conversion other than %%"),
    ('qv::print( "100 %" );', "a format ends within a conversion"),
    ('qv::print( "%5.1114112m" );', "%m takes the code of a character"),
    ('qv::print( "%99999999999999999999i", i );', "too large"),
    ('qv::print( cstr, i );', "invalid initialization|no matching"),
]
RIGHT = ["qvStringRelease( std::move( s ).giveUp() );", "s = cstr; s = str;", 'qv::print( "%s %i %~o", named, BARE, std::move( s ) );']


def complaints(compiler, statements):
    """What the compiler says of each statement: of all in one program, a line and a function each."""
    program = START + "".join(f'#line 1 "case_{n}"\nvoid test{n}() {{ {what} }}\n' for n, what in enumerate(statements))
    options = "-std=c++20 -Wall -Wextra -Wconversion -fno-exceptions -fno-rtti -fsyntax-only -fmax-errors=0".split()
    if "clang" in compiler:
        options[-1] = "-ferror-limit=0"
    command = [compiler, *options, "-I" + sys.argv[1], "-x", "c++", "-"]
    done = subprocess.run(command, input=program, capture_output=True, text=True)

    # A block is one error with what comes with it. It belongs to the statement that it names, else to the last one named.
    said, case = {}, -1
    for block in re.split(r"\n(?=[^\n]*(?:: In |error:))", done.stderr):
        named = re.search(r"case_(\d+):", block)
        case = int(named[1]) if named else case
        said[case] = said.get(case, "") + block + "\n"
    return {n: text for n, text in said.items() if "error:" in text}


problems = []
for compiler in sys.argv[2:]:
    said = complaints(compiler, [statement for statement, _ in WRONG])
    for n, (statement, message) in enumerate(WRONG):
        if not re.search(message, said.get(n, "")):
            problems.append(f"{compiler}: {statement} {'says: ' + said[n][:900] if n in said else 'compiles'}")
    problems += [f"{compiler}: {text}" for text in [said.get(-1), *complaints(compiler, RIGHT).values()] if text]

print(f"{len(WRONG)} wrong programs")
print("\n".join(problems))
sys.exit(1 if problems else 0)
