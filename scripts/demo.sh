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
config="${XDG_CONFIG_HOME:-$HOME/.config}"
if ls "$config"/google-chrome*/*/History "$config"/chromium/*/History \
      "$HOME"/.mozilla/firefox/*/places.sqlite >/dev/null 2>&1; then
  "$corvane" update
  "$corvane" sites
else
  "$corvane" demo
fi
