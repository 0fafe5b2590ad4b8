// The table of all tools.

#include "morvane_tool.h"

namespace morvane
{
namespace
{
const char CHARSET_TEXT_FROM[] = "the character set of the input";
const char CHARSET_TEXT_TO[]   = "the character set of the output";
const char REPLACE_TEXT[]      = "puts U+FFFD or a question mark in the place of what is invalid, and goes on";
const char IN_PLACE_TEXT[]     = "changes each of the files";
} // namespace

// clang-format off
const Tool TOOLS[] = {
    { "", "completion", "bash|zsh", "prints a script that completes the words of morvane", printCompletion,
      "The script is installed where the shells look for it.",
      {},
      { ". <(morvane completion bash)", "morvane completion zsh >~/.zfunc/_morvane" } },
    { "", "id", "", "prints a new identifier of 32 hexadecimal digits", makeIdentifier,
      "It is one that nobody else has: 128 random bits.",
      {},
      { "morvane id" } },
    { "", "info", "", "prints what is known about the product and the computer", tellInfo,
      "It is a document in text form.",
      {},
      { "morvane info >info.conf; morvane store get info.conf moduleVersions.qv" },
      HAS_WORDS },
    { "", "manual", "[TOOL]", "prints the manual of morvane or of a tool, for man", printManual,
      "",
      {},
      { "morvane manual store | man -l -" } },
    { "", "module", "TOOL ARGUMENT...", "tells about modules in XZ_MORVANE_BIN_PATH and runs them", nullptr,
      "A module is a shared object libmorvane-NAME.so in the folder that XZ_MORVANE_BIN_PATH names, else in "
      "the folder morvane beside the library, else in /opt/wexcraft/morvane/bin.",
      {},
      { "morvane module show greeter", "XZ_MORVANE_BIN_PATH=build morvane module run greeter Ada Grace" },
      HAS_TOOLS, 0 },
    { "", "random", "TOOL ARGUMENT...", "prints random bytes and integers", nullptr,
      "",
      {},
      { "morvane random bytes 16", "morvane random int 1 6" },
      HAS_TOOLS },
    { "", "store", "TOOL ARGUMENT...", "reads, changes and converts configuration documents", nullptr,
      "A document is a tree of entries. In its text form every line is one of them, a.b=value; lines without a separator "
      "or with something before it that is no address are skipped.\n\n"
      "set, delete and merge lock the file while they change it, so that what several of them do at once is kept. A lock "
      "is waited for up to a minute.",
      {},
      { "morvane store get server.conf network.port",
        "morvane store set server.conf network.port=9090 'banner=Hello, world'" },
      HAS_TOOLS },
    { "", "text", "TOOL ARGUMENT...", "converts, normalises and changes text", nullptr,
      "The tools read the file IN or the standard input and write the file OUT or the standard output, in constant "
      "memory, and pass on what there is before they wait for more. Both may be the same file.\n\n"
      "Character sets have the names of the IANA registry, in any case, and the numbers of code pages; morvane unicode "
      "list charsets lists the preferred ones. Letters compose with their marks for the sets that have one byte a "
      "character. Bytes that are no character of the one set, which half a pair of surrogates and forms of UTF-8 that "
      "are too long are not, and characters that the other lacks end the work: the offset of the byte in the input, "
      "counted from 0, is told where it is known, and OUT is as it was.\n\n"
      "A byte order mark before UTF-8, UTF-16 or UTF-32 is no text, unless UTF-8 is only changed; the forms with a "
      "fixed byte order, UTF-16LE and the like, take it for the character U+FEFF. UTF-16 and UTF-32 are written "
      "little-endian.",
      {},
      { "morvane text normalize --form nfc names.txt names.txt",
        "morvane text convert --from windows-1252 --to UTF-8 old.txt new.txt" },
      HAS_TOOLS },
    { "", "time", "TOOL ARGUMENT...", "tells, shifts and compares times, and names time zones", nullptr,
      "Times are printed in the form of ISO 8601, in the zone that the variable TZ names, else in that of the system: "
      "2024-02-29T12:30:00+01:00, with Z for UTC.\n\n"
      "They are read in this form, and as [UTC] year[-month[-day]] [hour[:minute[:second]][offset]] [(weekday)], with the "
      "month as a number or an English name. Without UTC, Z or an offset a time is one of the zone: of two that are the "
      "same the first, and one that is skipped lies as long after the gap as after its start. A time is one word for the "
      "shell, so it needs quotes where it has blanks.",
      {},
      { "morvane time shift 2024-01-31T12:00 --months 1 --hours -3", "TZ=Asia/Tokyo morvane time show 2024-02-29T12:30Z" },
      HAS_TOOLS },
    { "", "unicode", "TOOL ARGUMENT...", "tells about characters and character sets", nullptr,
      "All data is that of version 5.2.",
      {},
      { "morvane unicode show U+1EC7" },
      HAS_TOOLS },

    { "module", "show", "NAME...", "prints what the files of modules in XZ_MORVANE_BIN_PATH tell about them", showModules,
      "It is a document: description, version and compatibility, the modules that it needs (deps) and those that extend "
      "it (exts), whether it can be run (personality), and the product that it is for, if it is for one only. Of several modules "
      "each is a sub-store under its name. Nothing is started.",
      {},
      { "morvane module show greeter", "morvane module show greeter counter | morvane store get - counter.version" },
      HAS_WORDS },
    { "module", "run", "NAME [ARGUMENT...]", "loads a module and runs its program", runModule,
      "All that it needs is loaded too. The exit status is the result of the module; one that is not from 0 to 255 "
      "becomes 255. What modules print goes to the standard output, a line each, as soon as it is printed.\n\n"
      "A module ends with the last object of its families. One that keeps some for more than 60 seconds ends the process "
      "with a report; until then lines on the standard error stream say what it still has.",
      {},
      { "XZ_MORVANE_BIN_PATH=build morvane module run greeter Ada Grace" },
      PASSES_ON },

    { "random", "bytes", "COUNT", "prints random bytes, two hexadecimal digits each", randomBytes,
      "",
      {},
      { "morvane random bytes 16" },
      HAS_WORDS },
    { "random", "int", "LOW HIGH", "prints an integer from LOW to HIGH, both included", randomInteger,
      "Neither may be negative.",
      {},
      { "morvane random int 1 6" },
      HAS_WORDS },

    { "store", "show", "FILE...", "prints documents in their canonical text form", showStore,
      "",
      { { "binary", nullptr, "reads the binary form" } },
      { "morvane store show server.conf", "morvane store encode server.conf - | morvane store show --binary -" } },
    { "store", "get", "FILE PATH...", "prints the values at paths like a.b.c, a line each", getValues,
      "Where there is no value but a sub-store it is printed as a document; with a dot at the end, as in a.b., also where "
      "there is a value.",
      { { "default", "VALUE", "what to print for a path without an entry, which is a failure otherwise" } },
      { "morvane store get server.conf network.port", "morvane store get --default 80 server.conf network.port",
        "morvane store get server.conf network" } },
    { "store", "set", "FILE PATH=VALUE...", "changes or adds values; all other lines stay as they are", setValues,
      "New values go after their neighbours. A document in binary form is refused.",
      { { "create", nullptr, "makes the file if there is none" } },
      { "morvane store set server.conf network.port=9090 'banner=Hello, world'",
        "morvane store set --create new.conf a.b=1" } },
    { "store", "delete", "FILE PATH...", "deletes entries with everything below them", deleteEntries,
      "",
      {},
      { "morvane store delete server.conf network" } },
    { "store", "merge", "FILE OTHER...", "adds to FILE what only the others have", mergeStores,
      "",
      {},
      { "morvane store merge server.conf defaults.conf" } },
    { "store", "encode", "FILE OUT", "writes a document in binary form", encodeStore,
      "",
      {},
      { "morvane store encode server.conf server.bin" } },
    { "store", "decode", "FILE OUT", "writes a document in binary form as text", decodeStore,
      "",
      {},
      { "morvane store decode server.bin server.conf" } },
    { "store", "check", "FILE...", "names every line that a reader skips, and why", checkStore,
      "Empty lines, and comments, which begin with #, are in order. The exit status is 1 if a line is named.",
      {},
      { "morvane store check server.conf" } },

    { "text", "convert", "[IN [OUT]]", "converts text from one character set to another", convertText,
      "With fail what is invalid ends the conversion; with skip it is left out, with replace U+FFFD or a question mark stands "
      "in its place.",
      { { "from", "CHARSET", CHARSET_TEXT_FROM, REQUIRED },
        { "to", "CHARSET", CHARSET_TEXT_TO, REQUIRED },
        { "invalid", "replace|skip|fail", "what happens to what is invalid", 0, 0, "fail" },
        { "bom", nullptr, "begins the output with a byte order mark where it is Unicode" } },
      { "morvane text convert --from windows-1252 --to UTF-8 old.txt new.txt",
        "morvane text convert --from UTF-16 --to UTF-8 <old.txt | less" } },
    { "text", "normalize", "[IN [OUT]|FILE...]", "brings text into a normal form", normalizeText,
      "",
      { { "form", "nfc|nfd|nfkc|nfkd", "the normal form of Unicode", REQUIRED },
        { "from", "CHARSET", CHARSET_TEXT_FROM, 0, 0, "UTF-8" },
        { "to", "CHARSET", CHARSET_TEXT_TO, 0, 0, "UTF-8" },
        { "replace", nullptr, REPLACE_TEXT },
        { "in-place", nullptr, IN_PLACE_TEXT } },
      { "morvane text normalize --form nfc names.txt sorted.txt",
        "morvane text normalize --form nfc --in-place *.txt" } },
    { "text", "case", "[IN [OUT]|FILE...]", "maps the case of text", mapCase,
      "The full mappings count, without regard to context or language.",
      { { "upper", nullptr, "to upper case", REQUIRED, 1 },
        { "lower", nullptr, "to lower case", REQUIRED, 1 },
        { "fold", nullptr, "to the form in which texts are compared without regard to case", REQUIRED, 1 },
        { "from", "CHARSET", CHARSET_TEXT_FROM, 0, 0, "UTF-8" },
        { "to", "CHARSET", CHARSET_TEXT_TO, 0, 0, "UTF-8" },
        { "replace", nullptr, REPLACE_TEXT },
        { "in-place", nullptr, IN_PLACE_TEXT } },
      { "morvane text case --upper notes.txt loud.txt", "echo Hello | morvane text case --lower" } },
    { "text", "lines", "[IN [OUT]|FILE...]", "ends the lines of text in one way", setNewlines,
      "A line ends with a line feed, a carriage return, both together, a next line (U+0085), a vertical tabulation, a form "
      "feed, a line separator (U+2028) or a paragraph separator (U+2029). A last line that has no end gets none.",
      { { "newline", "lf|cr|crlf|nel|vt|ff|ls|ps", "what the lines end with", REQUIRED },
        { "from", "CHARSET", CHARSET_TEXT_FROM, 0, 0, "UTF-8" },
        { "to", "CHARSET", CHARSET_TEXT_TO, 0, 0, "UTF-8" },
        { "replace", nullptr, REPLACE_TEXT },
        { "in-place", nullptr, IN_PLACE_TEXT } },
      { "morvane text lines --newline lf dos.txt unix.txt", "morvane text lines --newline lf --in-place *.txt" } },

    { "time", "now", "", "prints the present time", tellNow,
      "",
      {},
      { "morvane time now" },
      HAS_WORDS },
    { "time", "show", "TEXT...", "prints times like 2024-02-29T12:30Z or '2024-feb-29 12:30' in full", showTime,
      "",
      {},
      { "morvane time show '2024-feb-29 12:30'", "TZ=Asia/Tokyo morvane time show 2024-02-29T12:30Z" } },
    { "time", "shift", "TEXT", "moves a time by years, months, days, hours, minutes or seconds", shiftTime,
      "A negative count moves it back. The units are applied in the order in which they stand. Years, months and days "
      "change the date in the zone; hours, minutes and seconds count what passes. A day that the month "
      "reached does not have becomes the first of the next month.",
      { { "years", "COUNT", "by years", REQUIRED | REPEATS, 1 },
        { "months", "COUNT", "by months", REQUIRED | REPEATS, 1 },
        { "days", "COUNT", "by days", REQUIRED | REPEATS, 1 },
        { "hours", "COUNT", "by hours", REQUIRED | REPEATS, 1 },
        { "minutes", "COUNT", "by minutes", REQUIRED | REPEATS, 1 },
        { "seconds", "COUNT", "by seconds", REQUIRED | REPEATS, 1 } },
      { "morvane time shift 2024-01-31T12:00 --months 1 --hours -3" } },
    { "time", "between", "A B", "prints the seconds from one time to the other", secondsBetween,
      "",
      {},
      { "morvane time between 2024 2025" } },
    { "time", "zone", "[NAME]", "prints the system's time zone, or the Windows name of an IANA zone and back", tellZone,
      "Without a name it is the name of the zone, where it has one, and its present offset; with one the Windows name of "
      "an IANA time zone, or the first IANA name of a Windows one.",
      {},
      { "morvane time zone", "morvane time zone Europe/Zurich" } },
    { "time", "zones", "", "lists the IANA names of all time zones", listZones,
      "",
      {},
      { "morvane time zones | grep Europe" },
      HAS_WORDS },

    { "unicode", "show", "TEXT|U+XXXX...", "tells about each character of texts and about code points", showCharacters,
      "There is a line for each, with its category, combining class, script, decomposition and case mappings.",
      {},
      { "morvane unicode show U+1EC7", "morvane unicode show 'Hello'" } },
    { "unicode", "list", "charsets", "lists the character sets and their Windows code pages", listCharsets,
      "",
      {},
      { "morvane unicode list charsets" } },
};
// clang-format on

const int TOOL_COUNT = sizeof( TOOLS ) / sizeof( TOOLS[0] );
} // namespace morvane
