#!/usr/bin/env bash
# The texts of fieldbook for its translators, who work on apps/fieldbook/data/LANGUAGE.po.
#   scripts/translations.sh              brings every language up to the texts of the sources
#   scripts/translations.sh de           begins a language
#   scripts/translations.sh --check it   says which texts a language doesn't have, and which of its
#                                        own no source has; nothing is changed
#
# In fieldbook every text of KTEXT is for translators, but for those of not-translated.po. In the
# library it is those of KXLATE.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

data=apps/fieldbook/data
template=$(mktemp --suffix=.pot)
trap 'rm -f "$template"' EXIT

# collect KEYWORD FOLDER [OPTIONS...]: adds the texts of a folder to the template. What is said is
# shown where it fails; otherwise it warns of texts that aren't for translators.
collect() {
  local keyword=$1 folder=$2 said
  shift 2
  said=$(find "$folder" -name '*.cpp' -o -name '*.h' | sort |
    xgettext --files-from=- --output="$template" --language=C++ --from-code=UTF-8 \
      --keyword --keyword="$keyword" --no-location --no-wrap --package-name=fieldbook \
      "$@" 2>&1) || die "$said"
}

make_template() {
  collect KTEXT apps/fieldbook --exclude-file="$data/../not-translated.po"
  sed -i -e 's/charset=CHARSET/charset=UTF-8/' "$template"
  collect KXLATE common/kelp/kelp0lang --join-existing
}

# The source texts of a catalogue that are translated, or all those of a template, one a line.
texts() {
  msgattrib --no-wrap --no-obsolete "$@" |
    awk '/^msgid / { on = 1; text = ""; sub(/^msgid /, "") }
         /^msgstr/ { if (on && text != "") print text; on = 0 }
         on { text = text substr($0, 2, length($0) - 2) }' | sort
}

check() {
  local missing lost
  missing=$(comm -23 <(texts "$template") <(texts --translated --no-fuzzy "$1") |
    sed 's/.*/no translation: "&"/')
  lost=$(comm -13 <(texts "$template") <(texts "$1") | sed 's/.*/no such text: "&"/')
  [ -z "$missing$lost" ] || die "$1:
$missing
$lost
CONTRIBUTING.md says what to do"
}

command -v xgettext >/dev/null || need_packages gettext
make_template
case ${1-} in
  --check)
    check "$data/${2-it}.po"
    ;;
  '')
    for catalogue in "$data"/*.po; do
      msgmerge --quiet --update --backup=none --no-wrap "$catalogue" "$template"
    done
    ;;
  *)
    [ ! -e "$data/$1.po" ] || die "$data/$1.po is there already"
    msginit --no-translator --no-wrap --locale="$1" --input="$template" --output="$data/$1.po"
    ;;
esac
