#!/usr/bin/env bash
# Compiles and runs the C++ programs of a Markdown page against the installed
# package: run_api_examples.sh BUILD_DIR PAGE CONFIG
#
# Each fenced ```cpp block is a program; the ```output block after it is its
# exact standard output. The build tree is installed into a prefix of its
# own, and the programs are built as a separate CMake project that finds it
# with find_package, as a user's project would.
set -u
build=$1 page=$2 config=$3

work=$build/docs-api-test
rm -rf "$work"
mkdir -p "$work/src"
cmake --install "$build" --prefix "$work/install" --config "$config" > "$work/install.log" ||
    { cat "$work/install.log"; exit 1; }

# Program n goes to example_n.cpp, its expected output to example_n.out.
awk -v dir="$work/src" '
    /^```cpp$/ { inside = 1; n++; file = sprintf("%s/example_%d.cpp", dir, n); printf "" > file; next }
    /^```output$/ { inside = 1; file = sprintf("%s/example_%d.out", dir, n); printf "" > file; next }
    /^```$/ && inside { inside = 0; close(file); next }
    inside { print > file }
' "$page"

programs=$(cd "$work/src" && ls example_*.cpp 2>/dev/null | sed 's/\.cpp$//')
[ -n "$programs" ] || { echo "no cpp block in $page"; exit 1; }
{
    echo 'cmake_minimum_required(VERSION 3.18)'
    echo 'project(DocsApiExamples LANGUAGES CXX)'
    echo 'set(CMAKE_CXX_STANDARD 17)'
    echo 'find_package(Quarrix 2.0 REQUIRED)'
    for p in $programs; do
        echo "add_executable($p $p.cpp)"
        echo "target_link_libraries($p PRIVATE Quarrix::quarrix)"
    done
} > "$work/src/CMakeLists.txt"
cmake -S "$work/src" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/install" \
      -DCMAKE_BUILD_TYPE="$config" > "$work/configure.log" 2>&1 ||
    { cat "$work/configure.log"; exit 1; }
cmake --build "$work/build" -j2 > "$work/build.log" 2>&1 || { cat "$work/build.log"; exit 1; }

failures=0
for p in $programs; do
    if [ ! -f "$work/src/$p.out" ]; then echo "$p: no output block"; failures=$((failures + 1)); continue; fi
    if ! (cd "$work" && timeout 120 "$work/build/$p") > "$work/$p.actual" 2> "$work/$p.err"; then
        echo "$p failed:"; cat "$work/$p.err"; failures=$((failures + 1)); continue
    fi
    diff -u "$work/src/$p.out" "$work/$p.actual" || failures=$((failures + 1))
done
echo "$(echo $programs | wc -w) programs run, $failures failed"
[ "$failures" = 0 ]
