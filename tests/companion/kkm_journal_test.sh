#!/usr/bin/env bash
# kkm with a journal, as its users start it, against a virtual register.
#   kkm_journal_test.sh KKM REGISTER
set -uo pipefail

kkm=$1 register=$2
folder=$(mktemp -d)
pid=
# shellcheck disable=SC2317 # called by the trap
end() {
  [ -z "$pid" ] || { kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null; } || true
  rm -rf "$folder"
}
trap end EXIT
cd "$folder" || exit 1
exec 3> >("$register" --cashier prompt --quiet --paper paper.txt >tty.txt)
pid=$!
tty=
for ((i = 0; i < 100 && ${#tty} == 0; i++)); do
  sleep 0.1
  tty=$(sed -n 's/^tty //p' tty.txt)
done
export KKM_JOURNAL=$folder/till.journal
failures=0

# gives STATUS ARGUMENT...: runs kkm; what it says is in `said`.
gives() {
  local wanted=$1 status
  shift
  said=$("$kkm" --device "$tty" "$@" 2>&1)
  status=$?
  if [ "$status" -ne "$wanted" ]; then
    echo "kkm $* gave $status, not $wanted: $said"
    failures=$((failures + 1))
  fi
}
says() {
  local text
  for text in "$@"; do
    [[ $said == *"$text"* ]] || { echo "not said: $text in: $said"; failures=$((failures + 1)); }
  done
}

echo '{"lines":[{"name":"Хлеб","price":25.5,"quantity":2}]}' >bread.json
echo '{"lines":[{"name":"Хлеб","price":26,"quantity":2}]}' >dearer.json
line='{"name":"Чай","price":1}'
echo "{\"lines\":[$line,$line,$line,$line,$line]}" >long.json

gives 5 outcome K
says 'there is no journal'
gives 5 outcome K --journal other.journal
says 'other.journal'
gives 5 journal --json
says '"error": {' '"what": "there is no journal' '"exit_status": 5'
gives 2 check bread.json --again
gives 2 check bread.json --deadline 1
gives 2 check bread.json --journal other.journal
says '--journal requires --key'
gives 2 check bread.json --key K --dry-run
gives 3 check bread.json --key K --deadline 1
says 'K       not printed' 'check   1 line, total 51.00' 'No line of the check was sent'
gives 3 outcome K
gives 3 check bread.json --key K --deadline 1
says 'tried 1 time'
echo host >&3
gives 0 check bread.json --key K --again
says 'waiting for the register to ask' 'sending the lines' 'comparing the register' \
  'printed' 'tried 2 times' 'check 0 of tape 1, 0 records' 'check 1 of tape 1, 1 records'
gives 0 check bread.json --key K --again
gives 7 check dearer.json --key K
says 'belongs to a check with another content'
gives 7 outcome L
says 'no check has the key L'
gives 7 outcome L --json
says '"error": {' '"what": "no check has the key L"' '"exit_status": 7'
gives 7 check dearer.json --key K --json
says '"error": {' 'belongs to a check with another content'
gives 0 resolve K
gives 0 resolve --all
gives 2 resolve
gives 0 outcome K --json
says '"outcome": "printed"' '"reason": "on_tape"' '"total": 51.0' '"first_record": 1' \
  '"kind 0, payment 0, 51.00, quantity 2.000, article 1 45678901"'
gives 0 journal
says 'key  outcome  reason' 'K    printed  on_tape'
gives 0 journal --csv
says 'key,outcome,reason,attempts,total,lines,serial,tape,first_record,intended_at,decided_at' \
  'K,printed,on_tape,2,51.00,1,12345,1,1,'
gives 0 journal --json
says '"checks": ['
# Keys that are no UTF-8, and keys that would write all over the terminal.
gives 3 check bread.json --key $'B\xff\x80' --deadline 1 --json
says '"outcome": "not printed"'
gives 3 check bread.json --key $'E\e[31m\nF' --deadline 1
says 'E\x1b[31m\x0aF'
gives 0 journal --json
says '"checks": ['
gives 0 journal
says 'E\x1b[31m\x0aF  not printed  nothing_sent'
# The deadline comes while the lines are being sent: the worker finishes behind it.
echo host >&3
begin=${EPOCHREALTIME/[.,]/}
gives 4 check long.json --key M --deadline 4
[ $((${EPOCHREALTIME/[.,]/} - begin)) -lt 6000000 ] || {
  echo 'who reads what kkm says waits for the worker'
  failures=$((failures + 1))
}
says 'The check is still being worked on'
gives 0 resolve M
says 'M       printed' 'tried 1 time'
# As a host that died behind the first line left it.
python=$(command -v python3)
"$python" -c 'import sqlite3, sys
with sqlite3.connect(sys.argv[1]) as journal:
    journal.execute("""UPDATE attempts SET outcome = "unknown", stage = "sending",
                       serial_number = 777 WHERE key = "K" AND number = 2""")' "$KKM_JOURNAL"
gives 4 outcome K
said=${said//$'\n'/ }
says 'To look for: a check of 1 line, total 51.00, behind check 0 of tape 1 of register 777.'
gives 4 resolve K
says 'Another register is connected.'
gives 4 resolve --all
says 'other_register'
gives 0 resolve K --seen printed
says 'A person found the check on the paper.'
gives 0 outcome K
[ "$(grep -c 'ИТОГО             =51.00' paper.txt)" = 1 ] || { echo 'not once on the paper'; exit 1; }
[ "$failures" -eq 0 ]
