#!/usr/bin/env bash
# Fails (exit 1, printing file:line: name (N lines)) on a C++ function longer than the limit
# (150 lines, from the line of its name to its closing brace) that has no reason written
# beside it: a comment line holding "Kept whole:" and the reason, in the comment block right
# above the function (template lines between the two are allowed).
# Functions are found by Universal Ctags, which gives each definition's first and last line;
# lambdas count as part of the function around them.
# Usage: check-function-length.sh [--limit N] [--skip FOLDER_OR_FILE]... [folder...]; by default the
# source, benchmark and fuzzing folders of the repository.
set -euo pipefail
cd "$(dirname "$0")/.."

limit=150
skips=()
roots=()
while [ $# -gt 0 ]; do
  case "$1" in
    --limit) limit=$2; shift 2 ;;
    --skip) skips+=("${2%/}"); shift 2 ;;
    *) roots+=("$1"); shift ;;
  esac
done
[ ${#roots[@]} -gt 0 ] || roots=(src bench fuzz)

if ! ctags --version 2>/dev/null | grep -q 'Universal Ctags'; then
  echo "check-function-length: needs Universal Ctags (Debian package universal-ctags)" >&2
  exit 2
fi

files=()
while IFS= read -r -d '' f; do
  for s in "${skips[@]}"; do
    case "$f" in "$s" | "$s"/*) continue 2 ;; esac
  done
  files+=("$f")
done < <(find "${roots[@]}" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.cc' -o -name '*.hpp' \) -print0 | sort -z)
[ ${#files[@]} -gt 0 ] || { echo "check-function-length: no C++ files"; exit 0; }

# One line per definition: file, first line, last line, name with its class.
out=$(
  ctags --languages=C++ --langmap=C++:+.h --kinds-C++=f --fields=+neZ --extras=-F -o - "${files[@]}" |
    awk -F'\t' -v limit="$limit" '
      {
        first = ""; last = ""; scope = ""
        for (i = 4; i <= NF; i++) {
          if ($i ~ /^line:/) first = substr($i, 6)
          else if ($i ~ /^end:/) last = substr($i, 5)
          else if ($i ~ /^scope:/) { scope = $i; sub(/^scope:[a-z]*:/, "", scope) }
        }
        if (first == "" || last == "" || last - first + 1 <= limit) next
        name = scope == "" ? $1 : scope "::" $1
        gsub(/__anon[0-9a-f]+::/, "", name)
        print $2 "\t" first "\t" (last - first + 1) "\t" name
      }' |
    while IFS=$'\t' read -r file first count name; do
      # The comment block right above the function, skipping template lines.
      reason=$(awk -v first="$first" '
        NR < first { lines[NR] = $0 }
        END {
          n = first - 1
          while (n > 0 && lines[n] ~ /^[ \t]*template[ \t]*</) n--
          while (n > 0 && lines[n] ~ /^[ \t]*\/\//) {
            if (lines[n] ~ /Kept whole:[ \t]*[^ \t]/) { print "yes"; exit }
            n--
          }
        }' "$file")
      [ -n "$reason" ] || printf '%s:%s: %s (%s lines)\n' "$file" "$first" "$name" "$count"
    done
)

if [ -n "$out" ]; then
  printf '%s\n' "$out"
  echo "check-function-length: the functions above are over ${limit} lines; split them into" >&2
  echo "functions named after what each part does, or write \"// Kept whole: <why>\" above." >&2
  exit 1
fi
echo "check-function-length: ${#files[@]} C++ files, no function over ${limit} lines without a reason"
