#!/bin/bash
# A one-machine Slurm for trying the scale-out recipes and for the Slurm test: munge, the
# controller and one node daemon, all with their state, sockets, logs and configuration in
# one private folder, so that nothing of the system's own Slurm (if any) is touched.
#   scripts/slurm-local.sh start   # installs slurm-wlm and munge when missing; prints the
#                                  # SLURM_CONF line to export for sbatch, squeue, ...
#   scripts/slurm-local.sh stop    # ends the daemons this script started (by their pid files)
# Exit status 3 from start: Slurm cannot be installed or started here (the test then skips).
set -uo pipefail
STATE="${TESSALY_SLURM_DIR:-/tmp/tessaly-slurm}"
CONF="$STATE/slurm.conf"

stop() {
  for name in slurmd slurmctld munged; do
    if [ -f "$STATE/$name.pid" ]; then
      pid=$(cat "$STATE/$name.pid")
      kill "$pid" 2>/dev/null
      for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
      rm -f "$STATE/$name.pid"
    fi
  done
}

fail() {
  echo "slurm-local: $*" >&2
  stop
  exit 3
}

start() {
  if ! command -v slurmctld >/dev/null || ! command -v slurmd >/dev/null || ! command -v munged >/dev/null ||
     ! command -v sbatch >/dev/null; then
    SUDO=""
    [ "$(id -u)" -ne 0 ] && SUDO="sudo -n"
    echo "slurm-local: installing slurm-wlm and munge" >&2
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends slurm-wlm munge \
      >"${TMPDIR:-/tmp}/slurm-local-install.log" 2>&1 || fail "slurm-wlm could not be installed"
  fi
  stop
  mkdir -p "$STATE/ctld" "$STATE/d"
  if [ ! -f "$STATE/munge.key" ]; then
    dd if=/dev/urandom of="$STATE/munge.key" bs=1024 count=1 status=none
  fi
  chmod 700 "$STATE"
  chmod 400 "$STATE/munge.key"
  munged --force --key-file="$STATE/munge.key" --socket="$STATE/munge.socket" \
    --pid-file="$STATE/munged.pid" --log-file="$STATE/munged.log" --seed-file="$STATE/munge.seed" ||
    fail "munged did not start (see $STATE/munged.log)"

  host=$(hostname -s)
  node=$(slurmd -C 2>/dev/null | head -1 | sed 's/ UpTime=.*//')
  [ -n "$node" ] || node="NodeName=$host CPUs=$(nproc)"
  user=$(id -un)
  cat >"$CONF" <<CONF
ClusterName=tessaly
SlurmctldHost=$host
SlurmUser=$user
SlurmdUser=$user
SlurmctldPort=${TESSALY_SLURMCTLD_PORT:-16817}
SlurmdPort=${TESSALY_SLURMD_PORT:-16818}
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$STATE/munge.socket
StateSaveLocation=$STATE/ctld
SlurmdSpoolDir=$STATE/d
SlurmctldPidFile=$STATE/slurmctld.pid
SlurmdPidFile=$STATE/slurmd.pid
SlurmctldLogFile=$STATE/slurmctld.log
SlurmdLogFile=$STATE/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SwitchType=switch/none
MpiDefault=none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
ReturnToService=2
JobCompType=jobcomp/none
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
$node State=UNKNOWN
PartitionName=local Nodes=ALL Default=YES MaxTime=INFINITE State=UP
CONF
  export SLURM_CONF="$CONF"
  slurmctld -f "$CONF" || fail "slurmctld did not start (see $STATE/slurmctld.log)"
  slurmd -f "$CONF" || fail "slurmd did not start (see $STATE/slurmd.log)"
  for _ in $(seq 60); do
    if sinfo -h -o %t 2>/dev/null | grep -Eq '^(idle|mix|alloc)'; then
      echo "export SLURM_CONF=$CONF"
      return 0
    fi
    sleep 0.5
  done
  fail "the node did not come up (see $STATE/slurmctld.log and $STATE/slurmd.log)"
}

case "${1:-}" in
  start) start ;;
  stop) stop ;;
  *) echo "usage: $0 start|stop" >&2; exit 2 ;;
esac
