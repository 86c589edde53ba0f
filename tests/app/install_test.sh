#!/usr/bin/env bash
# The installed program under a read-only prefix, run by a user who may not write to it:
# the first start makes the per-user working folder with the samples, a project runs from
# there alone and as two parallel jobs, and nothing is written under the prefix.
# usage: install_test.sh BUILD_DIR
set -euo pipefail
build=$1
scratch=$(mktemp -d)
trap 'chmod -R u+w "$scratch" 2>/dev/null; rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

DESTDIR="$scratch/root" cmake --install "$build" --prefix /opt/tessaly >/dev/null
prefix=$scratch/root/opt/tessaly
home=$scratch/home
mkdir "$home"
as_user=()
if [ "$(id -u)" -eq 0 ]; then
  command -v setpriv >/dev/null || { echo "SKIP: running as root and setpriv is missing"; exit 77; }
  as_user=(setpriv --reuid=65534 --regid=65534 --clear-groups)
  chmod 755 "$scratch"
  chown 65534:65534 "$home"
fi
chmod -R a-w "$prefix"
before=$(find "$prefix" -printf '%p %s %T@\n' | sort)
run() { "${as_user[@]}" env -i PATH=/usr/bin:/bin HOME="$home" "$@"; }

work=$home/.local/share/tessaly
out=$(run "$prefix/bin/tsly" --version)
[ "$out" = "tsly 1.0
working folder $work" ] || fail "tsly --version said: $out"
for f in ENGINE.USR ENGINE.CND help/UsersGuide.htm gifs/graph.gif examples/quarterly.xml examples/REALGDP.ASC; do
  [ -f "$work/$f" ] || fail "the working folder lacks $f"
done
[ ! -e "$work/qvxengine" ] || fail "the engine was copied into the working folder"

set +e
out=$(run "$prefix/bin/tsly" run --jobs 2 "$work/examples/quarterly.xml" 2>&1); status=$?
set -e
[ $status -eq 0 ] || fail "tsly run --jobs 2 ended $status: $out"
for f in REALGDP.PRO REALCONS.PRO display.html; do
  [ -f "$work/examples/quarterly/OUTPUT/$f" ] || fail "the parallel run left no $f: $out"
done

set +e
out=$(run "$prefix/bin/tsly" run "$work/examples/sample.xml" 2>&1); status=$?
set -e
# The sample holds a dataset the checks reject, so the run is done in part.
[ $status -eq 1 ] || fail "tsly run ended $status: $out"
grep -q "BROKEN[.A-Z]*: rejected" <<<"$out" || fail "no rejected line for BROKEN.ASC: $out"
[ -f "$work/examples/sample/OUTPUT/AIRLINE.PRO" ] || fail "the run left no AIRLINE.PRO: $out"
[ ! -e "$work/.tessaly.lock" ] || fail "the working folder's lock outlived the run"

after=$(find "$prefix" -printf '%p %s %T@\n' | sort)
[ "$before" = "$after" ] || fail "the install changed: $(diff <(echo "$before") <(echo "$after"))"
echo "PASS: installed under a read-only prefix, run as $(run id -un 2>/dev/null || echo user) from $work"
