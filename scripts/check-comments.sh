#!/usr/bin/env bash
# Fails (exit 1, printing file:line: text) on comments that only make sense beside a
# document the reader doesn't have:
#  - a comment that is, or starts with, a step number: one or two digits and a point, with
#    an optional second part, an optional range ("-", "to") and an optional closing point,
#    followed by the end of the comment or by a blank and a capital letter; an integer
#    range that ends in a point or stands alone is one too. Bare integers (array bounds)
#    and decimals followed by lower-case text or a sign (figures in the tests) pass;
#  - a step number written out with a point ("step" and a dotted number);
#  - phrases that point at another program or at a document (the list in `phrases` below),
#    and a capitalised "Part" followed by a number.
# Comments are "//" and "/* */" in C++ files and "#" in CMake, shell and Python files.
# Usage: check-comments.sh [folder...]; by default the source, test, benchmark, CMake and
# script folders of the repository and its top CMakeLists.txt.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ $# -gt 0 ]; then
  roots=("$@")
else
  roots=(src tests bench cmake scripts CMakeLists.txt)
fi

num='[0-9]{1,2}'
piece="${num}(\\.(${num})?)?"
# What may follow a step number: the end of the comment, or a blank and a capital letter.
after='(\s*(\*/\s*)?$|\s+[A-Z(])'
dotted="${num}\\.(${num})?(\\s*(-|to)\\s*${piece})?\\.?${after}"
int_range="${num}\\s*(-|to)\\s*${num}(\\.${after}|\\s*(\\*/\\s*)?$)"
step_words='\b[Ss]teps? [0-9]+\.[0-9]+'
phrases='the original system|as the product does|as the original|the original did|\bthe s[p]ec\b|\bs[p]ec\.md\b|\bthe description\b'
part_ref='\bParts? [0-9]+(\.[0-9]+)*\b'

cpp_files=()
hash_files=()
while IFS= read -r -d '' f; do
  case "$f" in
    *.cpp | *.h | *.hpp | *.cc | *.cxx) cpp_files+=("$f") ;;
    *.cmake | */CMakeLists.txt | CMakeLists.txt | *.sh | *.py) hash_files+=("$f") ;;
  esac
done < <(find "${roots[@]}" -type f -print0 | sort -z)

found=0
report() {
  # $1: marker pattern, $2..: files. Prints the offending lines.
  local marker=$1
  shift
  [ $# -gt 0 ] || return 0
  local out
  out=$(
    {
      grep -HnE "${marker}\\s*(${dotted}|${int_range})" "$@" || true
      grep -HnE "${marker}.*(${step_words})" "$@" || true
      grep -HniE "${marker}.*(${phrases})" "$@" | grep -viE 'the description of' || true
      grep -HnE "${marker}.*${part_ref}" "$@" || true
    } | sort -t: -k1,1 -k2,2n -u
  )
  if [ -n "$out" ]; then
    printf '%s\n' "$out"
    found=1
  fi
}

report '(//|/\*)' "${cpp_files[@]}"
report '(^|\s)#' "${hash_files[@]}"

if [ "$found" -ne 0 ]; then
  echo "check-comments: comments above point at steps or documents the reader doesn't have;" >&2
  echo "say what the code does and why instead (docs/architecture.md, \"Comments\")." >&2
  exit 1
fi
echo "check-comments: ${#cpp_files[@]} C++ and ${#hash_files[@]} CMake/shell/Python files clean"
