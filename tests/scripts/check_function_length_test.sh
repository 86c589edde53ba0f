#!/usr/bin/env bash
# scripts/check-function-length.sh on planted functions: those over the limit are named with
# their file, line and length unless a reason stands right above them; braces inside strings
# and lambdas do not end a function early; a skipped folder is not read.
set -uo pipefail
check=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/src/engine"
lines() { for ((i = 0; i < $1; i++)); do echo "  total += $i;"; done; }
# 151 lines, a string holding a closing brace and a lambda near the top.
{ echo 'int Long() {'; echo '  const char* brace = "}"; auto f = [] { return 1; };'; lines 148; echo '}'; } > "$dir/src/plain.cpp"
# Exactly at the limit.
{ echo 'int AtLimit() {'; lines 148; echo '}'; } > "$dir/src/edge.cpp"
# A reason above a template.
{ echo '// Kept whole: one table of cases read top to bottom.'; echo 'template <typename T>';
  echo 'T Table(T t) {'; lines 198; echo '}'; } > "$dir/src/kept.cpp"
# A constructor whose comment gives no reason; the reason further up does not count.
{ echo '// Kept whole: an older reason.'; echo ''; echo 'struct Form { Form(int a); int a_; };';
  echo '// Builds the window.'; echo 'Form::Form(int a) : a_(a) {'; lines 158; echo '}'; } > "$dir/src/member.cpp"
cp "$dir/src/plain.cpp" "$dir/src/engine/model.cpp"

expected="$dir/src/member.cpp:5: Form::Form (160 lines)
$dir/src/plain.cpp:1: Long (151 lines)"
fail=0
bash "$check" --skip "$dir/src/engine" "$dir/src" > "$dir/out" 2>/dev/null
status=$?
actual=$(sort "$dir/out")
[ "$status" -eq 1 ] || { echo "planted: exit status $status, expected 1"; fail=1; }
[ "$actual" == "$expected" ] || { echo "planted: reported"; echo "$actual"; echo "expected"; echo "$expected"; fail=1; }
bash "$check" --limit 160 --skip "$dir/src/engine" "$dir/src" > /dev/null 2>&1 ||
  { echo "a limit of 160 still reports"; fail=1; }
exit $fail
