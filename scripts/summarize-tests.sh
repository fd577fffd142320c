#!/usr/bin/env bash
# summarize-tests.sh LOG... -- adds up the CTest results of several runs into one closing line.
set -euo pipefail
passed=0
failed=0
for log in "$@"; do
  line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n1)
  total=$(sed -E 's/.* out of ([0-9]+).*/\1/' <<<"$line")
  bad=$(sed -E 's/.*passed, ([0-9]+) tests? failed.*/\1/' <<<"$line")
  passed=$((passed + total - bad))
  failed=$((failed + bad))
done
echo "tests: $passed passed, $failed failed"
