#!/bin/sh
# Builds the fuzz targets with clang in their own build folder and runs each over its seed
# corpus once; any crash fails the script. FUZZ_SECONDS=60 fuzzes each target that long as well,
# on a scratch copy of the corpus.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
build=${BUILD_DIR:-$here/../build-fuzz}
jobs=${JOBS:-2}

cmake -S "$here" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$jobs"

for target in fuzz_cIDV3 fuzz_FrameScan fuzz_TextFile fuzz_Settings fuzz_Catalogue \
              fuzz_DiscSheet fuzz_ImageCue fuzz_EqIni fuzz_WaveFormatRecord; do
    echo "== $target: corpus"
    "$build/$target" -runs=0 "$here/corpus/$target"
    if [ -n "${FUZZ_SECONDS:-}" ]; then
        scratch=$(mktemp -d)
        cp "$here/corpus/$target"/* "$scratch"/
        echo "== $target: $FUZZ_SECONDS s"
        "$build/$target" -max_total_time="$FUZZ_SECONDS" -print_final_stats=1 "$scratch"
        rm -rf "$scratch"
    fi
done
