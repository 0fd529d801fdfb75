#!/usr/bin/env bash
# Builds everything with warnings as errors and runs the whole suite, then
# builds and runs it again under AddressSanitizer and UndefinedBehaviorSanitizer.
# Installs what is missing first, the browsers included: with CI=true a test
# whose browser is missing fails instead of being skipped. Last, every
# fuzzing target runs for 30 seconds; a crash fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --test

cmake -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_WERROR=ON
cmake --build build/release -j2
(cd build/release && ctest --output-on-failure -j2)

cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DCORVANE_WERROR=ON -DCORVANE_SANITIZE=ON
cmake --build build/sanitize -j2
(cd build/sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j2)

scripts/fuzz.sh 30
