#!/usr/bin/env bash
# scripts/check-comments.sh on planted comments: the step numbers and phrases are reported
# with their file and line, bounds, figures and ordinary words are not, and the exit status
# says which.
set -uo pipefail
check=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/src"
c='//'  # kept out of this file's own lines, so the check of the repository passes over them
cat > "$dir/src/run.cpp" <<CPP
int names[150];  // 150
$c 5.10
  $c 7.-8.
$c 5.1-5.7 The checks before the file is read whole.
int flag; /* 3.1 */
// 0.04 of its standard deviation; the bounds below are four of them.
x = 1;  // 0.5 * -3 + 1 < 0: no inverse
// 2 to 6. The arrays in their order.
// Leads from 0 to 6 are tried.
// Written as the product does.
// The description of the preset whose ModelType is given.
CPP
printf '%s 2.-4.\n%s 150 rows at most\n' '#' '#' > "$dir/src/CMakeLists.txt"
expected="$dir/src/run.cpp:2:// 5.10
$dir/src/run.cpp:3:  // 7.-8.
$dir/src/run.cpp:4:// 5.1-5.7 The checks before the file is read whole.
$dir/src/run.cpp:5:int flag; /* 3.1 */
$dir/src/run.cpp:8:// 2 to 6. The arrays in their order.
$dir/src/run.cpp:10:// Written as the product does.
$dir/src/CMakeLists.txt:1:# 2.-4."
actual=$(bash "$check" "$dir/src" 2>/dev/null)
status=$?
fail=0
if [ "$status" -ne 1 ]; then echo "planted: exit status $status, expected 1"; fail=1; fi
if [ "$actual" != "$expected" ]; then
  echo "planted: reported"; echo "$actual"; echo "expected"; echo "$expected"; fail=1
fi
sed -i '2,5d;8d;10d' "$dir/src/run.cpp"
sed -i 1d "$dir/src/CMakeLists.txt"
actual=$(bash "$check" "$dir/src" 2>&1)
status=$?
if [ "$status" -ne 0 ]; then echo "clean: exit status $status: $actual"; fail=1; fi
exit "$fail"
