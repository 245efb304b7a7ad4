#!/usr/bin/env bash
# Installs what the program needs (Debian 12), builds it, then runs it or all its tests.
#   tools/dev.sh run    build and start the program
#   tools/dev.sh test   build and run unit tests, scenarios, the GUI smoke test and, as root, the
#                       package test (it installs the package, starts it and removes it), in order
#   tools/dev.sh sanitize [unit] [scenario]
#                       build without the GUI under AddressSanitizer and UndefinedBehaviorSanitizer
#                       in build-asan and run the unit and integration tests and the scenarios
#                       (or the groups named); any finding fails the test it happens in
#   tools/dev.sh sanitize thread
#                       build without the GUI under ThreadSanitizer in build-tsan and run the tests
#                       of everything that runs threads (the trigger's worker, the player's ring and
#                       output, the HTTP transfer, the scanner, the CD reader, the writing engine)
#   tools/dev.sh package  build and make the Debian package in the build folder
set -euo pipefail

what=${1:-}
case "$what" in run|test|build|package|sanitize) ;; *) echo "usage: $0 run|test|build|package|sanitize" >&2; exit 2 ;; esac
shift

root=$(cd "$(dirname "$0")/.." && pwd)
build=${BRASSWICK_BUILD_DIR:-$root/build}
configuration=(-DBRASSWICK_PACKAGE_TEST=ON)
targets=()
if [ "$what" = sanitize ] && [ "${1:-}" = thread ]; then
  build=${BRASSWICK_THREAD_SANITIZE_BUILD_DIR:-$root/build-tsan}
  configuration=(-DBRASSWICK_SANITIZE=thread -DBRASSWICK_BUILD_GUI=OFF -DBRASSWICK_BUILD_BENCH=OFF)
  # Only the test programs of the threaded components (run-tests.sh's "threads" group).
  targets=(--target runtime_tests platform_tests audio_tests audio_integration_tests media_tests convert_tests
           http_tests scanner_tests cdrom_tests writer_integration_tests)
elif [ "$what" = sanitize ]; then
  build=${BRASSWICK_SANITIZE_BUILD_DIR:-$root/build-asan}
  configuration=(-DBRASSWICK_SANITIZE=ON -DBRASSWICK_BUILD_GUI=OFF -DBRASSWICK_BUILD_BENCH=OFF)
  # The scenarios alone need only the scenario driver.
  [ "$*" = scenario ] && targets=(--target scenario)
fi

packages=(build-essential cmake ninja-build pkg-config
          qt6-base-dev libgl-dev
          libmp3lame-dev lame
          libmpg123-dev libsndfile1-dev libsoxr-dev zlib1g-dev libcdio-dev libcdio-paranoia-dev
          wodim mpg123 sox
          portaudio19-dev libasound2-dev libfftw3-dev
          libcdio-utils cd-paranoia cdrdao whipper
          libgraphicsmagick++1-dev graphicsmagick libsane-dev libsane1 sane-utils poppler-utils cups-client
          libcurl4-openssl-dev
          libgtest-dev libbenchmark-dev
          clang libclang-rt-14-dev
          xvfb xauth x11-utils xdotool imagemagick qt6-qpa-plugins
          dpkg-dev file lintian appstream desktop-file-utils xdg-utils)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  echo "Installing: ${missing[*]}"
  $sudo apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
fi

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${configuration[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" "${targets[@]}"

case "$what" in
  build) ;;
  run)
    exec "$build/prog/brasswick" ;;
  test)
    exec "$root/tools/run-tests.sh" "$build" unit scenario gui package ;;
  sanitize)
    if [ "${1:-}" = thread ]; then
      # A data race or a lock taken in two orders fails the test it happens in.
      export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:suppressions=$root/tools/tsan.supp"
      exec "$root/tools/run-tests.sh" "$build" threads
    fi
    # Leaks count too; the fuzz corpus replay is left out, being an address-sanitized build of
    # its own that the plain test run already makes.
    export ASAN_OPTIONS=detect_leaks=1:halt_on_error=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    export LSAN_OPTIONS=suppressions=$root/tools/lsan.supp:print_suppressions=0
    export TESTS_EXCLUDED='^unit\.fuzz\.corpus$'
    exec "$root/tools/run-tests.sh" "$build" "${@:-unit scenario}" ;;
  package)
    cd "$build" && exec cpack -G DEB ;;
esac
