#!/bin/sh
# Installs into a scratch prefix, moves it, and builds the programs and the module of the README against it as a user
# would: in C11 and C++20, through find_package and through pkg-config, with strict warnings as errors. Includes every
# public header on its own in both languages. Arguments: the build folder, the repository.
set -eu

build="$1"
repository="$2"
scratch="$( mktemp -d )"
trap 'rm -rf "$scratch"' EXIT
export XZ_MORVANE_DATA_PATH="$scratch/data"

strict="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wundef -Werror"

cmake --install "$build" --prefix "$scratch/first" >/dev/null
mv "$scratch/first" "$scratch/prefix"
prefix="$scratch/prefix"
test -x "$prefix/bin/morvane"

# What the tools print is installed as they print it.
"$prefix/bin/morvane" manual store | cmp - "$prefix/share/man/man1/morvane-store.1"
"$prefix/bin/morvane" manual | cmp - "$prefix/share/man/man1/morvane.1"
"$prefix/bin/morvane" completion bash | cmp - "$prefix/share/bash-completion/completions/morvane"
"$prefix/bin/morvane" completion zsh | cmp - "$prefix/share/zsh/site-functions/_morvane"

# The README's programs, as they stand there: those in a language that have a text inside.
program()
{
    awk -v language="$1" -v has="$2" '
        $0 == "```" language { inside = 1; text = ""; next }
        /^```/ { if( inside && index( text, has ) ) printf "%s", text; inside = 0 }
        inside { text = text $0 "\n" }' "$repository/README.md"
}

program c 'int main' >"$scratch/first.c"
program cpp 'int main' >"$scratch/first.cpp"
program c QV_MODULE_DEFINE >"$scratch/greeter.c"

for file in first.c first.cpp greeter.c; do
    lines="$( wc -l <"$scratch/$file" )"
    test "$lines" -gt 5 && test "$lines" -le 25 || { echo "$file has $lines lines"; exit 1; }
done

echo "== build time"
SOURCE_DATE_EPOCH=86400 cmake "-DOUTPUT=$scratch/time.h" -P "$repository/cmake/MorvaneBuildTime.cmake"
grep -q 'UTC 1970-01-02 00:00:00 (Friday)' "$scratch/time.h"

echo "== pkg-config"
export PKG_CONFIG_PATH="$( dirname "$( find "$prefix" -name morvane-qv.pc )" )"
cc -std=c11 $strict "$scratch/first.c" -o "$scratch/pc-c" $( pkg-config --cflags --libs morvane-qv )
c++ -std=c++20 $strict "$scratch/first.cpp" -o "$scratch/pc-cpp" $( pkg-config --cflags --libs morvane-qv )
libdir="$( pkg-config --variable=libdir morvane-qv )"
LD_LIBRARY_PATH="$libdir" "$scratch/pc-c" | tee "$scratch/out-c"
LD_LIBRARY_PATH="$libdir" "$scratch/pc-cpp" | tee "$scratch/out-cpp"
grep -q 9090 "$scratch/out-c"
grep -q 9090 "$scratch/out-cpp"

echo "== find_package"
mkdir "$scratch/project"
cat >"$scratch/project/CMakeLists.txt" <<EOF
cmake_minimum_required( VERSION 3.20 )
project( first C CXX )
set( CMAKE_C_STANDARD 11 )
set( CMAKE_CXX_STANDARD 20 )
find_package( morvane 4 REQUIRED )
add_executable( first-c ../first.c )
add_executable( first-cpp ../first.cpp )
target_link_libraries( first-c PRIVATE morvane::qv )
target_link_libraries( first-cpp PRIVATE morvane::qv )
EOF
cmake -S "$scratch/project" -B "$scratch/project/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/project/build" >/dev/null
"$scratch/project/build/first-c" | cmp - "$scratch/out-c"
"$scratch/project/build/first-cpp" | cmp - "$scratch/out-cpp"

echo "== manual and examples"
python3 "$repository/docs/manual/listings.py" installed "$prefix"
cmake -S "$prefix/share/doc/morvane/examples" -B "$scratch/examples" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/examples" >/dev/null
echo 'one two one' >"$scratch/words"
printf '      2 one\n      1 two\n' >"$scratch/expected"
for wordcount in wordcount wordcount_c; do
    "$scratch/examples/$wordcount" "$scratch/words" | cmp - "$scratch/expected"
done
XZ_MORVANE_BIN_PATH="$scratch/examples" "$scratch/examples/product" reminder_c "$repository/examples/reminder.conf" \
    >"$scratch/reminded"
test -s "$scratch/reminded"

echo "== modules"
mkdir -p "$scratch/product/modules"
cp "$scratch/greeter.c" "$scratch/product/modules/greeter.c"
cp "$scratch/greeter.c" "$scratch/product/modules/greeter_cpp.cpp"
# The synopsis of the header.
awk '/\*\// { exit } /^        / { print substr( $0, 9 ) }' "$prefix/include/qv/qv_extend.h" \
    >"$scratch/product/modules/counter.c"

# A module that uses the C++ library, keeps one family to itself and marks another.
cat >"$scratch/product/modules/tally.cpp" <<EOF
#include <qv/qv_extend.h>
#include <stdexcept>
#include <string>
#include <vector>

QV_LOCAL_FAMILY( Tally, QV_TALLY )
QV_FAMILY( Total, QV_TOTAL )

struct QV_TALLY : QV_OBJ { QV_INT count; };
struct QV_TOTAL : QV_OBJ { QV_INT count; };

QV___FAMILY( Tally, QV_TALLY, nullptr, nullptr, nullptr )
QV___FAMILY( Total, QV_TOTAL, nullptr, nullptr, nullptr )

void inner( std::vector< std::string > &words );
void inner( std::vector< std::string > &words ) { words.at( 7 ) += "s"; }

static QV_INT run( intptr_t a, intptr_t )
{
    QV_CHECK( qvVectorLength( reinterpret_cast< QV_VECTOR * >( a ) ) > 0 );
    std::vector< std::string > words( 3, "word" );

    try { inner( words ); }
    catch( const std::out_of_range & ) { return 3; }

    return 4;
}

QV_MODULE_DEFINE(
    QV_MODULE_INFO( .productName = "morvane", .description = "Tallies", .version = "1.2", .deps = "greeter" ),
    QV_MODULE_FUNCS( .personalityFunc = run ) );
EOF
cat >"$scratch/product/modules/unresolved.c" <<EOF
#include <qv/qv_extend.h>
extern QV_BOOL nowhere( void );
QV_MODULE_DEFINE(
    QV_MODULE_INFO( .description = "Calls what nobody has", .version = "1.0" ),
    QV_MODULE_FUNCS( .startupFunc = nowhere ) );
EOF
# A name that compilers take for another.
printf '#include <qv/qv_extend.h>\nQV_MODULE_DEFINE( %s, QV_MODULE_FUNCS() );\n' \
    'QV_MODULE_INFO( .description = "Bears a name", .version = "1.0" )' >"$scratch/product/modules/linux.c"
cat >"$scratch/product/CMakeLists.txt" <<EOF
cmake_minimum_required( VERSION 3.20 )
project( product C CXX )
find_package( morvane 4 REQUIRED )
string( REPLACE " " ";" strict "$strict" )
add_compile_options( \${strict} )
morvane_add_module( greeter modules/greeter.c )
morvane_add_module( counter modules/counter.c )
morvane_add_module( greeter_cpp modules/greeter_cpp.cpp )
morvane_add_module( linux modules/linux.c )
morvane_add_module( tally modules/tally.cpp )
morvane_add_module( unresolved modules/unresolved.c )
set_target_properties( morvane-unresolved PROPERTIES EXCLUDE_FROM_ALL ON )
EOF
modules="$scratch/product/build"
cmake -S "$scratch/product" -B "$modules" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$modules" >/dev/null
export XZ_MORVANE_BIN_PATH="$modules"

exported()
{
    nm -D --defined-only "$modules/libmorvane-$1.so" | awk '{ print $3 }' | sort | tr '\n' ' '
}

for module in greeter greeter_cpp; do
    test "$( exported $module )" = "${module}___module "
    "$prefix/bin/morvane" module show $module >"$scratch/shown"
    grep -qx "name=$module" "$scratch/shown"
    "$prefix/bin/morvane" module run $module Ada Grace >"$scratch/greeted"
    printf 'Hello, Ada\nHello, Grace\n' | cmp - "$scratch/greeted"
done

test "$( exported linux )" = "linux___module "
test "$( exported counter )" = "counter___module "
total="qvTotalCompare qvTotalEquals qvTotalFrom qvTotalObj qvTotalRelease qvTotalRetain qvTotalSort qvTotalToString"
test "$( exported tally )" = "$total tally___module "
"$prefix/bin/morvane" module show tally | tee "$scratch/shown"
grep -qx "deps=greeter" "$scratch/shown"
for run in "counter a b c" "tally word"; do
    status=0
    "$prefix/bin/morvane" module run $run || status=$?
    test $status = 3
done
# A broken contract names the source by its place in the project, and the stack the functions of the executable.
ulimit -c 0
if "$prefix/bin/morvane" module run tally 2>"$scratch/report"; then exit 1; fi
grep -q 'File      : modules/tally$' "$scratch/report"
grep -q '(main+' "$scratch/report"

# A module calls what another one exports: where both are built, installed, and in an installation that was moved. Its
# record names the other. The folder of modules is that of the installation where nothing else is set.
mkdir "$scratch/chain"
cat >"$scratch/chain/twice.c" <<EOF
#include <qv/qv_extend.h>
QV_API QV_INT twiceOf( QV_INT number );
QV_INT twiceOf( QV_INT number ) { return 2 * number; }
QV_MODULE_DEFINE( QV_MODULE_INFO( .description = "Doubles", .version = "1.0" ), QV_MODULE_FUNCS( .startupFunc = NULL ) );
EOF
cat >"$scratch/chain/count.cpp" <<EOF
#include <qv/qv_extend.h>
QV_API QV_INT twiceOf( QV_INT number );
static QV_INT run( intptr_t a, intptr_t ) { return twiceOf( qvVectorLength( reinterpret_cast< QV_VECTOR * >( a ) ) ); }
QV_MODULE_DEFINE(
    QV_MODULE_INFO( .description = "Counts", .version = "1.0" ), QV_MODULE_FUNCS( .personalityFunc = run ) );
EOF
sed 's/Counts/Counts too/' "$scratch/chain/count.cpp" >"$scratch/chain/again.cpp"
cat >"$scratch/chain/CMakeLists.txt" <<EOF
cmake_minimum_required( VERSION 3.20 )
project( chain C CXX )
find_package( morvane 4 REQUIRED )
if( NOT AGAIN )
    morvane_add_module( twice twice.c )
    morvane_add_module( count count.cpp DEPENDS twice )
    install( TARGETS morvane-twice morvane-count LIBRARY DESTINATION "\${MORVANE_MODULE_DIR}" )
else()
    morvane_add_module( again again.cpp DEPENDS twice )
    install( TARGETS morvane-again LIBRARY DESTINATION "\${MORVANE_MODULE_DIR}" )
endif()
EOF
unset XZ_MORVANE_BIN_PATH
for again in OFF ON; do
    cmake -S "$scratch/chain" -B "$scratch/chain/$again" -DAGAIN=$again -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$scratch/chain/$again" >/dev/null
    cmake --install "$scratch/chain/$again" >/dev/null
done
mv "$prefix" "$scratch/moved"
for where in "XZ_MORVANE_BIN_PATH=$scratch/chain/OFF count" "XZ_=. count" "XZ_=. again"; do
    "$scratch/moved/bin/morvane" info | grep -q '^moduleVersions.qv='
    status=0
    env "${where% *}" "$scratch/moved/bin/morvane" module run "${where#* }" a b c || status=$?
    test $status = 6
    test "$( env "${where% *}" "$scratch/moved/bin/morvane" module show "${where#* }" | grep deps )" = "deps=twice"
done
mv "$scratch/moved" "$prefix"
export XZ_MORVANE_BIN_PATH="$modules"

if cmake --build "$modules" --target morvane-unresolved >"$scratch/link" 2>&1; then exit 1; fi
grep -q nowhere "$scratch/link"

# A module without its name would be the library's own.
for compiler in "cc -std=c11" "c++ -std=c++20 -x c++"; do
    if $compiler -I"$prefix/include" -fsyntax-only "$scratch/greeter.c" 2>"$scratch/nameless"; then exit 1; fi
    grep -q 'a module needs its QV_MODULE_NAME' "$scratch/nameless"
done

echo "== headers"
( cd "$prefix/include" && find qv -name '*.h' ) | while read -r header; do
    echo "#include \"$header\"" >"$scratch/header.c"
    cc -std=c11 $strict -I"$prefix/include" -fsyntax-only "$scratch/header.c"
    c++ -std=c++20 $strict -x c++ -I"$prefix/include" -fsyntax-only "$scratch/header.c"
done

( cd "$prefix/include" && find qv -name '*.hpp' ) | while read -r header; do
    echo "#include \"$header\"" >"$scratch/header.cpp"
    c++ -std=c++20 $strict -fno-exceptions -fno-rtti -I"$prefix/include" -fsyntax-only "$scratch/header.cpp"
done

echo "== the executable"
printf 'a.b=1\n' >"$scratch/document"
test "$( "$prefix/bin/morvane" store get "$scratch/document" a.b )" = 1
