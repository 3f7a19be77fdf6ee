#!/usr/bin/env bash
# Builds fieldbook, the host program, and runs it.
#   ./run.sh            a short tour over a points file
#   ./run.sh ARGS...    fieldbook ARGS...
# Whatever the build has to say goes to standard error.
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")"
. scripts/setup.sh
need_compiler
build release fieldbook
program=$root/build/release/bin/fieldbook
if [ $# -eq 0 ]; then
  exec "$root/apps/fieldbook/tour.sh" "$program"
fi
cd "$caller"
exec "$program" "$@"
