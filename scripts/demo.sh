#!/usr/bin/env bash
# Builds the component and the host and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_WERROR=ON
cmake --build build/release -j2 --target corvane CorvaneDataProvider
build/release/bin/corvane "$@"
