#!/usr/bin/env bash
# Every host function of the library has a man page, the overview names it, and no page is faulty.
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

cd "$folder"
faults=$(mandoc -T lint -W warning ./* || true)
[ -z "$faults" ] || complain "$faults"
while read -r name section; do
  [ -e "$name.$section" ] || complain "a page refers to $name($section), which is not there"
done < <(sed -n 's/^\.Xr \([^ ]*\) \([37]\).*/\1 \2/p' ./* | sort -u)
exit $bad
