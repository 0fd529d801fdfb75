#!/usr/bin/env bash
# Builds the libFuzzer targets of tests/fuzz with clang (AddressSanitizer
# and UBSan on) and runs each for SECONDS (default 30), two at a time. Each
# starts from its seed corpus in tests/fuzz/corpus/<target>, which also
# holds the inputs of crashes found before (run first, as regression
# cases); new inputs go to build/fuzz/corpus, never into the repository.
# Prints each target's executions; exits non-zero when any target crashed,
# leaked or timed out, naming the input that did it.
#
#   scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}

missing=()
for package in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=()
  [ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

build=build/fuzz
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ -DCORVANE_FUZZ=ON \
  -DCORVANE_WERROR=ON > /dev/null
cmake --build "$build" -j2 --target fuzz_targets > "$build/build.log" 2>&1 || { tail -30 "$build/build.log"; exit 1; }

# Runs one target; its log is build/fuzz/<target>.log.
run_target() {
  local target=$1 work="$build/corpus/$1" log="$build/$1.log"
  mkdir -p "$work" "$build/artifacts"
  "$build/bin/$target" "$work" "tests/fuzz/corpus/$target" -max_total_time="$seconds" -timeout=20 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build/artifacts/$target-" > "$log" 2>&1
}

targets=$(sed -n 's/^corvane_fuzz_target(\([a-z_]*\).*/\1/p' tests/fuzz/CMakeLists.txt)
failed=0
pids=()
names=()
for target in $targets; do
  run_target "$target" &
  pids+=($!)
  names+=("$target")
  if [ ${#pids[@]} -eq 2 ]; then
    for i in 0 1; do wait "${pids[$i]}" || { failed=1; echo "fuzz: ${names[$i]} FAILED"; }; done
    pids=()
    names=()
  fi
done
for i in "${!pids[@]}"; do wait "${pids[$i]}" || { failed=1; echo "fuzz: ${names[$i]} FAILED"; }; done

for target in $targets; do
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$target.log" | tail -1)
  echo "fuzz: $target ${runs:-?} executions in ${seconds}s"
  if grep -q "^==[0-9]*==ERROR\|^SUMMARY: \|Test unit written to" "$build/$target.log"; then
    grep -m3 "ERROR\|SUMMARY\|Test unit written to" "$build/$target.log" | sed 's/^/  /'
  fi
done
exit $failed
