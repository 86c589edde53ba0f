#!/usr/bin/env bash
# Fuzzes the readers of outside input with libFuzzer under AddressSanitizer and
# UndefinedBehaviorSanitizer, in the hardening build folder (see scripts/hardening-build.sh).
#   scripts/fuzz.sh [--seconds N] [--replay-only] [--replay-only-for TARGET]... [TARGET...]
# Each target first replays its kept regression inputs (fuzz/regressions/<target>/), then,
# unless --replay-only (for all, or for the target named), fuzzes for N seconds (default 600: a long run) from its seeds and
# from the corpus that earlier runs grew in <build>/fuzz-corpus/<target>/. Anything found
# is written to <build>/fuzz-artifacts/<target>/ and the script exits 1.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/hardening-build.sh
shopt -s nullglob

seconds=600
replay_only=0
replay_only_for=" "
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds=$2; shift 2 ;;
    --replay-only) replay_only=1; shift ;;
    --replay-only-for) replay_only_for+="$2 "; shift 2 ;;
    -h|--help) sed -n '2,10p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) targets+=("$1"); shift ;;
  esac
done
all_targets=(fuzz_asc fuzz_project fuzz_rules_frontend fuzz_rules_engine fuzz_model_frontend
             fuzz_model_engine fuzz_settings fuzz_preferences fuzz_report_xml fuzz_variables
             fuzz_request fuzz_xlsx fuzz_xls fuzz_csv)
[ ${#targets[@]} -gt 0 ] || targets=("${all_targets[@]}")

if ! hardening_toolchain_ok; then
  echo "fuzz: SKIPPED: clang with its libFuzzer runtime (clang, libclang-rt-14-dev) is not installed"
  exit 0
fi
hardening_build "${targets[@]}" make_seeds

# Seeds: the examples and the tests' data, the files the program itself writes, and the few
# hand-made ones in fuzz/corpus/<target>/.
seeds=$hardening_dir/fuzz-seeds
rm -rf "$seeds"
mkdir -p "$seeds"
"$hardening_dir/fuzz/make_seeds" "$seeds" examples/*.ASC tests/engine/data/*.asc >/dev/null
add_seeds() {  # TARGET FILE...
  local t=$1; shift
  mkdir -p "$seeds/$t"
  for f in "$@"; do [ -f "$f" ] && cp "$f" "$seeds/$t/$(echo "$f" | tr '/' '_')"; done
  return 0
}
add_seeds fuzz_asc examples/*.ASC tests/engine/data/*.asc \
  $(find tests/dataset/data -type f \( -iname '*.asc' \) | sort)
add_seeds fuzz_project examples/*.xml
add_seeds fuzz_rules_frontend resources/program/ENGINE.CND
add_seeds fuzz_rules_engine resources/program/ENGINE.CND
add_seeds fuzz_report_xml $(find tests/dataset/data/catalogue -type f | sort)
for d in fuzz/corpus/*/; do add_seeds "$(basename "$d")" "$d"*; done
mkdir -p "$seeds/fuzz_xls"
if /usr/bin/python3 -c 'import xlwt' 2>/dev/null; then
  /usr/bin/python3 - "$seeds/fuzz_xls/sales.xls" <<'PY'
import sys, xlwt
wb = xlwt.Workbook()
ws = wb.add_sheet("SALES")
ws.write(0, 0, "Month"); ws.write(0, 1, "SALES"); ws.write(0, 2, "PRICE")
for i in range(24):
    ws.write(i + 1, 0, "1949-%02d" % (i % 12 + 1)); ws.write(i + 1, 1, 100.5 + i); ws.write(i + 1, 2, i % 3)
wb.add_sheet("Notes").write(0, 0, "text only")
wb.save(sys.argv[1])
PY
fi

# Leaks inside the libraries we read through, not ours to fix, are listed there.
export LSAN_OPTIONS="suppressions=$PWD/fuzz/lsan-suppressions.txt${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
failed=()
summary=()
for t in "${targets[@]}"; do
  bin=$hardening_dir/fuzz/$t
  artifacts=$hardening_dir/fuzz-artifacts/$t
  corpus=$hardening_dir/fuzz-corpus/$t
  mkdir -p "$artifacts/" "$corpus" "$seeds/$t"
  common=(-rss_limit_mb=2048 -timeout=10 -artifact_prefix="$artifacts/" -print_final_stats=1)
  regressions=(fuzz/regressions/"$t"/*)
  if [ ${#regressions[@]} -gt 0 ]; then
    if ! nice -n 10 "$bin" "${common[@]}" "${regressions[@]}" >"$artifacts/replay.log" 2>&1; then
      echo "fuzz: $t: FAILED on a kept regression input (log: $artifacts/replay.log)"
      failed+=("$t")
      continue
    fi
  fi
  if [ "$replay_only" = 1 ] || [[ "$replay_only_for" == *" $t "* ]]; then
    summary+=("$t: ${#regressions[@]} regression inputs replayed, not fuzzed")
    continue
  fi
  log=$artifacts/fuzz.log
  if nice -n 10 "$bin" "${common[@]}" -max_total_time="$seconds" -max_len=65536 \
       "$corpus" "$seeds/$t" >"$log" 2>&1; then
    runs=$(grep -o 'number_of_executed_units: [0-9]*' "$log" | tail -1 | grep -o '[0-9]*$' || echo "?")
    summary+=("$t: $runs inputs in ${seconds}s, no crash")
  else
    found=$(grep -o "Test unit written to .*" "$log" | tail -1 | sed 's/Test unit written to //')
    echo "fuzz: $t: FOUND a crash, hang or memory blow-up: ${found:-see $log}"
    echo "fuzz:   fix it, then keep the input as fuzz/regressions/$t/<name> (log: $log)"
    failed+=("$t")
  fi
done

for line in "${summary[@]}"; do echo "fuzz: $line"; done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: FAILED: ${failed[*]}"
  exit 1
fi
echo "fuzz: passed (${#targets[@]} targets)"
