#!/usr/bin/env bash
# A short tour of fieldbook over the points file in data; takes the path of the program.
set -euo pipefail
program=$(realpath "$1")
cd "$(dirname "$0")/data"

# Shows a command as one would type it, then what it prints.
run() {
  local word line='$ fieldbook'
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9._=/-]*) line+=" '${word//\'/\'\\\'\'}'" ;;
      *) line+=" $word" ;;
    esac
  done
  printf '%s\n' "$line"
  "$program" "$@" 2>&1 || printf '(exit status %d)\n' $?
  printf '\n'
}

run show points.csv
run show points.csv --to us-ft-in --denominator 8
run inverse points.csv T1 BM2
run angle -10.5 33.8912 --from gon --to dms
run angle '45°30'\''15.5"N' '45°61'\''00"' --from dms --to deg --decimals 8
run inverse points.csv T1 T3 --lang it.po
