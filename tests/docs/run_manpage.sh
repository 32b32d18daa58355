#!/usr/bin/env bash
# The program shown in the manual page's EXAMPLES runs and reaches the
# result the page promises: run_manpage.sh QUARRIX PAGE
set -u
quarrix=$1 page=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The program is the .nf ... .fi block that follows "A program:"; roff's
# \- is a plain minus.
awk '/^A program:/ { found = 1 } found && /^\.nf$/ { inside = 1; next }
     inside && /^\.fi$/ { exit } inside { print }' "$page" | sed 's/\\-/-/g' > "$work/example.qxm"
[ -s "$work/example.qxm" ] || { echo "no program found in $page"; exit 1; }
(cd "$work" && "$quarrix" example.qxm qxVerbosity=0) > "$work/out" 2> "$work/err" ||
    { cat "$work/example.qxm" "$work/out" "$work/err"; exit 1; }
grep -qx 'Optimal: total = 20' "$work/out" || { cat "$work/example.qxm" "$work/out"; exit 1; }
# The page reads without roff warnings where groff is installed.
if command -v groff > /dev/null; then
    warnings=$(groff -man -ww -z "$page" 2>&1)
    [ -z "$warnings" ] || { echo "$warnings"; exit 1; }
fi
echo "manual page example: ok"
