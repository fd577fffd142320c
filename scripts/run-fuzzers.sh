#!/usr/bin/env bash
# run-fuzzers.sh BUILD SECONDS -- runs every libFuzzer target of BUILD over its seed corpus in
# fuzz/corpus/<target>. SECONDS 0 replays the corpus once; otherwise each target fuzzes that long,
# keeping what it learns in a scratch copy of the corpus (the repository's seeds stay small).
set -euo pipefail
build=$1
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
shopt -s nullglob
targets=("$build"/fuzz/fuzz_*)
if [ ${#targets[@]} -eq 0 ]; then
  echo "run-fuzzers: no fuzz targets in $build/fuzz"
  exit 0
fi
export ASAN_OPTIONS=detect_leaks=1:halt_on_error=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
passed=0
for target in "${targets[@]}"; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  name=${name#fuzz_}
  seeds="$root/fuzz/corpus/$name"
  if [ "$seconds" = "0" ]; then
    "$target" -runs=0 "$seeds" >/dev/null 2>"$build/fuzz/$name.log" || { cat "$build/fuzz/$name.log"; exit 1; }
    echo "fuzz corpus $name: $(ls "$seeds" | wc -l) inputs replayed, no fault"
  else
    scratch="$build/fuzz/corpus-$name"
    mkdir -p "$scratch"
    "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 -print_final_stats=1 "$scratch" "$seeds" \
      2>"$build/fuzz/$name.log" || { tail -n 60 "$build/fuzz/$name.log"; exit 1; }
    echo "fuzz $name: $(grep -o 'stat::number_of_executed_units: [0-9]*' "$build/fuzz/$name.log" || tail -n1 "$build/fuzz/$name.log")"
  fi
  passed=$((passed + 1))
done
echo "fuzz: $passed targets, no fault"
