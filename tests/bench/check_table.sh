#!/usr/bin/env bash
# bench/run's table, without measuring anything: the outputs of earlier runs
# kept under logs/ (with the instance tree data/, whose files are empty but
# for mknap's counts and best-known values) are tabulated again with -r and
# compared with the table worked out by hand in expected_all.txt. Then its
# refusals, the skip without instances, and one real run of a second on the
# bundled 60-vertex graph, whose kept output must tabulate the same again.
#   check_table.sh SOURCE_DIR BUILD_DIR
set -u
source=$1 build=$2
here=$source/tests/bench
run=$source/bench/run
fail=0
failed() { echo "FAIL: $*"; fail=1; }
table() { grep -v '^bench:'; }

# Gaps both ways, means over seeds, a missing seed, an error, an infeasible
# run, unknown best values, the numeric order of the files, the summary.
out=$("$run" -d "$here/data" -r "$here/logs" -s 0,1 -f limit,maxcut,mknap,setcover,carseq,queens | table)
diff -u "$here/expected_all.txt" <(echo "$out") || failed "the table of the kept runs"

# Quick mode keeps one instance; a plain family takes its family's best
# value; the first of several objectives is the value.
out=$("$run" -d "$here/data" -r "$here/logs" -q -f plain-setcover,mknap | table)
echo "$out" | grep -Eq '^plain-setcover +scp41 +429 +429 +0\.000 +0\.06 +3\.00e\+05 +6\.00e\+05$' ||
    failed "the plain family's row: $out"
[ "$(echo "$out" | grep -c '^mknap ')" = 2 ] || failed "quick mode runs one mknap problem: $out"

for words in "-t 0" "-s 1,,2" "-f maxcut,nosuch" "-x" "extra"; do
    # shellcheck disable=SC2086
    "$run" $words > /dev/null 2>&1
    status=$?
    [ $status = 2 ] || failed "'bench/run $words' ends with status $status, not 2"
done

out=$("$run" -d "$here/no such folder" 2>&1)
status=$?
[ $status = 0 ] && [[ $out == *"no benchmark instances at"*"nothing measured"* ]] ||
    failed "without instances: status $status, output: $out"

# A real run: quarrix's own lines must still read as the table expects.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/data/maxcut"
cp "$source/examples/data/maxcut_60.txt" "$work/data/maxcut/G1.txt"
# Relative folders name folders of the current one, though the runs start
# from the project's root.
live=$(cd "$work" && "$run" -b "$(realpath --relative-to="$work" "$build")" -d data -k logs -t 1 -j 1 -f maxcut | table)
echo "$live" | grep -Eq '^maxcut +G1 +[0-9]+ +11624 +[0-9.]+ +[0-9.]+ +[0-9.]+e\+[0-9]+ +[0-9.]+e\+[0-9]+$' ||
    failed "the row of a real run: $live"
again=$("$run" -d "$work/data" -r "$work/logs" -f maxcut | table)
[ "$live" = "$again" ] || failed "the kept run tabulates otherwise: $again"

[ $fail = 0 ] && echo "bench/run: tables as expected"
exit $fail
