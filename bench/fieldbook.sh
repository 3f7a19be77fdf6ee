#!/usr/bin/env bash
# Measures fieldbook on a million points (50 MB) beside awk, grep and sort; the best of three runs each.
#   bench/fieldbook.sh PROGRAM
set -euo pipefail
program=$(realpath "$1")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
awk 'BEGIN { srand(1); for (i = 0; i < 1000000; ++i)
  printf "P%d,%.3f,%.3f,%.3f,TOPWALL %d\n", i, 538000 + rand() * 5000, 1455000 + rand() * 5000,
         600 + rand() * 90, i % 17 }' >points.csv
awk 'BEGIN { for (i = 0; i < 1000000; ++i) printf "P%d,538000.000,1455000.000\n", i % 1000 }' >heap.csv
for ((i = 0; i < 20000; ++i)); do printf 'delete P%d\n' $((i * 7)); done >deletes
{ echo 'begin "many"'; cat deletes; printf 'end\nundo\nredo\n'; } >group
printf 'move P10 1 2 3\nundo\n' >step
printf 'move P10 1 2 3\nsave\n' >save

# best COMMAND...: seconds and the most memory in KB.
best() {
  local run
  for run in 1 2 3; do
    /usr/bin/time -q -f '%e %M' -o "time.$run" "$@" >/dev/null 2>&1 </dev/null
  done
  sort -n time.[123] | head -n 1
}
edit() { best bash -c '"$0" edit points.csv --data settings --no-backup <"$1"' "$program" "$1"; }

# row WORK OURS PEER NAME ASKED
row() {
  awk -v work="$1" -v ours="$2" -v peer="$3" -v name="$4" -v asked="$5" 'BEGIN {
    split(ours, o, " "); split(peer, p, " ")
    if (name == "") printf "%-34s %6.2f s %7.1f MB %38s asked %s\n", work, o[1], o[2] / 1024, "", asked
    else printf "%-34s %6.2f s %7.1f MB  %-6s %6.2f s  ratio %5.2f asked %s\n", work, o[1], o[2] / 1024,
                name, p[1], o[1] / p[1], asked }'
}

awk_table=$(best awk -F, '{ f = 3937 / 1200
  printf "%-8s %14.3f %14.3f %10.3f  %s\n", $1, $2 * f, $3 * f, $4 * f, $5 }' points.csv)
# Into a pipe, since into /dev/null grep stops at the first hit.
grep_two=$(best bash -c "grep -E '^(P10|P999999),' points.csv | cat")
sort_names=$(best bash -c 'cut -d, -f1 points.csv | sort | uniq -d')
empty=$(edit /dev/null)
row 'show --to us-ft' "$(best "$program" show points.csv --to us-ft --data settings)" "$awk_table" awk '1.0, 200 MB'
row 'show --csv' "$(best "$program" show points.csv --csv --data settings)" "$awk_table" awk '0.8, 64 MB'
row 'inverse' "$(best "$program" inverse points.csv P10 P999999 --data settings)" "$grep_two" grep 5
row 'check' "$(best "$program" check points.csv --data settings)" "$sort_names" sort '3 s'
row 'check, all in one place' "$(best "$program" check heap.csv --data settings)" '' '' '3 s'
row 'edit: load' "$empty" '' '' '2 s'
row 'edit: load, move, undo' "$(edit step)" '' '' 'load + 0.4 s'
row 'edit: load, move, save' "$(edit save)" '' '' 'load + 2.2 s'
row 'edit: 20,000 deletes, undo, redo' "$(edit group)" '' '' 'load + 1 s'
