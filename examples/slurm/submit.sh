#!/bin/bash
# Submits a project as an array of SHARDS tasks and the merge as a job that starts when the
# whole array has ended (afterany: the merge itself tells when a shard failed).
#   examples/slurm/submit.sh /shared/projects/sales/sales.xml 4
set -euo pipefail
PROJECT="$(realpath "$1")"
SHARDS="${2:-4}"
HERE="$(cd "$(dirname "$0")" && pwd)"
ARRAY=$(sbatch --parsable --array=1-"$SHARDS" "$HERE/run-project.sbatch" "$PROJECT")
ARRAY="${ARRAY%%;*}"
MERGE=$(sbatch --parsable --dependency=afterany:"$ARRAY" "$HERE/merge-project.sbatch" "$PROJECT" "$SHARDS")
echo "array job $ARRAY ($SHARDS shards), merge job ${MERGE%%;*}"
