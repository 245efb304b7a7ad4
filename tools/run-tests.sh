#!/usr/bin/env bash
# Runs the test groups of a build in order (unit and integration tests, scenarios, the GUI
# smoke test, or the groups named) and ends with one line: how many tests passed and failed in
# all. TESTS_EXCLUDED is a ctest regular expression of tests to leave out.
set -uo pipefail
build=${1:?usage: run-tests.sh BUILD_DIR [unit|scenario|gui|package|threads]...}
shift
cd "$build" || exit 2

# threads: the tests of every component that runs threads of its own, for ThreadSanitizer.
declare -A pattern=([unit]='^(unit|integration)\.' [scenario]='^scenario\.' [gui]='^gui\.' [package]='^package\.'
                    [threads]='^(unit\.(runtime|audio|platform)|integration\.(media|audio|convert|http|scanner|cdrom|writer))\.')
groups=()
for name in "${@:-unit scenario gui}"; do
  for g in $name; do
    [ -n "${pattern[$g]:-}" ] || { echo "no test group $g" >&2; exit 2; }
    groups+=("${pattern[$g]}")
  done
done
exclude=()
[ -n "${TESTS_EXCLUDED:-}" ] && exclude=(-E "$TESTS_EXCLUDED")

passed=0
failed=0
skipped=0
for group in "${groups[@]}"; do
  echo "=== tests matching $group"
  out=$(ctest --output-on-failure --no-tests=error -R "$group" "${exclude[@]}" 2>&1)
  status=$?
  echo "$out"
  line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' <<<"$out" | tail -n 1)
  if [ -n "$line" ]; then
    total=$(sed -E 's/.*out of ([0-9]+).*/\1/' <<<"$line")
    bad=$(sed -E 's/.* ([0-9]+) tests? failed.*/\1/' <<<"$line")
    skips=$(grep -cE '\(Skipped\)$' <<<"$out")
    passed=$((passed + total - bad - skips))
    failed=$((failed + bad))
    skipped=$((skipped + skips))
  elif [ $status -ne 0 ]; then
    failed=$((failed + 1))
  fi
done
[ "$skipped" -gt 0 ] && echo "${skipped} tests skipped (their reasons are in the output above)"
echo "${passed} tests passed, ${failed} tests failed"
[ "$failed" -eq 0 ]
