#!/bin/bash
# A project run on a real Slurm (scripts/slurm-local.sh): an array job of 4 shards and the
# merge as a job that depends on it, submitted by examples/slurm/submit.sh; the merged OUTPUT
# and project file must equal a serial run's of the same project (dates and times aside).
# Exit 77 (skipped) with a line saying why when Slurm cannot be installed or started here.
#   slurm_test.sh SOURCE_DIR PROGRAM_DIR
set -uo pipefail
SRC="$1"
PROGRAM_DIR="$2"
WORK=$(mktemp -d /tmp/tessaly-slurm-test-XXXXXX)
export TESSALY_SLURM_DIR="$WORK/slurm"
cleanup() { "$SRC/scripts/slurm-local.sh" stop; rm -rf "$WORK"; }
trap cleanup EXIT

if ! START=$("$SRC/scripts/slurm-local.sh" start 2>"$WORK/start.err"); then
  echo "SKIPPED: Slurm cannot be installed or started on this machine: $(tail -1 "$WORK/start.err")"
  exit 77
fi
eval "$START"

# The program and two copies of a project: the sample's monthly files and 8 of our own.
cp -r "$PROGRAM_DIR" "$WORK/program"
for run in serial slurm; do
  mkdir -p "$WORK/$run"
  cp "$WORK/program/examples/"{AIRLINE,ELNINO,BROKEN,NILE}.ASC "$WORK/$run/"
  {
    echo '<?xml version="1.0" encoding="UTF-8"?>'
    echo '<batch inputpath="./" outputpath="./"><set runcomplete="0" objective="0">'
    for s in AIRLINE ELNINO BROKEN NILE G1 G2 G3 G4 G5 G6 G7 G8; do
      printf '<series name="%s" complete="0" err="0" rundate="00/00/00"><data>%s.ASC</data><details>%s.htm</details>' $s $s $s
      for g in history:act forecasts:fore afit:actfit af:actfore aff:actfitfore ff:fitfore ac:actcleanse res:res ar:actres; do
        printf '<%s>%s%s.jpg</%s>' "${g%%:*}" $s "${g#*:}" "${g%%:*}"
      done
      echo '</series>'
    done
    echo '</set></batch>'
  } >"$WORK/$run/P.xml"
  for k in 1 2 3 4 5 6 7 8; do
    awk -v k=$k 'BEGIN { printf "0\r\n0\r\n0\r\n1\r\n12\r\n2001\r\n1\r\n96\r\n0\r\n0\r\n12\r\nG%d\r\n0\r\n", k;
      for (t = 0; t < 96; t++) printf "%.4f\r\n", 300 + 5*k + 0.7*t + 15*sin(6.2831853*(t%12)/12) + ((t*37+k*11)%17)/3 }' \
      >"$WORK/$run/G$k.ASC"
  done
done

export QT_QPA_PLATFORM=offscreen
# Two of the project's datasets are rejected on purpose, so the serial run ends in part (1).
"$WORK/program/tsly" run "$WORK/serial/P.xml" 2>"$WORK/serial.err"
[ $? -eq 1 ] || { echo "the serial run did not end with status 1"; cat "$WORK/serial.err"; exit 1; }
cp "$WORK/program/Process Errors.Err" "$WORK/serial.log"
rm -f "$WORK/program/Process Errors.Err"

cd "$WORK"
TSLY="$WORK/program/tsly" "$SRC/examples/slurm/submit.sh" "$WORK/slurm/P.xml" 4 || exit 1
for _ in $(seq 600); do
  [ -z "$(squeue -h 2>/dev/null)" ] && break
  sleep 0.5
done
if [ -n "$(squeue -h 2>/dev/null)" ]; then echo "the Slurm jobs did not end within 5 minutes"; squeue; exit 1; fi
cat "$WORK"/tessaly-merge-*.log
grep -q "are merged into" "$WORK"/tessaly-merge-*.log || { echo "the merge job did not merge"; tail -5 "$WORK"/tessaly-shard-*.log; exit 1; }

normalise() { sed -E -e "s#$WORK/(serial|slurm)#<DIR>#g" -e 's#[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}(:[0-9]{2})?|[0-9]{2}:[0-9]{2}:[0-9]{2}|[0-9]{2}/[0-9]{2}/[0-9]{2}([0-9]{2})?#<T>#g' "$1"; }
status=0
(cd "$WORK/serial" && find OUTPUT -type f | sort) >"$WORK/serial.files"
(cd "$WORK/slurm" && find OUTPUT -type f | sort) >"$WORK/slurm.files"
if ! diff "$WORK/serial.files" "$WORK/slurm.files"; then echo "the merged OUTPUT holds other files"; status=1; fi
while read -r f; do
  cmp -s <(normalise "$WORK/serial/$f") <(normalise "$WORK/slurm/$f") || { echo "differs: $f"; status=1; }
done <"$WORK/serial.files"
cmp -s <(normalise "$WORK/serial/P.xml") <(normalise "$WORK/slurm/P.xml") || { echo "differs: P.xml"; status=1; }
cmp -s "$WORK/serial.log" "$WORK/program/Process Errors.Err" || { echo "differs: Process Errors.Err"; status=1; }
[ $status -eq 0 ] && echo "Slurm: 4 shards and the merge equal the serial run ($(wc -l <"$WORK/serial.files") files)"
exit $status
