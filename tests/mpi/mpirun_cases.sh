#!/usr/bin/env bash
# The MPI build under mpirun: mpirun_cases.sh QUARRIX PROJECT_ROOT
#
#   - two ranks on an iteration limit: a feasible cut printed once (rank 0
#     alone prints), the same at every run, the ranks' iterations summed,
#     and at least one rank's cut at equal iterations per rank;
#   - a rank whose param section fails, and the same failure on every rank:
#     status 1 and the message once;
#   - an error during the search (rank 0's display section): status 1 and
#     the message, every rank ended;
#   - an error during the search on rank 1 alone (memory, a thread that
#     cannot start), while rank 0 searches and once it has nothing left to
#     search: status 1, the message once and from rank 0, every rank ended;
#   - an interrupt of mpirun: status 1 and every rank ended.
# Two processes on any machine (--oversubscribe); as root, OpenMPI wants
# --allow-run-as-root.
set -u
quarrix=$1 root=$2
launcher=(mpirun -np 2 --oversubscribe)
[ "$(id -u)" -eq 0 ] && launcher+=(--allow-run-as-root)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0 passes=0
check() {
    if [ "$2" = "$3" ]; then passes=$((passes + 1)); else
        echo "FAIL: $1: expected [$3], got [$2]"; failures=$((failures + 1)); fi
}

# A random graph of 150 vertices and 1200 edges, the same at every run.
awk 'BEGIN { n = 150; m = 1200; s = 12345; print n, m
    for (e = 0; e < m; e++) {
        s = (s * 1103515245 + 12345) % 2147483648; u = int(s / 65536) % n
        do { s = (s * 1103515245 + 12345) % 2147483648; v = int(s / 65536) % n } while (v == u)
        print u + 1, v + 1, 1 } }' > "$work/graph.txt"
cut_args=(examples/maxcut.qxm file="$work/graph.txt" qxIterationLimit=20000 qxNbThreads=1
          qxAdvancedParams=exchangeIterationPeriod:2000)
cd "$root"

# What does not depend on the clock: the lines without seconds.
timeless() { grep -v -E '^\[[0-9]+ sec|performed in' "$1"; }
for run in 1 2; do
    timeout 120 "${launcher[@]}" "$quarrix" "${cut_args[@]}" > "$work/run$run.out" 2> "$work/run$run.err"
    check "two ranks, run $run: status" "$?" 0
done
check "feasible" "$(grep -c '^check: feasible: yes$' "$work/run1.out")" 1
check "rank 0 alone prints" "$(grep -c '^Run solver\.\.\.$' "$work/run1.out")" 1
check "iterations of both ranks" "$(grep -o '^[0-9]* iterations' "$work/run1.out")" "40000 iterations"
check "reproducible" "$(diff <(timeless "$work/run1.out") <(timeless "$work/run2.out") > /dev/null; echo $?)" 0
two=$(sed -n 's/^cut = //p' "$work/run1.out")
"$quarrix" "${cut_args[@]}" > "$work/one.out" 2>&1
one=$(sed -n 's/^cut = //p' "$work/one.out")
check "a cut from both runs" "$([ -n "$one" ] && [ -n "$two" ] && echo yes)" yes
check "two ranks ($two) at least one rank ($one)" "$([ "${two:-0}" -ge "${one:-1}" ] && echo yes)" yes

# Failures before the search: on one rank (mpirun runs a different program
# on rank 1), then on both.
cat > "$work/good.qxm" <<'QXM'
function model() {
    x[i in 0..9] <- bool();
    s = 0;
    for [i in 0..9] s = s + x[i];
    total <- s;
    maximize total;
}
function param() { qxIterationLimit = 1000; }
QXM
sed 's/qxIterationLimit = 1000;/qxSeed = "seed";/' "$work/good.qxm" > "$work/bad.qxm"
message="Error [ file: $work/bad.qxm / line: 8 ]: 'qxSeed' parameter must be an integer. Type provided: string"
timeout 60 mpirun "${launcher[@]:3}" -np 1 "$quarrix" "$work/good.qxm" : -np 1 "$quarrix" "$work/bad.qxm" \
    > "$work/one_fails.out" 2> "$work/one_fails.err"
check "rank 1 fails: status" "$?" 1
check "rank 1 fails: the message once" "$(grep -cxF "$message" "$work/one_fails.err")" 1
timeout 60 "${launcher[@]}" "$quarrix" "$work/bad.qxm" > "$work/both_fail.out" 2> "$work/both_fail.err"
check "both fail: status" "$?" 1
check "both fail: the message once" "$(grep -cxF "$message" "$work/both_fail.err")" 1

# An error during the search, on rank 0 only: its display section.
cat > "$work/display.qxm" <<'QXM'
function model() {
    x[i in 0..99] <- bool();
    s = 0;
    for [i in 0..98] s = s + x[i] * x[i + 1] - x[i];
    total <- s;
    minimize total;
}
function param() { qxTimeLimit = 60; qxNbThreads = 1; }
function display() { y = 1 / 0; }
QXM
timeout 100 "${launcher[@]}" "$quarrix" "$work/display.qxm" > "$work/display.out" 2> "$work/display.err"
check "display fails: status" "$?" 1
check "display fails: the message" \
    "$(grep -cxF "Error [ file: $work/display.qxm / line: 9 ]: Division by zero." "$work/display.err")" 1

# An error during the search on rank 1 only, under a memory cap that
# rank 1's search of 1024 threads does not fit in (the model and one
# thread do): with 20000 booleans, the memory of the threads' searches; with
# 10, the stacks of the threads that start. Rank 0 prints rank 1's message,
# once, whether it is still searching (a time limit: it takes the message
# within a second) or has nothing left to search (a zero limit: at the end
# of its run).
cat > "$work/memory.qxm" <<'QXM'
function model() {
    x[i in 0..n-1] <- bool();
    s = 0;
    for [i in 0..n-2] s = s + x[i] * x[i + 1] - x[i];
    total <- s;
    minimize total;
}
function param() { qxVerbosity = 0; }
QXM
capped() { echo "ulimit -v 700000; exec \"$quarrix\" \"$work/memory.qxm\" qxNbThreads=1024 $*"; }
for run in "n=20000 qxTimeLimit=60" "n=20000 qxIterationLimit=0" "n=10 qxTimeLimit=60"; do
    # What rank 1 prints on its own.
    timeout 60 sh -c "$(capped $run)" > /dev/null 2> "$work/alone.err"
    check "capped alone ($run): status" "$?" 1
    message=$(head -n 1 "$work/alone.err")
    check "capped alone ($run): a resource refused" "$(grep -c -E 'Out of memory|Cannot start a thread' <<< "$message")" 1
    # shellcheck disable=SC2086
    timeout 100 mpirun "${launcher[@]:3}" --tag-output -np 1 "$quarrix" "$work/memory.qxm" $run : \
        -np 1 sh -c "$(capped $run)" > "$work/rank1.out" 2> "$work/rank1.err"
    check "rank 1 fails in the search ($run): status" "$?" 1
    check "rank 1 fails in the search ($run): the message once" "$(grep -cF "$message" "$work/rank1.err")" 1
    check "rank 1 fails in the search ($run): from rank 0" \
        "$(grep -F "$message" "$work/rank1.err" | grep -c '^\[[0-9]*,0\]<stderr>:')" 1
    sleep 1
    check "rank 1 fails in the search ($run): no rank left" \
        "$(pgrep -f -- "$work/memory.qxm" > /dev/null; echo $?)" 1
done

# An interrupt: mpirun hands it to the ranks, which end with status 1.
"${launcher[@]}" "$quarrix" "$work/display.qxm" qxTimeBetweenDisplays=1000 > "$work/int.out" 2> "$work/int.err" &
pid=$!
sleep 3
kill -INT "$pid"
wait "$pid"
check "interrupted: status" "$?" 1
sleep 1
check "interrupted: no rank left" "$(pgrep -f -- "$work/display.qxm" > /dev/null; echo $?)" 1

echo "$passes passed, $failures failed"
[ "$failures" -eq 0 ]
