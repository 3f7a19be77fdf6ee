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
  # Nothing is started: the tests start what servers they want, where they want them.
  as_root env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 </dev/null
}

# What every build on Linux takes; the tests belong to it.
need_compiler() {
  need_packages g++ cmake ninja-build libboost-dev libcups2-dev libcurl4-openssl-dev libedit-dev \
    libexpat1-dev libgtest-dev libxcb-randr0-dev
  # A compiler cache is used where there is one, and not asked for.
  if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
}

# Debian has no Expat for Windows: the build compiles it from the source that Debian's own package is
# made of, which apt-get fetches by lists of its own, so that the machine's stay as they are.
need_expat_source() {
  local version=2.5.0 sum=ab00ee05c7067fd10a35c5d2a4922ebba746ddd50ff83b79c828da17bbdf1757
  local archive=$root/build/expat/expat_$version.orig.tar.gz own options
  if echo "$sum  $archive" | sha256sum --check --status 2>/dev/null; then return 0; fi
  command -v apt-get >/dev/null || die "needs the source of Debian's package expat: $archive"
  echo "fetching: the source of expat $version" >&2
  own=$(mktemp -d)
  mkdir -p "$own/lists/partial" "$own/cache/archives/partial" "$own/parts"
  options=(-qq -o Dir::Etc::SourceList="$own/sources.list" -o Dir::Etc::SourceParts="$own/parts"
           -o Dir::State::Lists="$own/lists" -o Dir::Cache="$own/cache" -o APT::Sandbox::User=root)
  debian_sources >"$own/sources.list"
  if [ ! -s "$own/sources.list" ]; then
    as_root apt-get update -qq >&2
    debian_sources >"$own/sources.list"
  fi
  (cd "$own" && apt-get "${options[@]}" update &&
   apt-get "${options[@]}" source --download-only --tar-only expat) >&2 || true
  mkdir -p "$(dirname "$archive")"
  mv "$own/$(basename "$archive")" "$archive" 2>/dev/null || true
  rm -rf "$own"
  echo "$sum  $archive" | sha256sum --check --status 2>/dev/null ||
    die "the source of expat $version can't be had, or isn't the one that is known"
}

# Where this machine has Debian's packages from, as places of their sources.
debian_sources() {
  apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
    'Identifier: Packages' 'Origin: Debian' | sort -u
}

# The tests of number text want a locale with a decimal comma, those of settings also one whose
# characters have one byte.
need_german_locale() {
  local charset
  need_packages locales
  for charset in UTF-8 ISO-8859-15; do
    [ "$(LC_ALL=de_DE.$charset locale charmap 2>/dev/null)" = $charset ] ||
      as_root localedef -i de_DE -f $charset de_DE.$charset
  done
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
