#!/usr/bin/env bash
# Every row of the bad-input table names tests that exist: each `e2e/...`
# case has its expected output, each unit test is defined, and `hostile`
# checks are run by the hostile environment script.
#   check_badinput_table.sh SOURCE_DIR
set -u
src=$1 table=$1/docs/badinput.md
missing=0 rows=0
while IFS= read -r row; do
  rows=$((rows + 1))
  tests=$(printf '%s\n' "$row" | awk -F'|' '{print $(NF-1)}')
  found=0
  for name in $(printf '%s\n' "$tests" | grep -o 'e2e/[A-Za-z0-9_/]*'); do
    found=1
    [ -f "$src/tests/${name}.out" ] || { echo "missing case: $name"; missing=$((missing + 1)); }
  done
  for check in $(printf '%s\n' "$tests" | grep -o 'hostile` ([a-z_, ]*)' | sed 's/.*(//; s/)//; s/,/ /g'); do
    found=1
    grep -qE "^ *check $check |ok   $check\"" "$src/tests/launcher/hostile_environment.sh" ||
      { echo "missing hostile check: $check"; missing=$((missing + 1)); }
  done
  for unit in $(printf '%s\n' "$tests" | grep -o 'unit test `[A-Za-z.]*`' | sed 's/.*`\(.*\)`/\1/'); do
    found=1
    suite=${unit%%.*} test=${unit#*.}
    grep -rq "TEST($suite, $test)" "$src/tests" || { echo "missing unit test: $unit"; missing=$((missing + 1)); }
  done
  [ $found = 1 ] || { echo "row without a test: $row"; missing=$((missing + 1)); }
done < <(grep '^| ' "$table" | tail -n +2 | grep -v '^|---')
echo "$rows rows, $missing problems"
[ $rows -gt 20 ] && [ $missing = 0 ]
