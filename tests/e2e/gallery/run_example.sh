#!/usr/bin/env bash
# Runs one gallery case: run_example.sh QUARRIX ROOT DIR NAME
#
#   NAME.cmd     one line: the words after quarrix, as a user would type
#                them in the project's root ROOT (the example and its options)
#   NAME.checks  the lines of standard output that begin with "check: ",
#                exactly: the example's own verdicts on the solution it found
#                (recomputed from the solution's values, never printed as is)
#
# The cases bound the search by iterations (qxIterationLimit) on one thread
# with a fixed seed, so a run is repeatable whatever the machine's load: the
# verdicts are compared, the values are shown on failure.
#
# With QUARRIX_FEASIBILITY_ONLY set (the instrumented builds, several times
# slower), the verdicts on the distance to the best-known value are left
# out, and each phase also gets a time limit of 10 s, so that the slower
# iterations do not make the case long (3 s was too short under load for
# the textbook bin packing, which needs some 400,000 iterations to become
# feasible).
set -u
quarrix=$1 root=$2 dir=$3 name=$4

read -r -a words < "$dir/$name.cmd"
if [ -n "${QUARRIX_FEASIBILITY_ONLY:-}" ]; then
    for word in "${words[@]}"; do
        case $word in
        qxIterationLimit=*:*) words+=("qxTimeLimit=$(echo "${word#*=}" | sed 's/:[0-9]*/:10/g')") ;;
        qxIterationLimit=*) words+=(qxTimeLimit=10) ;;
        esac
    done
fi
out=$(mktemp) err=$(mktemp)
trap 'rm -f "$out" "$err"' EXIT
cd "$root"
timeout 100 "$quarrix" "${words[@]}" > "$out" 2> "$err"
status=$?

fail=0
if [ "$status" != 0 ]; then echo "exit status: expected 0, got $status"; fail=1; fi
if [ -s "$err" ]; then echo "standard error:"; cat "$err"; fail=1; fi
verdicts() { if [ -n "${QUARRIX_FEASIBILITY_ONLY:-}" ]; then grep -v 'of best known'; else cat; fi; }
if ! grep '^check: ' "$out" | verdicts | diff -u <(verdicts < "$dir/$name.checks") - ; then fail=1; fi
if [ "$fail" != 0 ]; then echo "standard output:"; cat "$out"; fi
exit $fail
