# SPDX-License-Identifier: MIT
# Steps of a long run, for the scripts that include this: each counts, and says what it did when it ends.
# The includer sets `logs`, a folder for the whole output of each step.

# step NAME COMMAND...: one check, counted as one.
step() {
  local name=$1 start=$SECONDS log
  log=$logs/${1//[^a-zA-Z0-9]/-}.log
  shift
  if "$@" >"$log" 2>&1; then
    echo "1 0" >>"$logs/counts"
    echo "== $name: passed ($((SECONDS - start)) s)"
  else
    echo "0 1" >>"$logs/counts"
    tail -n 100 "$log"
    echo "== $name: FAILED ($((SECONDS - start)) s); $log has it all"
    return 1
  fi
}

# tests BUILD_DIR [options of ctest]: the tests of a build, counted one by one.
tests() {
  local build=$1 start=$SECONDS log=$logs/tests-of-$1.log verdict
  shift
  scripts/run-tests "$build" "$@" >"$log" 2>&1 || tail -n 200 "$log"
  verdict=$(tail -n 1 "$log")
  sed -n '$s/^\([0-9]*\) passed, \([0-9]*\) failed$/\1 \2/p' "$log" >>"$logs/counts"
  echo "== tests of $build: $verdict ($((SECONDS - start)) s)"
}

build() { cmake --preset "$1" && cmake --build --preset "$1"; }

begin() {
  rm -rf "$logs"
  mkdir "$logs"
  # Interrupted, take down what runs beside.
  trap 'trap - INT TERM; kill 0' INT TERM
}

# The last line is "N passed, N failed"; the status is 1 when one failed or none was counted.
finish() {
  echo "Took $SECONDS s"
  awk '{ passed += $1; failed += $2 }
       END { print passed + 0 " passed, " failed + 0 " failed"; exit failed > 0 || passed == 0 }' "$logs/counts"
}
