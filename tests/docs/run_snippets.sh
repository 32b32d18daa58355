#!/usr/bin/env bash
# Runs every program of a Markdown page: run_snippets.sh QUARRIX PAGE
#
# A fenced block ```qxm is a program. The blocks after it, up to the next
# program, say what it needs and what it must do:
#   ```files    data files written beside it first: "=== name" lines, each
#               followed by the file's lines
#   ```output   its exact standard output, the two banner lines removed
#   ```error    its exact standard error; the exit status must then be 1
# A program must be followed by ```output or ```error. Programs run as
# example.qxm in an empty folder with qxVerbosity=0; one without a model
# section gets a one-decision model, since a run needs an objective.
set -u
quarrix=$(cd "$(dirname "$1")" && pwd)/$(basename "$1") page=$2

blocks=$(mktemp -d)
trap 'rm -rf "$blocks"' EXIT
# Each fenced block to its own file, numbered in order and named by its tag.
awk -v dir="$blocks" '
    /^```[a-z]+$/ && !inside { inside = 1; n++; file = sprintf("%s/%03d.%s", dir, n, substr($0, 4)); printf "" > file; next }
    /^```$/ && inside { inside = 0; close(file); next }
    inside { print > file }
' "$page"

failures=0
programs=0
check_program() {
    local program=$1 files=$2 output=$3 error=$4
    [ -n "$program" ] || return 0
    programs=$((programs + 1))
    local name
    name=$(basename "$program")
    if [ -z "$output" ] && [ -z "$error" ]; then
        echo "$name: no output or error block"; failures=$((failures + 1)); return
    fi
    local work
    work=$(mktemp -d)
    cp "$program" "$work/example.qxm"
    grep -q 'function model(' "$program" ||
        echo 'function model() { x <- bool(); maximize x; }' >> "$work/example.qxm"
    if [ -n "$files" ]; then
        awk -v dir="$work" '/^=== / { file = dir "/" substr($0, 5); printf "" > file; next } { print > file }' "$files"
    fi
    (cd "$work" && timeout 60 "$quarrix" example.qxm qxVerbosity=0 < /dev/null > out.raw 2> err)
    local status=$? fail=0
    tail -n +3 "$work/out.raw" > "$work/out"
    if [ -n "$output" ] && ! diff -u "$output" "$work/out"; then fail=1; fi
    if [ -n "$error" ]; then
        diff -u "$error" "$work/err" || fail=1
        [ "$status" = 1 ] || { echo "exit status: expected 1, got $status"; fail=1; }
    else
        [ -s "$work/err" ] && { cat "$work/err"; fail=1; }
        [ "$status" = 0 ] || { echo "exit status: expected 0, got $status"; fail=1; }
    fi
    if [ "$fail" != 0 ]; then
        echo "^ program $name of $page"; failures=$((failures + 1))
    fi
    rm -rf "$work"
}

program="" files="" output="" error=""
for block in "$blocks"/*; do
    case "$block" in
    *.qxm) check_program "$program" "$files" "$output" "$error"
           program=$block files="" output="" error="" ;;
    *.files) files=$block ;;
    *.output) output=$block ;;
    *.error) error=$block ;;
    esac
done
check_program "$program" "$files" "$output" "$error"
echo "$programs programs run, $failures failed"
[ "$programs" -gt 0 ] && [ "$failures" = 0 ]
