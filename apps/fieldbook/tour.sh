#!/usr/bin/env bash
# A short tour of fieldbook over the points file in data; takes the path of the program. It works on
# a copy and on settings of its own, and leaves nothing behind.
set -euo pipefail
program=$(realpath "$1")
cd "$(dirname "$0")/data"
. ../../console/tour.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp points.csv it.po "$folder"
cd "$folder"

run show points.csv --data settings --progress --verbose
run units set dist-units us-ft num-coord-dec 2 --data settings
run_with $'begin "mill stone"\nmove T1 1.5 -2 0\nrename T1 T1a\nend\nundo\nredo\nsave' \
  edit points.csv --data settings
run show points.csv --to us-ft-in --denominator 8
run recent --data settings
run inverse points.csv T1a BM2
run angle -10.5 33.8912 --from gon --to dms
run angle 134.5042 N45-30-15W --from deg --to bearing
run angle '45°30'\''15.5"N' '45°61'\''00"' --from dms --to deg --decimals 8
run inverse points.csv T1a T3 --lang it.po
run system
