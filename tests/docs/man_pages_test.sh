#!/usr/bin/env bash
# Every host function of the library has a man page, the overview names it and explains every code
# of the header as the header does, and no page is faulty.
#   man_pages_test.sh SOURCE_DIR LIBRARY
set -euo pipefail

source=$1 library=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
bad=0
complain() { printf '%s\n' "$*" && bad=1; }

"$source/scripts/man" "$source/include/VeskTarvoM5/VeskTarvoM5.h" "$folder"
cp "$source"/docs/man/* "$folder"

mapfile -t functions < <(nm -D --defined-only "$library" | awk '$2 == "T" && $3 !~ /^_/ { print $3 }')
[ ${#functions[@]} -ge 47 ] || complain "only ${#functions[@]} functions in $library"
for name in "${functions[@]}"; do
  [ -s "$folder/$name.3" ] || complain "$name has no page"
  grep -qE "^\.Xr $name 3( ,)?$" "$folder/VeskTarvoM5.7" || complain "VeskTarvoM5.7 does not name $name"
done
for page in "$folder"/*.3; do
  name=$(basename "$page" .3)
  [[ " ${functions[*]} " == *" $name "* ]] || complain "$name has a page and is not in the library"
done

# "32 echPrintTest: the counters ...", a line for each code but 0.
in_header() {
  sed -n 's/^ *\(ech[A-Za-z]*\) = \([1-9][0-9]*\),\{0,1\} *\/\/\/< /\n\2 \1: /p; s/^ *\/\/\/< / /p' "$1"
}
in_overview() {
  sed -n '/^\.Sh ERROR CODES/,/^\.El/p' "$1" | sed -n 's/\\-/-/g; s/^\.Xr \([^ ]*\) 3/\1()/
    s/^\.It \([0-9]*\) Dv \(.*\)/\n\1 \2:/; /^\./!p'
}
one_a_line() { tr '\n' '\r' | sed 's/\r\r/\n/g; s/^\r//' | tr -s '\r ' ' ' | sed 's/^ //; s/ $//'; }
codes=$(in_header "$source/include/VeskTarvoM5/VeskTarvoM5.h" | one_a_line)
[ "$(grep -c '^[0-9]* ech[A-Za-z]*: .' <<<"$codes")" -ge 16 ] || complain "few codes in the header: $codes"
overview=$(in_overview "$folder/VeskTarvoM5.7" | one_a_line)
differences=$(diff <(echo "$codes") <(echo "$overview") || true)
[ -z "$differences" ] || complain "header and VeskTarvoM5.7 differ on the codes:" "$differences"

cd "$folder"
faults=$(mandoc -T lint -W warning ./* || true)
[ -z "$faults" ] || complain "$faults"
while read -r name section; do
  [ -e "$name.$section" ] || complain "a page refers to $name($section), which is not there"
done < <(sed -n 's/^\.Xr \([^ ]*\) \([37]\).*/\1 \2/p' ./* | sort -u)
exit $bad
