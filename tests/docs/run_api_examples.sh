#!/usr/bin/env bash
# Compiles and runs the C++ programs of a Markdown page against the installed
# package: run_api_examples.sh BUILD_DIR PAGE CONFIG
#
# Each fenced ```cpp block is a program; the ```output block after it is its
# exact standard output. The build tree is installed into a prefix of its
# own, and the programs are built as a separate CMake project that finds it
# with find_package, as a user's project would: the page's ```cmake block is
# that project's file, once per program (`myprogram` replaced by the
# program's name). The page's ```sh block, which builds `myprogram.cpp` with
# pkg-config, then builds the first program (`/some/prefix` replaced by the
# prefix), which must print the same; without pkg-config that step is
# skipped.
set -u
build=$1 page=$2 config=$3

work=$build/docs-api-test
rm -rf "$work"
mkdir -p "$work/src"
cmake --install "$build" --prefix "$work/install" --config "$config" > "$work/install.log" ||
    { cat "$work/install.log"; exit 1; }

# Program n goes to example_n.cpp, its expected output to example_n.out;
# the build snippets to snippet.cmake and snippet.sh.
awk -v dir="$work/src" '
    /^```cpp$/ { inside = 1; n++; file = sprintf("%s/example_%d.cpp", dir, n); printf "" > file; next }
    /^```output$/ { inside = 1; file = sprintf("%s/example_%d.out", dir, n); printf "" > file; next }
    /^```(cmake|sh)$/ { inside = 1; file = sprintf("%s/snippet.%s", dir, substr($0, 4)); printf "" > file; next }
    /^```$/ && inside { inside = 0; close(file); next }
    inside { print > file }
' "$page"
for snippet in snippet.cmake snippet.sh; do
    [ -s "$work/src/$snippet" ] || { echo "no ${snippet#snippet.} block in $page"; exit 1; }
done

programs=$(cd "$work/src" && ls example_*.cpp 2>/dev/null | sed 's/\.cpp$//')
[ -n "$programs" ] || { echo "no cpp block in $page"; exit 1; }
{
    echo 'cmake_minimum_required(VERSION 3.18)'
    echo 'project(DocsApiExamples LANGUAGES CXX)'
    echo 'set(CMAKE_CXX_STANDARD 17)'
    for p in $programs; do sed "s/myprogram/$p/g" "$work/src/snippet.cmake"; done
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
# The pkg-config snippet, on the first program.
if command -v pkg-config > /dev/null; then
    first=$(echo $programs | cut -d' ' -f1)
    mkdir -p "$work/pkgconfig"
    cp "$work/src/$first.cpp" "$work/pkgconfig/myprogram.cpp"
    sed "s|/some/prefix|$work/install|g" "$work/src/snippet.sh" > "$work/pkgconfig/build.sh"
    if ! (cd "$work/pkgconfig" && bash -e build.sh > build.log 2>&1); then
        echo "the sh snippet failed:"; cat "$work/pkgconfig/build.log"; failures=$((failures + 1))
    elif ! (cd "$work" && timeout 120 "$work/pkgconfig/a.out") > "$work/pkgconfig/actual" 2>&1; then
        echo "the program built by the sh snippet failed:"; cat "$work/pkgconfig/actual"; failures=$((failures + 1))
    else
        diff -u "$work/src/$first.out" "$work/pkgconfig/actual" || failures=$((failures + 1))
    fi
else
    echo "pkg-config is not installed: the sh snippet is not run (scripts/setup.sh package installs it)"
fi
echo "$(echo $programs | wc -w) programs run, $failures failed"
[ "$failures" = 0 ]
