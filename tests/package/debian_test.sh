#!/bin/sh
# Installs the Debian packages into a scratch root, uses them from there and removes them: programs through pkg-config and
# find_package, with the shared library and with the static one; the executable; the symbols. Arguments: the folder of the
# packages, the repository.
set -eu

packages="$( cd "$1" && pwd )"
repository="$( cd "$2" && pwd )"
scratch="$( mktemp -d )"
trap 'rm -rf "$scratch"' EXIT
export XZ_MORVANE_DATA_PATH="$scratch/data"
root="$scratch/root"
multiarch="$( dpkg-architecture -qDEB_HOST_MULTIARCH )"
lib="$root/usr/lib/$multiarch"

echo "== lintian"
as_root=""
[ "$( id -u )" = 0 ] && as_root="--allow-root"
if command -v lintian >/dev/null; then
    lintian $as_root --fail-on error "$packages"/*.deb
else
    echo "left out: there is no lintian"
fi

echo "== install"
# What the packages depend on counts as installed there if it is installed here.
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/usr/lib"
cp /var/lib/dpkg/status "$root/var/lib/dpkg/status"
in_root()
{
    dpkg --root="$root" --log=/dev/null --force-not-root --force-script-chrootless "$@" >"$scratch/dpkg" 2>&1 ||
        { cat "$scratch/dpkg"; exit 1; }
}
in_root -i "$packages"/*.deb
names="$( for file in "$packages"/*.deb; do dpkg-deb -f "$file" Package; done )"
dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Package} ${Version} ${db:Status-Abbrev}\n' $names
test "$( dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${db:Status-Abbrev}\n' $names | grep -c '^ii' )" = 6

# Without the library the others cannot stay.
if ( in_root -r libmorvane-qv4 ) >/dev/null; then exit 1; fi

echo "== the executable, its manual, and the symbols"
export LD_LIBRARY_PATH="$lib"
"$root/usr/bin/morvane" --version
"$root/usr/bin/morvane" manual store >"$scratch/manual"
gzip -dc "$root/usr/share/man/man1/morvane-store.1.gz" | cmp - "$scratch/manual"
id="$( readelf -n "$lib/libmorvane-qv.so.4" | sed -n 's/.*Build ID: //p' )"
symbols="$root/usr/lib/debug/.build-id/$( echo "$id" | cut -c1-2 )/$( echo "$id" | cut -c3- ).debug"
address="$( nm -D "$lib/libmorvane-qv.so.4" | sed -n 's/ T qvStringCreate@.*//p' )"
addr2line -i -e "$symbols" "0x$address" | grep '/source/qv/base/qv_string.cpp:[1-9]'
test -f "$root/usr/share/doc/libmorvane-qv-doc/README.md"

echo "== pkg-config"
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

export PKG_CONFIG_PATH="$lib/pkgconfig"
cc -std=c11 "$scratch/first.c" -o "$scratch/first" $( pkg-config --cflags --libs morvane-qv )
"$scratch/first" | tee "$scratch/out"
grep -qx 'network.port=9090' "$scratch/out"
cc -std=c11 -static "$scratch/first.c" -o "$scratch/first-static" $( pkg-config --static --cflags --libs morvane-qv ) \
    2>"$scratch/warnings"
"$scratch/first-static" | cmp - "$scratch/out"

echo "== find_package"
# Says whether a module can be loaded, and why not.
cat >"$scratch/load.c" <<END
#include <qv/qv.h>
#include <stdio.h>

static void print( const QV_CHAR *chs, QV_INT length )
{
    while( length-- > 0 ) putchar( (int)*chs++ );
    putchar( '\\n' );
}

int main( void )
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_MODULE_DEBUG, print, NULL, NULL, NULL );
    puts( qvRuntimeTryLoadModulesCstr( "greeter", -1 ) ? "loaded" : "not loaded" );
    qvRuntimeShutdown();
    return 0;
}
END
cat >"$scratch/CMakeLists.txt" <<END
cmake_minimum_required( VERSION 3.20 )
project( first C CXX )
set( CMAKE_C_STANDARD 11 )
set( CMAKE_CXX_STANDARD 20 )
find_package( morvane 4 REQUIRED )
morvane_add_module( greeter greeter.c )
add_executable( first-c first.c )
target_link_libraries( first-c PRIVATE morvane::qv )
add_executable( load load.c )
target_link_libraries( load PRIVATE morvane::qv )
add_executable( static-c first.c )
target_link_libraries( static-c PRIVATE morvane::qv_static )
add_executable( static-cpp first.cpp )
target_link_libraries( static-cpp PRIVATE morvane::qv_static )
add_executable( static-load load.c )
target_link_libraries( static-load PRIVATE morvane::qv_static )
END
cmake -S "$scratch" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$root/usr" >/dev/null
cmake --build "$scratch/build" >"$scratch/log" || { cat "$scratch/log"; exit 1; }
unset LD_LIBRARY_PATH
for program in first-c static-c static-cpp; do
    "$scratch/build/$program" | cmp - "$scratch/out"
done
export XZ_MORVANE_BIN_PATH="$scratch/build"
"$scratch/build/load" | tee "$scratch/loaded"
LD_LIBRARY_PATH="$lib" "$scratch/build/static-load" | tee "$scratch/refused"
grep -qx loaded "$scratch/loaded"
grep -q 'bound to another copy of the library' "$scratch/refused"
LD_LIBRARY_PATH="$lib" "$root/usr/bin/morvane" module run greeter Ada |
    grep -qx 'Hello, Ada'

echo "== the static library"
# Needs the C library and the compiler's alone, and nothing of it runs before main().
readelf -d "$scratch/build/static-c" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' | tee "$scratch/needed"
if grep -Ev '^(libc|libm|libgcc_s|ld-linux.*)\.so' "$scratch/needed"; then exit 1; fi
readelf -SW "$lib/libmorvane-qv.a" >"$scratch/sections"
grep -q '\.text' "$scratch/sections"
if grep -E '\.(init_array|ctors|fini_array|dtors)' "$scratch/sections"; then exit 1; fi

echo "== remove"
in_root --purge $names
if find "$root" -path "$root/var" -prune -o ! -type d -print | grep .; then exit 1; fi
