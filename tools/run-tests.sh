#!/usr/bin/env bash
# Runs the test groups of a build in order (unit and integration tests, scenarios, the GUI
# smoke test) and ends with one line: how many tests passed and failed in all.
set -uo pipefail
build=${1:?usage: run-tests.sh BUILD_DIR}
cd "$build" || exit 2

passed=0
failed=0
for group in '^(unit|integration)\.' '^scenario\.' '^gui\.'; do
  echo "=== tests matching $group"
  out=$(ctest --output-on-failure --no-tests=error -R "$group" 2>&1)
  status=$?
  echo "$out"
  line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' <<<"$out" | tail -n 1)
  if [ -n "$line" ]; then
    total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$line")
    bad=$(sed -E 's/.* ([0-9]+) tests? failed.*/\1/' <<<"$line")
    passed=$((passed + total - bad))
    failed=$((failed + bad))
  elif [ $status -ne 0 ]; then
    failed=$((failed + 1))
  fi
done
echo "${passed} tests passed, ${failed} tests failed"
[ "$failed" -eq 0 ]
