#!/usr/bin/env bash
# Bad environments the end-to-end case format cannot set up: a full or
# closed standard output, an endless standard input, too little memory for
# the data or for the search threads, and interrupts sent back to back.
# Each check runs quarrix and compares its exit status and error line.
#   hostile_environment.sh QUARRIX [sanitized]
# With "sanitized" the memory caps are skipped: sanitizer runtimes reserve
# more address space than any cap would leave.
set -u
quarrix=$1 sanitized=${2-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failures=0

check() {  # name expected-status expected-error-line actual-status error-file
  local name=$1 want_status=$2 want=$3 status=$4 errfile=$5
  local got
  got=$(head -n 1 "$errfile")
  if [ "$status" != "$want_status" ] || [ "$got" != "$want" ]; then
    echo "FAIL $name: status $status (want $want_status), error '$got' (want '$want')"
    failures=$((failures + 1))
  else
    echo "ok   $name"
  fi
}

cat > solve.qxm <<'QXM'
function model() { x[i in 0..9] <- bool(); s = 0; for [i in 0..9] s = s + x[i]; maximize s; }
function param() { qxIterationLimit = 1000; qxVerbosity = 0; }
function output() { for [i in 1..3] println("line ", i); }
QXM

"$quarrix" solve.qxm > /dev/full 2> err; status=$?
check stdout_full_device 1 \
  "Error: Cannot write to the standard output: the device is full or the output is closed." \
  $status err

"$quarrix" solve.qxm >&- 2> err; status=$?
check stdout_closed 1 \
  "Error: Cannot write to the standard output: the device is full or the output is closed." \
  $status err

echo 'function input() { line = readln(); }' > console.qxm
"$quarrix" console.qxm < /dev/zero > /dev/null 2> err; status=$?
check stdin_endless_line 1 \
  "Error [ file: console.qxm / line: 1 ]: Line longer than 67108864 bytes in standard input." \
  $status err

if [ "$sanitized" != sanitized ]; then
  cat > grow.qxm <<'QXM'
function input() {
    s = "0123456789012345678901234567890123456789";
    while (1) s = s + s;
}
QXM
  (ulimit -v 1000000; "$quarrix" grow.qxm > /dev/null 2> err); status=$?
  check out_of_memory 1 \
    "Error [ file: grow.qxm / line: 3 ]: Out of memory: the program, its data or its model needs more memory than the system gives." \
    $status err

  sed 's/qxIterationLimit = 1000;/qxIterationLimit = 1000; qxNbThreads = 1000;/' solve.qxm > threads.qxm
  (ulimit -v 1500000; "$quarrix" threads.qxm > /dev/null 2> err); status=$?
  check thread_start_failure 1 \
    "Error: Cannot start a thread: the system refused it (too many threads, or not enough memory for their stacks; try a smaller qxNbThreads)." \
    $status err

  # Many threads whose searches run out of memory while they are prepared:
  # the first failure is reported and the others dropped (kept, each would
  # hold an exception, and their number exhausted what the runtime keeps
  # for throwing: the process aborted). Whether memory or a thread start
  # fails first depends on timing; either is a clean error.
  cat > quadratic.qxm <<'QXM'
function model() { x[i in 0..9] <- bool(); s = 0; for [i in 0..8] s = s + x[i] * x[i + 1] - x[i]; minimize s; }
function param() { qxTimeLimit = 60; qxNbThreads = 1024; qxVerbosity = 0; }
QXM
  for attempt in 1 2 3; do
    (ulimit -v 700000; "$quarrix" quadratic.qxm > /dev/null 2> err); status=$?
    if grep -q -E "^Error.*(Out of memory: the program|Cannot start a thread: the system refused it)" <(head -n 1 err); then
      check "many_threads_out_of_memory_$attempt" 1 "$(head -n 1 err)" $status err
    else
      check "many_threads_out_of_memory_$attempt" 1 "a resource error" $status err
    fi
  done
fi

# Three interrupts back to back, while the search runs on several threads:
# the notice is printed once.
cat > long.qxm <<'QXM'
function model() { x[i in 0..99] <- bool(); s = 0; for [i in 0..99] s = s + x[i]; maximize s; constraint x[0] + x[1] <= 1; }
function param() { qxTimeLimit = 30; qxNbThreads = 4; qxVerbosity = 0; }
QXM
for round in 1 2 3 4 5; do
  "$quarrix" long.qxm > /dev/null 2> err &
  pid=$!
  sleep 0.5
  kill -INT $pid; kill -TERM $pid; kill -INT $pid
  wait $pid; status=$?
  notices=$(grep -c 'Quarrix interrupted' err)
  if [ $status != 1 ] || [ "$notices" != 1 ]; then
    echo "FAIL three_interrupts (round $round): status $status, $notices notices"
    failures=$((failures + 1))
  fi
done
[ $failures = 0 ] && echo "ok   three_interrupts"

echo "$failures failed"
[ $failures = 0 ]
