#!/usr/bin/env bash
# Mutation check: plants each deliberate fault of a list in the code, one at a time, builds
# only the test programs that should notice it and runs only those, then puts the file back.
# A fault no test notices is a hole in the suite.
#
#   scripts/mutation-check.sh [-l LIST] [-s SOURCE_DIR] [-b BUILD_DIR] [PATTERN]
#
# LIST (default scripts/mutations.txt) holds one fault a line, four fields split by " @@ ":
#   source file @@ exact text found once in it @@ its faulty replacement @@ tests
# where tests are words "target" or "target:GTestFilter" (the test program, and which of its
# tests to run); a word "+target" is only built (a program the tests start, such as tsly).
# Blank lines and lines starting with # are skipped. PATTERN keeps only the faults whose line
# holds it. A fault whose replacement does not build counts as "broken", neither caught nor
# missed.
#
# The build folder (default SOURCE_DIR/build-mut) is configured once and shares ccache with
# the other builds. Each fault's file is saved first and restored after its run, also when the
# script is interrupted; the restored file gets a new time so that ninja rebuilds it. Prints
# one line a fault and a total; exit status 0 when no fault was missed.
set -uo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
list=$here/scripts/mutations.txt
src=$here
build=
while getopts "l:s:b:" opt; do
  case $opt in
    l) list=$(realpath "$OPTARG") ;;
    s) src=$(realpath "$OPTARG") ;;
    b) build=$OPTARG ;;
    *) sed -n '2,18p' "$0"; exit 2 ;;
  esac
done
shift $((OPTIND - 1))
pattern=${1:-}
build=${build:-$src/build-mut}
jobs=${MUTATION_JOBS:-2}

if [[ ! -f $build/build.ninja ]]; then
  cmake -S "$src" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null || exit 2
fi

saved=
saved_file=
restore() {
  if [[ -n $saved_file ]]; then
    cp "$saved" "$saved_file"
    saved_file=
  fi
}
# Builds and tests run in the background and are waited for, so that an interrupt is
# handled at once: the running step is ended and the source put back.
child=
in_background() {
  "$@" &
  child=$!
  wait "$child"
  local status=$?
  child=
  return $status
}
trap '[[ -n $child ]] && kill "$child" 2>/dev/null; restore; rm -f "$saved"; echo "interrupted: source restored" >&2; exit 130' INT TERM
trap 'restore; rm -f "$saved"' EXIT
saved=$(mktemp)
log_dir=$build/mutation-logs
mkdir -p "$log_dir"

export QT_QPA_PLATFORM=offscreen

# Every test program the list names must pass unchanged first, or a fault would count as
# caught by a test that fails anyway.
mapfile -t baseline < <(grep -v '^\s*#' "$list" | grep ' @@ ' | grep -F -- "$pattern" |
  awk -F' @@ ' '{print $4}' | tr ' ' '\n' | grep -v '^+' | grep -v '^$' | sort -u)
base_targets=()
for w in "${baseline[@]}"; do base_targets+=("${w%%:*}"); done
mapfile -t base_build < <(grep -v '^\s*#' "$list" | grep ' @@ ' | grep -F -- "$pattern" |
  awk -F' @@ ' '{print $4}' | tr ' ' '\n' | grep '^+' | sed 's/^+//' | sort -u)
if ! ninja -C "$build" -j "$jobs" $(printf '%s\n' "${base_targets[@]}" "${base_build[@]}" | sort -u) \
    >"$log_dir/baseline.log" 2>&1; then
  echo "the unchanged tree does not build, see $log_dir/baseline.log"
  exit 2
fi
for w in "${baseline[@]}"; do
  target=${w%%:*}
  filter='*'
  [[ $w == *:* ]] && filter=${w#*:}
  start=$SECONDS
  if ! (cd "$build" && timeout 600 "./tests/$target" --gtest_filter="$filter" --gtest_brief=1) \
      >>"$log_dir/baseline.log" 2>&1; then
    echo "the unchanged $target fails, see $log_dir/baseline.log"
    exit 2
  fi
  echo "baseline $w passes ($((SECONDS - start)) s)"
done

caught=0 missed=0 broken=0 n=0
while IFS= read -r line || [[ -n $line ]]; do
  [[ -z ${line// /} || $line == \#* ]] && continue
  [[ -n $pattern && $line != *"$pattern"* ]] && continue
  n=$((n + 1))
  file=${line%% @@ *}; rest=${line#* @@ }
  find=${rest%% @@ *}; rest=${rest#* @@ }
  replace=${rest%% @@ *}; tests=${rest#* @@ }
  id=$(printf '%02d' "$n")
  label="$id $file: '$find' -> '$replace'"
  path=$src/$file
  count=$(python3 -c 'import sys; print(open(sys.argv[1]).read().count(sys.argv[2]))' "$path" "$find" 2>/dev/null)
  if [[ $count != 1 ]]; then
    echo "BAD     $label (text found ${count:-0} times)"
    broken=$((broken + 1))
    continue
  fi
  cp "$path" "$saved"
  saved_file=$path
  python3 - "$path" "$find" "$replace" <<'EOF'
import sys
p, a, b = sys.argv[1:4]
t = open(p).read()
open(p, 'w').write(t.replace(a, b, 1))
EOF
  targets=() runs=()
  for w in $tests; do
    if [[ $w == +* ]]; then targets+=("${w#+}"); else targets+=("${w%%:*}"); runs+=("$w"); fi
  done
  log=$log_dir/$id.log
  if ! in_background ninja -C "$build" -j "$jobs" "${targets[@]}" >"$log" 2>&1; then
    echo "BROKEN  $label (does not build, see $log)"
    broken=$((broken + 1))
    restore
    continue
  fi
  by=
  for w in "${runs[@]}"; do
    target=${w%%:*}
    filter='*'
    [[ $w == *:* ]] && filter=${w#*:}
    # A test program killed by the fault (a crash) is a catch too; bash's own note of the
    # signal goes to the log, not to the check's lines.
    if ! { in_background env -C "$build" timeout 600 "./tests/$target" --gtest_filter="$filter" --gtest_brief=1 >>"$log" 2>&1; } 2>>"$log"; then
      failed=$(grep -oE '^\[  FAILED  \] [A-Za-z0-9_/.]+' "$log" | head -3 | awk '{print $4}' | tr '\n' ' ')
      by="$target ${failed:-(exit status)}"
      break
    fi
  done
  restore
  if [[ -n $by ]]; then
    echo "caught  $label by $by"
    caught=$((caught + 1))
  else
    echo "MISSED  $label ($tests)"
    missed=$((missed + 1))
  fi
done <"$list"

# The sources are as they were; the programs built from the faults are brought back in step.
ninja -C "$build" -j "$jobs" $(printf '%s\n' "${base_targets[@]}" "${base_build[@]}" | sort -u) \
  >"$log_dir/rebuild.log" 2>&1 || echo "the programs could not be rebuilt, see $log_dir/rebuild.log"
echo "total: $n faults, $caught caught, $missed missed, $broken broken or bad"
[[ $missed == 0 && $broken == 0 ]]
