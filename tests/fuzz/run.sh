#!/usr/bin/env bash
# Runs each fuzzing harness of a -DQUARRIX_FUZZ=ON build for SECONDS, first
# on its regression cases (inputs that once failed, kept under
# tests/fuzz/regressions/<harness>/), then fuzzing from a seed corpus: the
# end-to-end programs for the program harness, their command-line words for
# the command-line harness. A harness that finds a failure stops the run;
# libFuzzer leaves the input as crash-* in the current folder.
#   tests/fuzz/run.sh BUILD_DIR SECONDS [HARNESS...]
set -euo pipefail
build=$1 seconds=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
e2e=$here/../e2e
harnesses=("$@")
[ ${#harnesses[@]} -eq 0 ] && harnesses=(fuzz_program fuzz_cmdline fuzz_model)

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:allocator_may_return_null=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
for harness in "${harnesses[@]}"; do
  binary=$build/tests/fuzz/$harness
  if [ -d "$here/regressions/$harness" ]; then
    echo "+ $harness: regression cases"
    "$binary" -runs=0 -timeout=20 "$here/regressions/$harness"/*
  fi
  corpus=$(mktemp -d)
  case $harness in
    fuzz_program) find "$e2e" -name '*.qxm' -type f -size -8k -exec cp {} "$corpus"/ \; ;;
    fuzz_cmdline) find "$e2e" -name '*.args' -type f -exec cp {} "$corpus"/ \; ;;
  esac
  echo "+ $harness: ${seconds} s from $(ls "$corpus" | wc -l) seeds"
  "$binary" -max_total_time="$seconds" -artifact_prefix="$PWD/" -timeout=20 -rss_limit_mb=3072 -max_len=8192 \
    -print_final_stats=1 "$corpus" 2>&1 | grep -v '^#[0-9]*.*\(NEW\|REDUCE\|pulse\)' || {
      rm -rf "$corpus"; echo "$harness failed"; exit 1; }
  rm -rf "$corpus"
done
