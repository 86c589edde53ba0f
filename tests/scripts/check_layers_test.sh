#!/usr/bin/env bash
# scripts/check-layers.py on a planted source tree: an include that goes up a layer, two flows
# that include each other and a folder of no layer are reported; includes down the layers,
# the off-screen graphs under report/forms and the desktop's forms binding flows pass.
set -uo pipefail
check=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir"/{platform,rules,batch,pool,report/forms,genseries/forms,misc}
printf '#include "report/site.h"\n#include <vector>\n' > "$dir/platform/paths.h"
printf '#include "platform/paths.h"\n#include "dataset/asc_dataset.h"\n' > "$dir/rules/model_file.cpp"
printf '#include "batch/run.h"\n#include "pool/pool_run.h"\n' > "$dir/batch/run.cpp"
printf '#include "batch/run.h"\n' > "$dir/pool/pool_run.h"
printf '#include "batch/run.h"\n' > "$dir/report/forms/graph_drawer.cpp"
printf '#include "batch/forms/frm_project_forms.h"\n#include "report/site.h"\n' > "$dir/genseries/forms/frm_adjust.cpp"
printf 'int x;\n' > "$dir/misc/tool.cpp"
expected="$dir/misc/tool.cpp:1: belongs to no layer; add its folder to scripts/check-layers.py
$dir/platform/paths.h:1: platform (platform) includes \"report/site.h\" of report (reports)
loop: batch, pool include each other, directly or round a loop"
actual=$(python3 "$check" "$dir")
status=$?
fail=0
if [ "$status" -ne 1 ]; then echo "planted: exit status $status, expected 1"; fail=1; fi
if [ "$actual" != "$expected" ]; then
  echo "planted: reported"; echo "$actual"; echo "expected"; echo "$expected"; fail=1
fi
rm -r "$dir/misc" "$dir/pool"
printf '#include <vector>\n' > "$dir/platform/paths.h"
actual=$(python3 "$check" "$dir" 2>&1)
status=$?
if [ "$status" -ne 0 ]; then echo "clean: exit status $status: $actual"; fail=1; fi
exit "$fail"
