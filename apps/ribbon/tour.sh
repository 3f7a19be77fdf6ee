#!/usr/bin/env bash
# A short tour of ribbon over the layouts in data; takes the path of the program. It works on copies
# and leaves nothing behind.
set -euo pipefail
program=$(realpath "$1")
cd "$(dirname "$0")/data"
. ../../console/tour.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp *.xml "$folder"
cd "$folder"

run diff shipped-4.2.xml users-4.2.xml -o users.diff.xml
run show users.diff.xml shipped-4.2.xml
run check shipped-5.0.xml users.diff.xml
run apply shipped-5.0.xml users.diff.xml -o users-5.0.xml
run diff shipped-5.0.xml users-5.0.xml -o kept.diff.xml
run show kept.diff.xml shipped-5.0.xml --lang it
