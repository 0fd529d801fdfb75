#!/usr/bin/env bash
# The main job: builds the component, the extraction library and the host,
# then ranks the sites of this machine's browser, or, on a machine without
# one, of the bundled sample profile.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_WERROR=ON
cmake --build build/release -j2 --target corvane CorvaneDataProvider VisitHarvest
corvane=build/release/bin/corvane
if [ "$#" -gt 0 ]; then
  exec "$corvane" "$@"
fi
# The extraction library itself says whether it finds a browser profile
# here (every place it looks: the usual folders, snap, flatpak, XDG).
if "$corvane" browsers; then
  "$corvane" update
  "$corvane" sites
else
  echo "No browser profile found: running the demo on the bundled sample profile."
  "$corvane" demo
fi
