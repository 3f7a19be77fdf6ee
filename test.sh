#!/usr/bin/env bash
# Builds and runs the tests.
#   ./test.sh            on Linux
#   ./test.sh windows    built for Windows by mingw-w64, run under Wine
#   ./test.sh asan       under the address and undefined-behaviour sanitizers, fuzzers included
#   ./test.sh ubsan      under the undefined-behaviour sanitizer alone
#   ./test.sh tsan       under the thread sanitizer
#   ./test.sh all        all of these
#   ./test.sh coverage   on Linux, and which lines and branches of the libraries the tests run, by
#                        file; build/coverage/report.txt names those that they don't
#   ./test.sh mutants    how many of small faults, planted one at a time, the tests find: 12 for each
#                        family; "./test.sh mutants 25 text numbers" as many for some; takes hours
#   ./test.sh packages   makes the packages, installs them into an empty Debian and an empty folder for
#                        Windows, and builds programs there; takes root, and half an hour
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh

run_linux() {
  need_compiler
  need_packages cups-daemon gdb gettext libfmt-dev nginx-light openssl pkg-config tinyproxy-bin x11-utils \
    x11-xserver-utils xvfb
  need_german_locale
  build "$1"
  ctest --preset "$1"
}

run_sanitizer() {
  need_packages clang libclang-rt-14-dev
  run_linux "$1"
}

# Windows are made on a screen of the tests' own, which goes when the script ends.
start_display() {
  local number
  exec {display_output}< <(exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>/dev/null)
  display_process=$!
  trap stop_display EXIT
  read -r -t 60 -u "$display_output" number || die "no display for the tests: Xvfb didn't start"
  export DISPLAY=:$number
}

# Wine's desktop goes before its screen.
stop_display() {
  /usr/lib/wine/wineserver64 -k || true
  kill "$display_process" 2>/dev/null || true
}

# Wine's loader has its heap at a random address above its own, once in a thousand times where
# Windows has a page that every program needs, 0x7ffe0000; the program then doesn't start. So
# addresses aren't random, where the machine allows that.
with_fixed_addresses() {
  if setarch -R true 2>/dev/null; then
    setarch -R "$@"
  else
    "$@"
  fi
}

# What programs for Windows take to be built and run.
with_windows() {
  need_packages cups-daemon g++-mingw-w64-x86-64-posix pkg-config wine64 googletest xvfb
  need_expat_source
  # A Windows of the build's own, made before several tests start at once.
  export WINEPREFIX=$root/build/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  start_display
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    with_fixed_addresses /usr/lib/wine/wine64 wineboot --init >&2
    # The service manager that set it up starts nobody else's services; the next one does.
    /usr/lib/wine/wineserver64 -w
  fi
  # Some files of the library have their place on D:.
  mkdir -p "$WINEPREFIX/drive_d"
  ln -sfn ../drive_d "$WINEPREFIX/dosdevices/d:"
}

run_windows() {
  need_compiler
  with_windows
  build windows
  # A test counts as running while a program of Wine's own that began with it holds its output, be it
  # done in seconds; the preset's time limit allows for that.
  with_fixed_addresses ctest --preset windows
}

# Branches that only exceptions take aren't counted: a compiler puts one behind every call.
run_coverage() {
  need_packages gcovr
  # Counts of an earlier run would be added to.
  if [ -d build/coverage ]; then find build/coverage -name '*.gcda' -delete; fi
  run_linux coverage
  local count=(gcovr --root . --object-directory build/coverage --filter common/
    --exclude-unreachable-branches --exclude-throw-branches)
  "${count[@]}" --txt build/coverage/report.txt --json build/coverage/report.json build/coverage >/dev/null
  "${count[@]}" --add-tracefile build/coverage/report.json --branches --txt build/coverage/branches.txt
  cat build/coverage/report.txt
  tail -4 build/coverage/branches.txt
}

# In a copy of the sources, of which only what differs is copied and so built anew.
run_mutants() {
  local tree=$root/build/mutants/tree build=$root/build/mutants/build file
  need_compiler
  need_packages gettext lld libfmt-dev python3
  need_german_locale
  mkdir -p "$tree"
  while IFS= read -r -d '' file; do
    cmp -s "$file" "$tree/$file" || cp --parents "$file" "$tree"
  done < <(git ls-files -z)
  cmake -S "$tree" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_FLAGS_RELEASE="-O0 -fno-inline" -DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld \
    -DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld >"$build.log"
  scripts/mutants.py "$tree" "$build" "${@:-12}"
}

case "${1:-linux}" in
  linux) run_linux release ;;
  windows) run_windows ;;
  asan | ubsan | tsan) run_sanitizer "$1" ;;
  all)
    run_linux release
    run_windows
    for sanitizer in asan ubsan tsan; do run_sanitizer "$sanitizer"; done
    ;;
  coverage) run_coverage ;;
  mutants) run_mutants "${@:2}" ;;
  packages)
    . scripts/packages.sh
    test_packages
    ;;
  *) die "unknown kind of run '$1'; there are: windows, asan, ubsan, tsan, all, coverage, mutants, packages" ;;
esac
