#!/bin/sh
# A fuzzing campaign: each target named (all by default) runs until it has executed RUNS inputs
# (10 million unless told), growing its own corpus under the build folder, which is kept, so a
# later campaign starts where this one ended. Each target's libFuzzer output goes to
# CAMPAIGN/TARGET.log and one line of figures is printed per target; a crash, leak or timeout
# leaves its input in CAMPAIGN and makes the script fail. WORKERS=N shares the RUNS among N
# processes on one corpus (libFuzzer's -jobs), for the slow targets on a machine of N cores; their
# logs are CAMPAIGN/TARGET.N.log.
#   fuzz/campaign.sh [TARGET...]      RUNS=10000000 WORKERS=1 JOBS=2 BUILD_DIR=build-fuzz
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${BUILD_DIR:-$here/../build-fuzz}
runs=${RUNS:-10000000}
workers=${WORKERS:-1}
campaign=$build/campaign

cmake -S "$here" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "${JOBS:-2}" >/dev/null

targets=${*:-fuzz_cIDV3 fuzz_FrameScan fuzz_TextFile fuzz_Settings fuzz_Catalogue fuzz_DiscSheet fuzz_ImageCue fuzz_EqIni fuzz_WaveFormatRecord}
failed=0
for target in $targets; do
    corpus=$campaign/$target
    mkdir -p "$corpus"
    cp -n "$here/corpus/$target"/* "$corpus"/
    start=$(date +%s)
    # 10 s for one input is a hang; 2 GB is more than any of these readers may take.
    set -- -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$campaign/$target-"
    if [ "$workers" -gt 1 ]; then
        # Each worker runs its share; libFuzzer writes worker N's output to fuzz-N.log here.
        rm -f "$campaign/$target".*.log
        if (cd "$campaign" && "$build/$target" -jobs="$workers" -workers="$workers" \
                -runs=$(( (runs + workers - 1) / workers )) "$@" "$corpus" >"$campaign/$target.log" 2>&1); then
            result="no finding"
        else
            result="FINDING, see $campaign/$target.log"
        fi
        n=0
        while [ $n -lt "$workers" ]; do
            if [ -f "$campaign/fuzz-$n.log" ]; then
                mv "$campaign/fuzz-$n.log" "$campaign/$target.$n.log"
                grep -qE 'ERROR: |^SUMMARY: ' "$campaign/$target.$n.log" \
                    && result="FINDING, see $campaign/$target.$n.log"
            fi
            n=$((n + 1))
        done
        [ "$result" = "no finding" ] || failed=1
        # No worker log at all (none started) leaves nothing to count rather than stdin to read.
        logs=$(ls "$campaign/$target".*.log 2>/dev/null) || logs=/dev/null
    elif "$build/$target" -runs="$runs" "$@" "$corpus" >"$campaign/$target.log" 2>&1; then
        result="no finding"
        logs=$campaign/$target.log
    else
        result="FINDING, see $campaign/$target.log"
        failed=1
        logs=$campaign/$target.log
    fi
    seconds=$(( $(date +%s) - start ))
    # shellcheck disable=SC2086 # one name per line; the build folder's path has no spaces
    executed=$(sed -n 's/^stat::number_of_executed_units: *//p' $logs | awk '{ n += $1 } END { if (NR) print n }')
    pace=$(sed -n 's/^stat::average_exec_per_sec: *//p' $logs | awk '{ n += $1 } END { if (NR) print n }')
    echo "$target: ${executed:-?} executions in $seconds s (${pace:-?} a second), corpus of $(ls "$corpus" | wc -l) inputs: $result"
done
exit $failed
