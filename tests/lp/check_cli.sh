#!/usr/bin/env bash
# quarrix-lp from the command line: its usage, a program written with its
# assignments applied, and a non-linear model refused with its message.
#   check_cli.sh QUARRIX_LP SOURCE_DIR
set -u
quarrixlp=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$source"
fail() { echo "FAIL: $*"; exit 1; }

out=$("$quarrixlp") || fail "usage: status $?"
[ "$out" = "Usage: quarrix-lp file.qxm file.lp [global variables]" ] || fail "usage: $out"
"$quarrixlp" examples/knapsack.qxm > /dev/null 2>&1 && fail "a missing LP file name is accepted"

# capacity=40 reaches the model through the input section.
"$quarrixlp" examples/knapsack.qxm "$work/k.lp" capacity=40 > "$work/out" 2>&1 || { cat "$work/out"; fail "knapsack"; }
[ -s "$work/out" ] && { cat "$work/out"; fail "quarrix-lp printed something"; }
grep -q '^ c0: + 10 x_0_ + 8 x_1_ .* <= 40$' <(tr -d '\n' < "$work/k.lp" | sed 's/   +/ +/g; s/ c0:/\n c0:/; s/Binaries/\nBinaries/') ||
    { cat "$work/k.lp"; fail "the capacity row"; }

"$quarrixlp" examples/carseq.qxm "$work/c.lp" > "$work/out" 2> "$work/err" && fail "carseq is not linear"
expected="Error: The model is not linear: expression 436 (max) is a minimum or maximum over integers."
[ "$(head -n 1 "$work/err")" = "$expected" ] || { cat "$work/err"; fail "the refusal's message"; }
[ -e "$work/c.lp" ] && fail "a refused model left a file"
echo "quarrix-lp command line: ok"
