#!/usr/bin/env bash
# Writes small models of examples/ as linear programs with quarrix-lp, solves
# them with the CBC MIP solver, and compares its proven optimum with the
# value Quarrix reaches on the same model:
#   check_cbc.sh QUARRIX QUARRIX_LP SOURCE_DIR
# Exits 77 (skipped) without cbc, which `scripts/setup.sh lp` installs.
set -u
quarrix=$1 quarrixlp=$2 source=$3
command -v cbc > /dev/null || { echo "SKIPPED: cbc is not installed (scripts/setup.sh lp installs it)"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$source"

run_case() {
    local name=$1 program=$2 pattern=$3
    shift 3
    if ! "$quarrixlp" "$program" "$work/$name.lp" "$@" > "$work/$name.lp.log" 2>&1; then
        echo "$name: quarrix-lp failed"; cat "$work/$name.lp.log"; return 1
    fi
    timeout 120 cbc "$work/$name.lp" solve quit > "$work/$name.cbc" 2>&1
    if ! grep -q '^Result - Optimal solution found' "$work/$name.cbc"; then
        echo "$name: cbc found no optimum"; tail -20 "$work/$name.cbc"; return 1
    fi
    local mip
    mip=$(awk '/^Objective value:/ { v = sprintf("%.0f", $3); print (v == "-0" ? "0" : v) }' "$work/$name.cbc")
    "$quarrix" "$program" "$@" qxTimeLimit=3 qxNbThreads=1 > "$work/$name.out" 2>&1
    local ours
    ours=$(sed -n "s/.*$pattern *\(-\{0,1\}[0-9][0-9]*\).*/\1/p" "$work/$name.out" | tail -n 1)
    echo "$name: cbc $mip, quarrix $ours"
    [ -n "$mip" ] && [ "$mip" = "$ours" ] || { tail -5 "$work/$name.out"; return 1; }
}

failures=0
run_case knapsack examples/knapsack.qxm 'value =' || failures=$((failures + 1))
run_case knapsack_40 examples/knapsack.qxm 'value =' capacity=40 || failures=$((failures + 1))
run_case setcover examples/setcover.qxm 'cost =' || failures=$((failures + 1))
run_case mknapsack examples/mknapsack.qxm 'profit =' || failures=$((failures + 1))
# The cut's weight is a sum of != between booleans: one column each.
run_case logic tests/lp/logic.qxm 'total =' || failures=$((failures + 1))
run_case maxcut_12 examples/maxcut.qxm 'cut =' file=tests/lp/maxcut_12.txt || failures=$((failures + 1))
[ "$failures" = 0 ]
