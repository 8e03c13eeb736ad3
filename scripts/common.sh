# What the scripts share; they source it. It moves to the top of the tree.
# shellcheck shell=bash

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "installing packages needs root or sudo; run as root: $*"
  fi
}

# listed_packages PURPOSE...: the packages on the list that serve one of these purposes.
listed_packages() {
  local purpose
  for purpose in "$@"; do
    awk -v purpose="$purpose" '!/^#/ && $2 == purpose { print $1 }' packaging/packages.txt
  done | sort -u
}

# is_installed PACKAGE[:ARCHITECTURE]: for this machine's architecture unless it names another.
is_installed() {
  local name=${1%:*} architecture=${1#"${1%:*}"}
  architecture=${architecture#:}
  dpkg-query -W -f='${Architecture} ${db:Status-Status}\n' "$name" 2>/dev/null |
    grep -qxE "(${architecture:-$(dpkg --print-architecture)|all}) installed"
}

# need_packages PURPOSE...: installs what is missing; asks apt for nothing when nothing is.
need_packages() {
  local package architecture missing=()
  for package in $(listed_packages "$@"); do
    is_installed "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return

  say "Installing ${missing[*]}"
  for architecture in $(printf '%s\n' "${missing[@]}" | sed -n 's/.*://p' | sort -u); do
    if ! dpkg --print-foreign-architectures | grep -qx "$architecture"; then
      as_root dpkg --add-architecture "$architecture"
    fi
  done
  # One index that cannot be had is no reason to stop when the packages can be installed all the same.
  as_root apt-get update || echo "Some package index could not be updated; going on with what there is." >&2
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" ||
    die "these packages could not be installed: ${missing[*]}"
}

# check NAME COMMAND...: one check, shown with its output only when it fails. It counts in passed and failed.
passed=0
failed=0
check() {
  local name=$1 output
  shift
  if output=$("$@" 2>&1); then
    echo "ok: $name"
    passed=$((passed + 1))
  else
    printf '%s\nFAILED: %s\n' "$output" "$name"
    failed=$((failed + 1))
  fi
}

# The end of a script that checks.
report() {
  echo
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}

# run_tests PRESET [CTEST-ARGUMENT...]: runs what ctest knows of a build and ends with "N passed, M failed".
run_tests() {
  local preset=$1 junit
  shift
  junit=$PWD/build/$preset/tests.xml
  rm -f "$junit"
  # The timeout ends a test that waits for a reader for ever; none comes near it otherwise.
  ctest --preset "$preset" --output-junit "$junit" --parallel "$(nproc)" --timeout 300 --progress "$@" || true
  python3 scripts/summary.py "$junit"
}
