#!/usr/bin/env bash
# scripts/compare on two models: a linear one, whose rows give both solvers'
# values and a gap of 0 (CBC proves the optimum of this small knapsack and
# Quarrix reaches it within the second), and a non-linear one, reported on
# standard error with a failing status while the table still lists the
# first.   check_compare.sh SOURCE_DIR BUILD_DIR
set -u
source=$1 build=$2
command -v cbc > /dev/null || { echo "SKIPPED: cbc is not installed (scripts/setup.sh lp installs it)"; exit 77; }
cd "$source"
errors=$(mktemp)
out=$(scripts/compare -t 1 -b "$build" examples/knapsack.qxm capacity=40 examples/carseq.qxm 2> "$errors")
status=$?
err=$(cat "$errors"); rm -f "$errors"
echo "$out"; echo "$err"
[ $status -eq 1 ] || { echo "FAIL: status $status, expected 1 for the refused model"; exit 1; }
echo "$out" | grep -Eq '^examples/knapsack.qxm capacity=40 +quarrix +feasible +60 +- +[0-9.]+ +0\.0%$' ||
    { echo "FAIL: Quarrix's row"; exit 1; }
echo "$out" | grep -Eq '^ +cbc +optimal +60 +60 +[0-9.]+ *$' || { echo "FAIL: CBC's row"; exit 1; }
[[ $err == *"examples/carseq.qxm: not written as a linear program: Error: The model is not linear"* ]] ||
    { echo "FAIL: the refusal"; exit 1; }
