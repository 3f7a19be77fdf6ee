#include "fieldbook/commands/EditCompletion.h"

#include <algorithm>
#include <iterator>

#include "kelp0lang/NaturalOrder.h"

namespace fieldbook {
namespace {

constexpr WChar kQuote = KTEXT('"');

// The words before the cursor; the last is the one that is typed, and may be empty.
struct TypedLine {
  std::vector<WString> words;
  std::size_t begin = 0;  // of the last word, with its quote
  bool isQuoted = false;  // the last word
};

// As SplitWords takes them apart, but for the last word, whose quote is open.
TypedLine Parse(WideView line) {
  TypedLine typed;
  std::size_t at = 0;
  for (;;) {
    while (at < line.size() && IsBlank(line[at])) ++at;
    typed.begin = at;
    typed.isQuoted = at < line.size() && line[at] == kQuote;
    if (typed.isQuoted) ++at;
    std::basic_string<WChar> word;
    for (; at < line.size(); ++at) {
      if (!typed.isQuoted && IsBlank(line[at])) break;
      if (typed.isQuoted && line[at] == kQuote) {
        ++at;
        if (at == line.size() || line[at] != kQuote) break;
      }
      word += line[at];
    }
    typed.words.push_back(ToWString(word));
    if (at == line.size()) return typed;
  }
}

// What the words behind a command are.
enum class WordKind { Point, Fixed };

struct WordRule {
  const WChar* command;
  std::size_t place;  // behind the command, from 1
  WordKind kind;
  const WChar* word;  // of Fixed
};

constexpr WordRule kWords[] = {
    {KTEXT("move"), 1, WordKind::Point, nullptr},
    {KTEXT("set"), 1, WordKind::Point, nullptr},
    {KTEXT("rename"), 1, WordKind::Point, nullptr},
    {KTEXT("delete"), 1, WordKind::Point, nullptr},
    {KTEXT("set"), 2, WordKind::Fixed, KTEXT("east")},
    {KTEXT("set"), 2, WordKind::Fixed, KTEXT("north")},
    {KTEXT("set"), 2, WordKind::Fixed, KTEXT("up")},
    {KTEXT("set"), 2, WordKind::Fixed, KTEXT("name")},
    {KTEXT("set"), 2, WordKind::Fixed, KTEXT("code")},
    {KTEXT("undo"), 1, WordKind::Fixed, KTEXT("all")},
};

bool StartsWith(const WString& text, const WString& front) {
  return ViewOf(text).starts_with(ViewOf(front));
}

void AddNames(const PointList& list, const WString& front, std::vector<WString>& names) {
  for (const std::size_t row : list.RowsOfPoints()) {
    const WString& name = list.PointIn(row).name;
    if (StartsWith(name, front)) names.push_back(name);
  }
  std::sort(names.begin(), names.end(), kelp::NaturalLess());
  names.erase(std::unique(names.begin(), names.end()), names.end());
}

std::vector<WString> ChoicesFor(const TypedLine& typed, const std::vector<WString>& commands,
                                const PointList& list) {
  const WString& front = typed.words.back();
  std::vector<WString> choices;
  if (typed.words.size() == 1) {
    std::copy_if(commands.begin(), commands.end(), std::back_inserter(choices),
                 [&front](const WString& command) { return StartsWith(command, front); });
    return choices;
  }
  for (const WordRule& rule : kWords) {
    if (typed.words.size() != rule.place + 1 || typed.words[0] != rule.command) continue;
    if (rule.kind == WordKind::Point) {
      AddNames(list, front, choices);
    } else if (StartsWith(rule.word, front)) {
      choices.push_back(rule.word);
    }
  }
  return choices;
}

// No half of a surrogate pair stays behind.
WideView CommonFront(const std::vector<WString>& texts) {
  WideView common = ViewOf(texts.front());
  for (const WString& text : texts) {
    const WideView view = ViewOf(text);
    const auto ends = std::mismatch(common.begin(), common.end(), view.begin(), view.end());
    common = common.substr(0, static_cast<std::size_t>(ends.first - common.begin()));
  }
  if (!common.empty() && (common.back() & 0xFC00) == 0xD800) common.remove_suffix(1);
  return common;
}

bool NeedsQuotes(const WString& name) {
  const WideView view = ViewOf(name);
  return view.empty() || view.front() == kQuote ||
         std::any_of(view.begin(), view.end(), IsBlank<WChar>);
}

}  // namespace

Completion CompleteEdit(const WString& before, const std::vector<WString>& commands,
                        const PointList& list) {
  const TypedLine typed = Parse(ViewOf(before));
  Completion completion;
  completion.typed = before.length() - typed.begin;
  completion.choices = ChoicesFor(typed, commands, list);
  if (completion.choices.empty()) return completion;
  const bool isOnly = completion.choices.size() == 1;
  const bool isQuoted = typed.isQuoted || std::any_of(completion.choices.begin(),
                                                      completion.choices.end(), NeedsQuotes);
  std::basic_string<WChar> text;
  if (isQuoted) text += kQuote;
  for (const WChar unit : CommonFront(completion.choices)) {
    text.append(isQuoted && unit == kQuote ? 2 : 1, unit);
  }
  if (isOnly && isQuoted) text += kQuote;
  if (isOnly) text += KTEXT(' ');
  completion.text = ToWString(text);
  return completion;
}

}  // namespace fieldbook
