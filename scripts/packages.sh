# Sourced by test.sh: makes the packages, and tries them where nothing else of the library is.

# Everything below build/packages: what cpack makes, and the empty system and folder for it.
packages=$root/build/packages
base=$root/build/debian-base    # an empty Debian, made once
system=$packages/debian         # a copy, with the packages
unpacked=$packages/windows

in_system() {
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/root DEBIAN_FRONTEND=noninteractive \
    ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    chroot "$system" "$@"
}

# The mirror is the one that this machine has its packages from.
make_base() {
  local mirror
  if [ -f "$base/etc/debian_version" ]; then return 0; fi
  mirror=$(debian_sources | awk '$3 == "bookworm" { print $2; exit }')
  [ -n "$mirror" ] || die "no mirror of Debian 12 is known here: apt-get update"
  echo "making an empty Debian 12: $base" >&2
  rm -rf "$base.new"
  debootstrap --variant=minbase bookworm "$base.new" "$mirror" >"$base.log" 2>&1 ||
    { cat "$base.log" >&2; die "debootstrap failed"; }
  mv "$base.new" "$base"
}

leave_system() {
  if mountpoint -q "$system/proc"; then umount "$system/proc"; fi
}

make_system() {
  leave_system
  rm -rf "$system"
  cp -a "$base" "$system"
  trap leave_system EXIT
  mount -t proc proc "$system/proc" || die "needs to mount /proc in $system"
  in_system apt-get update -qq
  cp "$packages"/*.deb "$system/root/"
}

# try_in_system SCRIPT NAME=VALUE...: a test of tests/consumer, against what is installed there.
try_in_system() {
  local script=$1 definitions=() value
  shift
  for value in "$@"; do definitions+=(-D "$value"); done
  in_system cmake -D README=/project/README.md -D INSTALLED=/usr -D WORK_DIR=/project/work \
    "${definitions[@]}" -P "/project/tests/consumer/$script.cmake"
}

test_debian_packages() {
  rm -f "$packages"/*.deb
  build packages
  (cd "$packages" && cpack --config CPackConfig.cmake >cpack.log 2>&1) ||
    { cat "$packages/cpack.log" >&2; die "cpack failed"; }
  ls "$packages"/*.deb
  # cpack has the loader's cache made anew by scripts of its own, beside the trigger.
  lintian --allow-root --fail-on error,warning --suppress-tags maintscript-calls-ldconfig \
    "$packages"/*.deb

  make_base
  make_system
  in_system sh -c 'apt-get install -y -qq /root/libkelp0lang0_*.deb /root/kelp0lang-tools_*.deb' \
    >"$packages/install.log" 2>&1 || { cat "$packages/install.log" >&2; die "apt failed"; }
  # The programs run before there is anything to build with.
  in_system fieldbook --version
  in_system ribbon --version
  printf 'P1,1000,2000,30,stone\n' | in_system fieldbook show - --to us-ft --lang it
  in_system sh -c 'apt-get install -y -qq --no-install-recommends /root/libkelp0lang-dev_*.deb \
    g++ cmake ninja-build pkg-config man-db' >>"$packages/install.log" 2>&1 ||
    { cat "$packages/install.log" >&2; die "apt failed"; }
  [ -f "$system/usr/share/gdb/auto-load$(in_system sh -c 'realpath /usr/lib/*/libkelp0lang.so')-gdb.py" ] ||
    die "gdb finds nothing beside the installed library"

  mkdir -p "$system/project/tests"
  cp -r README.md examples "$system/project/"
  cp -r tests/consumer "$system/project/tests/"
  try_in_system RunConsumer
  try_in_system RunPkgConfig COMPILER=g++
  try_in_system RunExamples EXAMPLES=/project/examples
  echo "in an empty Debian: the programs, README's project by find_package and pkg-config, the examples"
  in_system sh -c 'apt-get purge -y -qq libkelp0lang0 >/dev/null 2>&1'
  if [ -n "$(find "$system/usr" -iname '*kelp0lang*')" ]; then die "purging left something behind"; fi
  leave_system
}

# check_pages: the manual pages, by the formatter's warnings.
check_pages() {
  local page said
  for page in docs/man/*.[18]; do
    said=$(man --warnings -l "$page" 2>&1 >/dev/null)
    [ -z "$said" ] || die "$page: $said"
  done
}

# The libraries compiled anew, into projects of others and as static ones, on one platform.
test_consumers() {
  cmake --preset "$1" >/dev/null
  $2 ctest --test-dir "build/$1" -L packages --output-on-failure --no-tests=error
}

# try_unpacked SCRIPT NAME=VALUE...
try_unpacked() {
  local script=$1 definitions=() value
  shift
  for value in "$@"; do definitions+=(-D "$value"); done
  with_fixed_addresses cmake -D README="$root/README.md" -D INSTALLED="$unpacked" \
    -D WORK_DIR="$packages/work" -D EMULATOR=/usr/lib/wine/wine64 -D SUFFIX=.exe \
    -D OPTIONS="-DCMAKE_TOOLCHAIN_FILE=$root/cmake/mingw-w64.cmake;-DBoost_INCLUDE_DIR=$boost" \
    "${definitions[@]}" -P "tests/consumer/$script.cmake"
}

test_windows_zip() {
  local boost=$root/build/packages-windows/boost-headers file
  rm -rf "$packages"/*.zip "$unpacked"
  build packages-windows
  (cd build/packages-windows && cpack --config CPackConfig.cmake >cpack.log 2>&1) ||
    { cat build/packages-windows/cpack.log >&2; die "cpack failed"; }
  ls "$packages"/*.zip
  mkdir -p "$unpacked"
  unzip -q "$packages"/*.zip -d "$unpacked"
  for file in bin/kelp0lang.dll bin/sarnutils.dll lib/libkelp0lang.dll.a lib/libsarnutils.dll.a \
    lib/kelp0lang.def lib/sarnutils.def include/kelp0lang/kelp0lang.h share/kelp0lang/kelp0lang.natvis; do
    [ -s "$unpacked/$file" ] || die "the .zip lacks $file"
  done
  # What another tool chain does with a .def: an import library, and a program that names nothing else.
  x86_64-w64-mingw32-dlltool -d "$unpacked/lib/kelp0lang.def" -D kelp0lang.dll \
    -l "$packages/kelp0lang.lib"
  with_fixed_addresses /usr/lib/wine/wine64 "$unpacked/bin/fieldbook.exe" --version
  try_unpacked RunConsumer
  try_unpacked RunPkgConfig COMPILER=x86_64-w64-mingw32-g++-posix FLAGS="-I$boost"
  try_unpacked RunExamples EXAMPLES="$root/examples"
  echo "in an empty folder, under Wine: fieldbook, README's project by find_package and pkg-config, the examples"
}

test_packages() {
  [ "$(id -u)" = 0 ] || die "packages are installed into an empty Debian, which takes root"
  need_compiler
  need_packages debootstrap lintian man-db pkg-config unzip
  check_pages
  test_debian_packages
  test_consumers release ""
  with_windows
  test_windows_zip
  test_consumers windows with_fixed_addresses
}
