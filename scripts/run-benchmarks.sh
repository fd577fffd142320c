#!/usr/bin/env bash
# run-benchmarks.sh BUILD -- runs every benchmark program of BUILD and prints its figures.
set -euo pipefail
build=$1
shopt -s nullglob
for b in "$build"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" "${@:2}"
done
