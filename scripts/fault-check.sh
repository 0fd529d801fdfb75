#!/usr/bin/env bash
# Plants each fault of a list in the source, one at a time, builds, runs the
# whole suite and puts the source back, to see which faults the tests catch.
#
#   scripts/fault-check.sh [FAULTS] [--only N[,N...]]
#
# FAULTS defaults to tests/faults/faults.txt (its header says the format).
# Builds in build/fault (release with debug info, warnings not fatal: a
# fault may leave a variable unused). A fault whose text is not in its file
# exactly once is reported as stale and not run; one that does not build is
# reported apart and counts neither way. Prints one line per fault and a
# summary: caught, missed, stale. Slow (a build and a suite per fault): not
# part of CI.
set -uo pipefail
cd "$(dirname "$0")/.."

faults=tests/faults/faults.txt
only=""
while [ $# -gt 0 ]; do
  case "$1" in
    --only) only=",$2,"; shift 2 ;;
    *) faults=$1; shift ;;
  esac
done
build=build/fault
log=$build/fault-check.log

# The file being changed and its saved copy, put back on any exit.
current=""
saved=""
restore() {
  if [ -n "$current" ]; then
    cp -p "$saved" "$current" && touch "$current"
    current=""
  fi
}
trap 'restore; exit 130' INT TERM
trap restore EXIT

# Replaces OLD by NEW in FILE when OLD is there exactly once; exit status 2
# when it is not.
plant() {
  OLD=$2 NEW=$3 perl -0777 -i -pe '
    my ($old, $new) = ($ENV{OLD}, $ENV{NEW});
    my $count = () = /\Q$old\E/g;
    if ($count != 1) { $bad = 1; }
    else { s/\Q$old\E/$new/; }
    END { exit 2 if $bad }' "$1"
}

suite() {
  (cd "$build" && ctest -j2 --stop-on-failure --timeout 180 --output-on-failure) >"$log" 2>&1
}

first_failure() {
  grep -m1 -E '\*\*\*(Failed|Timeout|Exception)' "$log" | sed -E 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+).*/\1/'
}

mkdir -p "$build"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCORVANE_WERROR=OFF >/dev/null || exit 1
echo "fault-check: building and running the suite without a fault first"
if ! cmake --build "$build" -j2 >"$log" 2>&1 || ! suite; then
  echo "fault-check: the suite fails without any fault; see $log" >&2
  exit 1
fi

saved=$(mktemp)
number=0 caught=0 missed=0 stale=0 broken=0
missed_list=""
# Blocks of four lines: "# what", path, "- old", "+ new".
while IFS= read -r what && IFS= read -r path && IFS= read -r old && IFS= read -r new; do
  number=$((number + 1))
  what=${what#\# } old=${old#- } new=${new#+ }
  [ -n "$only" ] && [[ "$only" != *",$number,"* ]] && continue
  if [ ! -f "$path" ]; then
    printf '%3d stale   %s (no file %s)\n' "$number" "$what" "$path"
    stale=$((stale + 1)); continue
  fi
  cp -p "$path" "$saved"
  current=$path
  if ! plant "$path" "$old" "$new"; then
    restore
    printf '%3d stale   %s (text not once in %s)\n' "$number" "$what" "$path"
    stale=$((stale + 1)); continue
  fi
  if ! cmake --build "$build" -j2 >"$log" 2>&1; then
    restore
    printf '%3d broken  %s (does not build)\n' "$number" "$what"
    broken=$((broken + 1)); continue
  fi
  if suite; then
    printf '%3d MISSED  %s\n' "$number" "$what"
    missed=$((missed + 1)); missed_list+=" $number"
  else
    printf '%3d caught  %s (by %s)\n' "$number" "$what" "$(first_failure)"
    caught=$((caught + 1))
  fi
  restore
done < <(awk 'BEGIN { RS = ""; FS = "\n" }
             NF == 4 && $1 ~ /^# / && $2 !~ /^#/ && $3 ~ /^- / && $4 ~ /^\+ / { print $1; print $2; print $3; print $4 }
           ' "$faults")
rm -f "$saved"
# Rebuild once more so that build/fault holds the source as it stands.
cmake --build "$build" -j2 >"$log" 2>&1

run=$((caught + missed))
percent=0
[ "$run" -gt 0 ] && percent=$((100 * caught / run))
echo "fault-check: caught $caught of $run faults ($percent%); missed $missed${missed_list:+ (numbers$missed_list)};" \
     "stale $stale; not building $broken"
[ "$stale" -eq 0 ] && [ "$broken" -eq 0 ]
