#!/usr/bin/env bash
# Runs one of the example tills against a virtual register and compares what it says and what is on
# the paper.
#   till_test.sh REGISTER TILL...      (DEVICE is put where the arguments say @)
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
timeout 60 "${till[@]}" >said.txt

diff -u - said.txt <<'EOF'
to pay: 105.45
waiting for the cashier to ask for the check
printing ...
check closed
printed check 1; sales for cash so far: 105.45
EOF
for text in 'Bread' '2 x 25.50         =51.00' 'Apples' 'ИТОГО            =105.45' \
  'СДАЧА              94.55'; do
  grep -qxF "$text" paper.txt || { echo "not on the paper: $text"; exit 1; }
done
