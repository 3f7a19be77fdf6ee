#!/usr/bin/env bash
# Makes the site of the documentation, build/docs/index.html: the pages of docs/, the examples, the
# reference out of the headers, and the help of the programs, which are built for it.
# A warning of Doxygen, and a link that leads nowhere, are errors.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/setup.sh
need_packages doxygen python3
need_compiler
build release fieldbook ribbon

version=$(sed -n 's/^project(kelp0lang VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || die "CMakeLists.txt tells no version"
export KELP_VERSION=$version

# The headers that programs include.
public_headers() {
  sed -n 's/^#include "\(kelp0lang\/.*\)"$/common\/kelp\/\1/p' common/kelp/kelp0lang/kelp0lang.h
  ls common/kelp/kelp0lang/Http*.h
  grep -L 'internal to the library' common/sarnutils/*.h | grep -v /Export.h
}
KELP_PUBLIC_HEADERS=$(public_headers | sort -u | tr '\n' ' ')
export KELP_PUBLIC_HEADERS

pages=$root/build/docs-pages
rm -rf "$root/build/docs" "$pages"
mkdir -p "$root/build/docs" "$pages"
docs/layer_page.py docs/layer.md.in common/winapi/include >"$pages/layer.md"
docs/help_page.py docs/programs.md.in "$root/build/release/bin" >"$pages/programs.md"

doxygen docs/Doxyfile
docs/finish_site.py build/docs
echo "$root/build/docs/index.html"
