# Sourced by the scripts in the root: what a fresh Debian 12 machine needs for them.
# Installs only what is missing, as root or through sudo, and says so on standard error.

export LC_ALL=C.UTF-8
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

die() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "needs root or sudo to run: $*"
  fi
}

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# need_packages NAME...: Debian packages.
need_packages() {
  local missing=() name
  for name in "$@"; do is_installed "$name" || missing+=("$name"); done
  [ ${#missing[@]} -gt 0 ] || return 0
  command -v apt-get >/dev/null || die "needs these Debian packages: ${missing[*]}"
  echo "installing: ${missing[*]}" >&2
  as_root apt-get update -qq >&2
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 </dev/null
}

# What every build on Linux takes; the tests belong to it.
need_compiler() {
  need_packages g++ cmake ninja-build libboost-dev libgtest-dev
  # A compiler cache is used where there is one, and not asked for.
  if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
}

# The tests of number text want a locale with a decimal comma.
need_german_locale() {
  need_packages locales
  locale -a | grep -qix 'de_DE\.utf-\?8' ||
    as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8
}

# build PRESET [TARGET...]: configures and builds; prints on standard error, in full only on failure.
build() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! { cmake --preset "$preset" -S "$root" &&
         cmake --build "$root/build/$preset" ${*:+--target "$@"}; } >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    die "the build failed"
  fi
  rm -f "$log"
}
