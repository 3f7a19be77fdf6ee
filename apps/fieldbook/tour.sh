#!/usr/bin/env bash
# A short tour of fieldbook over the points file in data; takes the path of the program. It works on
# a copy and on settings of its own, and leaves nothing behind.
set -euo pipefail
program=$(realpath "$1")
cd "$(dirname "$0")/data"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp points.csv it.po "$folder"
cd "$folder"

# Shows a command as one would type it, with the lines that it is given, then what it prints.
run() { run_with '' "$@"; }
run_with() {
  local input=$1
  shift
  local word line='$ fieldbook'
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9._=/-]*) line+=" '${word//\'/\'\\\'\'}'" ;;
      *) line+=" $word" ;;
    esac
  done
  printf '%s\n' "$line"
  [ -z "$input" ] || sed 's/^/< /' <<<"$input"
  "$program" "$@" <<<"$input" 2>&1 || printf '(exit status %d)\n' $?
  printf '\n'
}

run show points.csv --data settings --progress --verbose
run units set dist-units us-ft num-coord-dec 2 --data settings
run_with $'begin "mill stone"\nmove T1 1.5 -2 0\nrename T1 T1a\nend\nundo\nredo\nsave' \
  edit points.csv --data settings
run show points.csv --to us-ft-in --denominator 8
run inverse points.csv T1a BM2
run angle -10.5 33.8912 --from gon --to dms
run angle '45°30'\''15.5"N' '45°61'\''00"' --from dms --to deg --decimals 8
run inverse points.csv T1a T3 --lang it.po
