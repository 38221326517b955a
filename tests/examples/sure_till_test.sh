#!/usr/bin/env bash
# Starts one of the tills with a journal twice with the same key: the check is printed once, and both
# say so.
#   sure_till_test.sh REGISTER TILL...      (DEVICE is put where the arguments say @)
set -euo pipefail

register=$1
shift
folder=$(mktemp -d)
pid=
# shellcheck disable=SC2317 # called by the trap
end() {
  [ -z "$pid" ] || { kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null; } || true
  rm -rf "$folder"
}
trap end EXIT
cd "$folder"

"$register" --cashier auto --quiet --paper paper.txt >tty.txt &
pid=$!
tty=
for ((i = 0; i < 100 && ${#tty} == 0; i++)); do
  sleep 0.1
  tty=$(sed -n 's/^tty //p' tty.txt)
done

till=("${@/#@/$tty}")
for _ in 1 2; do
  timeout 60 "${till[@]}"
done >said.txt

diff -u - said.txt <<'EOF'
printed: 105.45, record 1 of the tape
printed: 105.45, record 1 of the tape
EOF
[ "$(grep -c 'ИТОГО            =105.45' paper.txt)" = 1 ] || { echo 'not once on the paper'; exit 1; }
