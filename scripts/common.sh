# Shared by the scripts of this folder, which source it first and then stand in the repository's root.
# shellcheck shell=bash
set -euo pipefail

script=scripts/$(basename "$0")
CDPATH='' cd -- "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
export JOBS=${JOBS:-$(nproc)} # limits the processors that are used
logs=build/logs

say() {
  printf '== %s\n' "$*"
}

die() {
  printf '%s: %s\n' "$script" "$*" >&2
  exit 1
}

# logged NAME COMMAND...: runs a command whose output is of interest only when it fails.
logged() {
  local log=$logs/$1.log
  shift
  mkdir -p "$logs"
  if ! "$@" >"$log" 2>&1; then
    tail -n 40 "$log" >&2
    printf '%s: failed: %s (all of its output is in %s)\n' "$script" "$*" "$log" >&2
    return 1
  fi
}

# Tells apart what setup and the builds need to know: prints runs, no-compiler or no-kernel.
word32() {
  local folder answer=runs
  folder=$(mktemp -d)
  if ! printf '#include <string>\nint main() { return std::string("ok").empty() ? 1 : 0; }\n' |
    g++ -m32 -msse2 -x c++ - -o "$folder/probe" 2>/dev/null; then
    answer=no-compiler
  elif ! "$folder/probe" 2>/dev/null; then
    answer=no-kernel
  fi
  rm -r "$folder"
  printf '%s\n' "$answer"
}

# All C++ files of ours.
cxx_files() {
  local part folders=()
  for part in include src companion virtual_register tools examples tests benchmarks; do
    [ ! -d "$part" ] || folders+=("$part")
  done
  find "${folders[@]}" -name '*.h' -o -name '*.cpp' | sort
}

# What shellcheck reads.
shell_files() {
  { printf '%s\n' .ci/run scripts/common.sh && grep -rlE '^#!.*(ba)?sh$' scripts tests; } | sort
}

# The formatter whose taste the sources follow; releases of it disagree on small things.
formatter() {
  local candidate
  for candidate in clang-format-14 clang-format; do
    if "$candidate" --version 2>/dev/null | grep -q 'version 14\.'; then
      printf '%s\n' "$candidate"
      return
    fi
  done
  return 1
}

# 32-bit or 64-bit, from the fifth byte of a program or library.
word_size() {
  case $(od -An -tu1 -j4 -N1 "$1" | tr -d ' ') in
    1) echo 32-bit ;;
    *) echo 64-bit ;;
  esac
}
