#include "fieldbook/points/PointLayout.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

struct ColumnRule {
  Column column;
  WChar letter;
  const WChar* name;  // a source text
};

constexpr ColumnRule kColumns[] = {
    {Column::Point, KTEXT('P'), KTEXT("point")},
    {Column::Easting, KTEXT('E'), KTEXT("easting")},
    {Column::Northing, KTEXT('N'), KTEXT("northing")},
    {Column::Elevation, KTEXT('Z'), KTEXT("elevation")},
    {Column::Description, KTEXT('D'), KTEXT("description")},
    {Column::Other, KTEXT('-'), KTEXT("(not read)")},
};

const WChar* NameOf(Column column) {
  return kColumns[static_cast<int>(column)].name;
}

// The usual words of heads, in English and Italian.
struct HeadWord {
  const WChar* word;
  Column column;
};

constexpr HeadWord kHeadWords[] = {
    {KTEXT("point"), Column::Point},
    {KTEXT("name"), Column::Point},
    {KTEXT("number"), Column::Point},
    {KTEXT("no"), Column::Point},
    {KTEXT("nr"), Column::Point},
    {KTEXT("id"), Column::Point},
    {KTEXT("pt"), Column::Point},
    {KTEXT("p"), Column::Point},
    {KTEXT("point name"), Column::Point},
    {KTEXT("point number"), Column::Point},
    {KTEXT("point id"), Column::Point},
    {KTEXT("punto"), Column::Point},
    {KTEXT("nome"), Column::Point},
    {KTEXT("numero"), Column::Point},
    {KTEXT("easting"), Column::Easting},
    {KTEXT("east"), Column::Easting},
    {KTEXT("e"), Column::Easting},
    {KTEXT("est"), Column::Easting},
    {KTEXT("northing"), Column::Northing},
    {KTEXT("north"), Column::Northing},
    {KTEXT("n"), Column::Northing},
    {KTEXT("nord"), Column::Northing},
    {KTEXT("elevation"), Column::Elevation},
    {KTEXT("elev"), Column::Elevation},
    {KTEXT("height"), Column::Elevation},
    {KTEXT("z"), Column::Elevation},
    {KTEXT("h"), Column::Elevation},
    {KTEXT("quota"), Column::Elevation},
    {KTEXT("altezza"), Column::Elevation},
    {KTEXT("description"), Column::Description},
    {KTEXT("desc"), Column::Description},
    {KTEXT("d"), Column::Description},
    {KTEXT("code"), Column::Description},
    {KTEXT("descrizione"), Column::Description},
    {KTEXT("codice"), Column::Description},
};

// What stands in brackets behind the word of a head.
struct HeadUnit {
  const WChar* text;
  const WChar* name;  // of the unit, as on the command line
};

constexpr HeadUnit kHeadUnits[] = {
    {KTEXT("m"), KTEXT("m")},
    {KTEXT("metres"), KTEXT("m")},
    {KTEXT("meters"), KTEXT("m")},
    {KTEXT("metri"), KTEXT("m")},
    {KTEXT("ft"), KTEXT("ft")},
    {KTEXT("feet"), KTEXT("ft")},
    {KTEXT("ift"), KTEXT("ft")},
    {KTEXT("intl ft"), KTEXT("ft")},
    {KTEXT("us ft"), KTEXT("us-ft")},
    {KTEXT("us-ft"), KTEXT("us-ft")},
    {KTEXT("ft us"), KTEXT("us-ft")},
    {KTEXT("usft"), KTEXT("us-ft")},
    {KTEXT("ftus"), KTEXT("us-ft")},
    {KTEXT("us survey ft"), KTEXT("us-ft")},
    {KTEXT("us survey feet"), KTEXT("us-ft")},
    {KTEXT("sft"), KTEXT("us-ft")},
    {KTEXT("ft-in"), KTEXT("ft-in")},
    {KTEXT("us ft-in"), KTEXT("us-ft-in")},
    {KTEXT("us-ft-in"), KTEXT("us-ft-in")},
    {KTEXT("ft-in us"), KTEXT("us-ft-in")},
    {KTEXT("ch"), KTEXT("ch")},
    {KTEXT("us ch"), KTEXT("us-ch")},
    {KTEXT("us-ch"), KTEXT("us-ch")},
    {KTEXT("ch us"), KTEXT("us-ch")},
};

// A head: its word and what it says of the unit, both without capitals.
struct Head {
  WString word;
  WString unit;
};

WString Plain(WideView text) {
  text = Trimmed(text);
  while (!text.empty() && (text.back() == KTEXT('.') || text.back() == KTEXT(':'))) {
    text.remove_suffix(1);
  }
  return ToWString(Trimmed(text)).ToLowerCase();
}

Head TakeApart(const WString& text) {
  WideView view = Trimmed(ViewOf(text));
  const bool isBracketed =
      !view.empty() && (view.back() == KTEXT(')') || view.back() == KTEXT(']'));
  const std::size_t open = view.find_last_of(KTEXT("(["));
  if (!isBracketed || open == WideView::npos) return {Plain(view), WString()};
  const WideView unit = view.substr(open + 1, view.size() - open - 2);
  return {Plain(view.substr(0, open)), Plain(unit)};
}

Column ColumnOf(const WString& word) {
  for (const HeadWord& known : kHeadWords) {
    if (word == known.word || word == WString(kelp::Xlate(known.word)).ToLowerCase()) {
      return known.column;
    }
  }
  // Heads in the language of the program, whichever it is.
  for (const ColumnRule& rule : kColumns) {
    if (word == kelp::Xlate(rule.name).ToLowerCase()) return rule.column;
  }
  return Column::Other;
}

bool IsXOrY(const WString& word) {
  return word == KTEXT("x") || word == KTEXT("y");
}

const LengthUnit* UnitOf(const WString& text) {
  for (const LengthUnit& unit : kLengthUnits) {
    if (text == kelp::Xlate(unit.symbol).ToLowerCase()) return &unit;
  }
  for (const HeadUnit& known : kHeadUnits) {
    if (text != known.text) continue;
    return std::find_if(
        std::begin(kLengthUnits), std::end(kLengthUnits),
        [&known](const LengthUnit& unit) { return WideView(unit.name) == WideView(known.name); });
  }
  return nullptr;
}

bool Holds(const ColumnOrder& columns, Column wanted) {
  return std::find(columns.begin(), columns.end(), wanted) != columns.end();
}

WString Joined(const std::vector<WString>& texts) {
  WString joined;
  for (const WString& text : texts) {
    if (!joined.empty()) joined += KTEXT(", ");
    joined += text;
  }
  return joined;
}

bool HoldsDigit(const WString& text) {
  const WideView view = ViewOf(text);
  return std::any_of(view.begin(), view.end(), IsDigit<WChar>);
}

// The columns that the words tell. Throws LayoutFailure where two heads are of one column.
ColumnOrder ColumnsOf(const std::vector<WString>& texts) {
  ColumnOrder columns;
  for (const WString& text : texts) {
    const Column column = ColumnOf(TakeApart(text).word);
    if (column != Column::Other && Holds(columns, column)) {
      throw LayoutFailure({KTEXT("the heads \"{1}\" name the {2} twice"),
                           {Quoted(Joined(texts)), kelp::Xlate(NameOf(column))}});
    }
    columns.push_back(column);
  }
  return columns;
}

bool AreTold(const ColumnOrder& columns) {
  return Holds(columns, Column::Point) && Holds(columns, Column::Easting) &&
         Holds(columns, Column::Northing);
}

void RequireTold(const ColumnOrder& columns, const std::vector<WString>& texts) {
  if (AreTold(columns)) return;
  const bool hasXOrY = std::any_of(
      texts.begin(), texts.end(), [](const WString& text) { return IsXOrY(TakeApart(text).word); });
  if (hasXOrY) {
    throw LayoutFailure(
        {KTEXT("the heads \"{1}\" don't tell which is north, x or y; {2} does, such as "
               "P,E,N,Z,D"),
         {Quoted(Joined(texts)), KTEXT("--columns")}});
  }
  throw LayoutFailure({KTEXT("the heads \"{1}\" don't tell which columns are point, easting and "
                             "northing; {2} does, such as P,E,N,Z,D"),
                       {Quoted(Joined(texts)), KTEXT("--columns")}});
}

// The one unit that the heads of coordinates have, null for none.
const LengthUnit* UnitIn(const std::vector<WString>& texts, const ColumnOrder& columns) {
  const LengthUnit* found = nullptr;
  for (std::size_t i = 0; i < texts.size() && i < columns.size(); ++i) {
    const Head head = TakeApart(texts[i]);
    if (!IsCoordinate(columns[i]) || head.unit.empty()) continue;
    const LengthUnit* unit = UnitOf(head.unit);
    if (unit == nullptr) {
      throw LayoutFailure({KTEXT("the unit of the head \"{1}\" isn't known"), {Quoted(texts[i])}});
    }
    if (found != nullptr && found != unit) {
      throw LayoutFailure(
          {KTEXT("the heads \"{1}\" have different units"), {Quoted(Joined(texts))}});
    }
    found = unit;
  }
  return found;
}

}  // namespace

bool IsCoordinate(Column column) {
  return column == Column::Easting || column == Column::Northing || column == Column::Elevation;
}

std::optional<ColumnOrder> ReadColumns(const WString& text) {
  ColumnOrder columns;
  WideView rest = ViewOf(text);
  for (;;) {
    const std::size_t comma = std::min(rest.find(KTEXT(',')), rest.size());
    const WString letter = ToWString(Trimmed(rest.substr(0, comma))).ToUpperCase();
    const auto* rule = std::find_if(
        std::begin(kColumns), std::end(kColumns),
        [&letter](const ColumnRule& r) { return ViewOf(letter) == WideView(&r.letter, 1); });
    if (rule == std::end(kColumns)) return std::nullopt;
    if (rule->column != Column::Other && Holds(columns, rule->column)) return std::nullopt;
    columns.push_back(rule->column);
    if (comma == rest.size()) break;
    rest.remove_prefix(comma + 1);
  }
  if (!AreTold(columns)) return std::nullopt;
  return columns;
}

ColumnOrder UsualColumns(bool isEastFirst) {
  ColumnOrder columns = {Column::Point, Column::Easting, Column::Northing, Column::Elevation,
                         Column::Description};
  if (!isEastFirst) std::swap(columns[1], columns[2]);
  return columns;
}

WString ColumnNames(const ColumnOrder& columns) {
  std::vector<WString> names;
  for (const Column column : columns) names.push_back(kelp::Xlate(NameOf(column)));
  return Joined(names);
}

bool MayBeHeads(const std::vector<WString>& texts) {
  if (texts.size() < 3) return false;
  const bool namesCoordinate = std::any_of(texts.begin(), texts.end(), [](const WString& text) {
    const WString word = TakeApart(text).word;
    const Column column = ColumnOf(word);
    return column == Column::Easting || column == Column::Northing;
  });
  constexpr std::size_t kBeforeDescription = 4;
  const auto end =
      texts.begin() + static_cast<std::ptrdiff_t>(std::min(texts.size(), kBeforeDescription));
  const bool hasDigits = std::any_of(texts.begin(), end, HoldsDigit);
  return !hasDigits && (namesCoordinate || (!texts[1].empty() && !texts[2].empty()));
}

bool TellColumns(const std::vector<WString>& texts) {
  ColumnOrder columns;
  for (const WString& text : texts) columns.push_back(ColumnOf(TakeApart(text).word));
  return AreTold(columns);
}

Heads ReadHeads(const std::vector<WString>& texts, const LayoutWishes& wishes) {
  Heads heads;
  if (wishes.columns) {
    heads.columns = *wishes.columns;
  } else {
    heads.columns = ColumnsOf(texts);
    RequireTold(heads.columns, texts);
  }
  heads.unit = UnitIn(texts, heads.columns);
  if (heads.unit != nullptr && wishes.from != nullptr && heads.unit != wishes.from) {
    throw LayoutFailure({KTEXT("the heads \"{1}\" are in {2}, and {3} says {4}"),
                         {Quoted(Joined(texts)), kelp::Xlate(heads.unit->symbol), KTEXT("--from"),
                          kelp::Xlate(wishes.from->symbol)}});
  }
  return heads;
}

WString LayoutText(const PointLayout& layout) {
  static constexpr const WChar* kColumnDeciders[] = {
      KTEXT("as its heads say"), KTEXT("as --columns says"), KTEXT("as the settings say")};
  static constexpr const WChar* kUnitDeciders[] = {
      KTEXT("as its heads say"), KTEXT("as --from says"), KTEXT("as the settings say")};
  return Message{KTEXT("Read as {1} ({2}), in {3} ({4})."),
                 {ColumnNames(layout.columns),
                  kelp::Xlate(kColumnDeciders[static_cast<int>(layout.columnsBy)]),
                  kelp::Xlate(layout.unit->symbol),
                  kelp::Xlate(kUnitDeciders[static_cast<int>(layout.unitBy)])}}
      .Text();
}

}  // namespace fieldbook
