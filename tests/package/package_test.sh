#!/bin/sh
# Installs into a scratch prefix, moves it, and builds the programs of the README against it as a user would: in C11 and
# C++20, through find_package and through pkg-config, with strict warnings as errors. Includes every public header on its
# own in both languages. Arguments: the build folder, the repository.
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

# The README's programs, as they stand there.
program()
{
    awk -v language="$1" '$0 == "```" language { inside = 1; next } /^```/ { if( inside ) exit } inside' \
        "$repository/README.md"
}

program c >"$scratch/first.c"
program cpp >"$scratch/first.cpp"

for file in first.c first.cpp; do
    lines="$( wc -l <"$scratch/$file" )"
    test "$lines" -gt 5 && test "$lines" -le 25 || { echo "$file has $lines lines"; exit 1; }
done

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

echo "== headers"
( cd "$prefix/include" && find qv -name '*.h' ) | while read -r header; do
    echo "#include \"$header\"" >"$scratch/header.c"
    cc -std=c11 $strict -I"$prefix/include" -fsyntax-only "$scratch/header.c"
    c++ -std=c++20 $strict -x c++ -I"$prefix/include" -fsyntax-only "$scratch/header.c"
done

echo "== the executable"
printf 'a.b=1\n' >"$scratch/document"
test "$( "$prefix/bin/morvane" store get "$scratch/document" a.b )" = 1
