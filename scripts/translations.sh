#!/usr/bin/env bash
# The texts of the programs for their translators, who work on apps/PROGRAM/data/LANGUAGE.po.
#   scripts/translations.sh              brings every language up to the texts of the sources
#   scripts/translations.sh de           begins a language
#   scripts/translations.sh --check it   says which texts a language doesn't have, and which of its
#                                        own no source has; nothing is changed
#
# In the programs every text of KTEXT is for translators, but for those of not-translated.po; what
# stands in apps/console belongs to each of them. In the library it is those of KXLATE.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

programs=(fieldbook ribbon)
template=$(mktemp --suffix=.pot)
trap 'rm -f "$template"' EXIT

# collect PROGRAM KEYWORD FOLDER [OPTIONS...]: adds the texts of a folder to the template. What is said is
# shown where it fails; otherwise it warns of texts that aren't for translators.
collect() {
  local program=$1 keyword=$2 folder=$3 said
  shift 3
  said=$(find "$folder" -name '*.cpp' -o -name '*.h' | sort |
    xgettext --files-from=- --output="$template" --language=C++ --from-code=UTF-8 \
      --keyword --keyword="$keyword" --no-location --no-wrap --package-name="$program" \
      "$@" 2>&1) || die "$said"
}

# make_template PROGRAM
make_template() {
  collect "$1" KTEXT apps/console --exclude-file=apps/console/not-translated.po
  collect "$1" KTEXT "apps/$1" --exclude-file=apps/console/not-translated.po \
    --exclude-file="apps/$1/not-translated.po" --join-existing
  sed -i -e 's/charset=CHARSET/charset=UTF-8/' "$template"
  collect "$1" KXLATE common/kelp/kelp0lang --join-existing
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
for program in "${programs[@]}"; do
  data=apps/$program/data
  rm -f "$template"
  make_template "$program"
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
done
