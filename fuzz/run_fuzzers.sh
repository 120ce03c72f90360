#!/usr/bin/env bash
# Runs every fuzz program of a build for a while and prints what each did.
#
#   fuzz/run_fuzzers.sh BUILD_DIR [SECONDS]
#
# Each program starts from its seeds in fuzz/corpus/<name>/ and from what
# earlier runs found (kept in BUILD_DIR/corpus/<name>/), with the dictionary
# fuzz/<name>.dict when there is one. A crash, leak or sanitizer report
# stops the run with its input saved in BUILD_DIR/findings/ and a failing
# exit status. Environment: KRM_FUZZ_RUNS limits the executions per program.
set -euo pipefail

build="${1:?usage: $0 BUILD_DIR [SECONDS]}"
seconds="${2:-60}"
here="$(cd "$(dirname "$0")" && pwd)"
status=0

for source in "$here"/*_fuzz.cpp; do
  name="$(basename "$source" .cpp)"
  bin="$build/fuzz/$name"
  [ -x "$bin" ] || { echo "fuzz: $bin is not built"; exit 1; }
  corpus="$build/corpus/$name"
  findings="$build/findings/$name"
  mkdir -p "$corpus" "$findings"
  args=(-max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$findings/")
  [ -n "${KRM_FUZZ_RUNS:-}" ] && args+=(-runs="$KRM_FUZZ_RUNS")
  [ -f "$here/$name.dict" ] && args+=(-dict="$here/$name.dict")
  seeds=()
  [ -d "$here/corpus/$name" ] && seeds+=("$here/corpus/$name")
  log="$build/$name.log"
  echo "fuzz: $name for up to $seconds s"
  if "$bin" "${args[@]}" "$corpus" "${seeds[@]}" >"$log" 2>&1; then
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec|peak_rss_mb)' "$log" || true
    grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -1 || true
    echo "fuzz: $name found nothing"
  else
    tail -40 "$log"
    echo "fuzz: $name FAILED; inputs in $findings"
    status=1
  fi
done
exit $status
