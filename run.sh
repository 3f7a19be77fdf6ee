#!/usr/bin/env bash
# Builds the host programs, fieldbook and ribbon, and runs them.
#   ./run.sh                   a short tour of both
#   ./run.sh ribbon ARGS...    ribbon ARGS...
#   ./run.sh ARGS...           fieldbook ARGS...
# Whatever the build has to say goes to standard error.
set -euo pipefail
caller=$PWD
cd "$(dirname "$0")"
. scripts/setup.sh
need_compiler
build release fieldbook ribbon ostrandadmin
programs=$root/build/release/bin
if [ $# -eq 0 ]; then
  "$root/apps/fieldbook/tour.sh" "$programs/fieldbook"
  exec "$root/apps/ribbon/tour.sh" "$programs/ribbon"
fi
program=fieldbook
if [ "$1" = ribbon ]; then
  program=ribbon
  shift
fi
cd "$caller"
exec "$programs/$program" "$@"
