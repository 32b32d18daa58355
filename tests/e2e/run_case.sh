#!/usr/bin/env bash
# Runs one end-to-end case: run_case.sh QUARRIX DIR NAME
#
# Files of a case, all beside each other in DIR:
#   NAME.qxm     the program (it may be missing, to test a missing file)
#   NAME.out     expected standard output, the two banner lines removed
#   NAME.err     expected standard error (absent: must be empty)
#   NAME.status  expected exit status (absent: 0)
#   NAME.args    extra command-line words, one per line (absent: none);
#                the word @NONE@ alone on its line runs quarrix without any
#                argument at all, not even the program file
#   NAME.in      standard input (absent: empty)
#   NAME.files   expected content of files the run writes: blocks that start
#                with a line "=== path" followed by the file's exact lines
#   NAME.signal  "SIG SECONDS": send signal SIG (INT, TERM...) after SECONDS
#
# The case runs in a fresh copy of DIR, so programs can read their data by
# relative path and written files never land in the source tree.
set -u
quarrix=$1 dir=$2 name=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$dir"/. "$work"/
cd "$work"

args=("$name.qxm")
if [ -f "$name.args" ]; then
  mapfile -t extra < "$name.args"
  if [ "${extra[0]-}" = "@NONE@" ]; then args=(); else args+=("${extra[@]}"); fi
fi
input=/dev/null
[ -f "$name.in" ] && input="$name.in"

if [ -f "$name.signal" ]; then
  read -r sig delay < "$name.signal"
  "$quarrix" "${args[@]}" < "$input" > actual.out.raw 2> actual.err &
  pid=$!
  sleep "$delay"
  kill -s "$sig" "$pid"
  wait "$pid"
  status=$?
else
  timeout 100 "$quarrix" "${args[@]}" < "$input" > actual.out.raw 2> actual.err
  status=$?
fi

# The banner is the first two lines of every run.
tail -n +3 actual.out.raw > actual.out

expected_status=0
[ -f "$name.status" ] && expected_status=$(tr -d '[:space:]' < "$name.status")
[ -f "$name.err" ] || : > "$name.err"

fail=0
if [ "$status" != "$expected_status" ]; then
  echo "exit status: expected $expected_status, got $status"; fail=1
fi
if ! diff -u "$name.out" actual.out > diff.out; then
  echo "standard output differs:"; cat diff.out; fail=1
fi
if ! diff -u "$name.err" actual.err > diff.err; then
  echo "standard error differs:"; cat diff.err; fail=1
fi
if [ -f "$name.files" ]; then
  current="" ; : > expected.file
  check_file() {
    [ -n "$current" ] || return 0
    if ! diff -u expected.file "$current" > diff.file 2>&1; then
      echo "written file $current differs:"; cat diff.file; fail=1
    fi
  }
  while IFS= read -r line || [ -n "$line" ]; do
    if [[ "$line" == "=== "* ]]; then
      check_file; current=${line#=== }; : > expected.file
    else
      printf '%s\n' "$line" >> expected.file
    fi
  done < "$name.files"
  check_file
fi
exit $fail
