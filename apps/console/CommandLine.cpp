#include "console/CommandLine.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace console {
namespace {

struct OptionRule {
  Option option;
  const WChar* name;
  bool hasValue;
};

constexpr OptionRule kOptions[] = {
    {Option::From, KTEXT("--from"), true},
    {Option::Columns, KTEXT("--columns"), true},
    {Option::To, KTEXT("--to"), true},
    {Option::Decimals, KTEXT("--decimals"), true},
    {Option::Denominator, KTEXT("--denominator"), true},
    {Option::Reduced, KTEXT("--reduced"), false},
    {Option::Csv, KTEXT("--csv"), false},
    {Option::Points, KTEXT("--points"), true},
    {Option::Sort, KTEXT("--sort"), true},
    {Option::Within, KTEXT("--within"), true},
    {Option::Limit, KTEXT("--limit"), true},
    {Option::Tolerance, KTEXT("--tolerance"), true},
    {Option::Output, KTEXT("--output"), true},
    {Option::NoBackup, KTEXT("--no-backup"), false},
    {Option::Field, KTEXT("--field"), true},
    {Option::Lat, KTEXT("--lat"), false},
    {Option::Lon, KTEXT("--lon"), false},
    {Option::Bearing, KTEXT("--bearing"), false},
    {Option::Progress, KTEXT("--progress"), false},
    {Option::Verbose, KTEXT("--verbose"), false},
    {Option::Json, KTEXT("--json"), false},
    {Option::Data, KTEXT("--data"), true},
    {Option::Lang, KTEXT("--lang"), true},
    {Option::Help, KTEXT("--help"), false},
    {Option::Version, KTEXT("--version"), false},
    {Option::Help, KTEXT("-h"), false},
    {Option::Version, KTEXT("-v"), false},
    {Option::Output, KTEXT("-o"), true},
};
static_assert(std::size(kOptions) == kOptionCount + 3);

const OptionRule* FindOption(WideView name) {
  const auto* rule = std::find_if(std::begin(kOptions), std::end(kOptions),
                                  [name](const OptionRule& r) { return name == r.name; });
  return rule == std::end(kOptions) ? nullptr : rule;
}

bool IsOption(WideView text) {
  return text.size() > 1 && text[0] == KTEXT('-') && !IsDigit(text[1]) && text[1] != KTEXT('.');
}

}  // namespace

const WChar* NameOf(Option option) {
  return kOptions[static_cast<int>(option)].name;
}

CommandLine::CommandLine(const std::vector<Argument>& arguments) {
  for (std::size_t at = 0; at < arguments.size();) {
    const WideView text = ViewOf(arguments[at].text);
    if (text == KTEXT("--")) {
      std::for_each(arguments.begin() + static_cast<std::ptrdiff_t>(at) + 1, arguments.end(),
                    [this](const Argument& operand) { TakeOperand(operand); });
      return;
    }
    if (IsOption(text)) {
      at += TakeOption(arguments, at);
    } else {
      TakeOperand(arguments[at++]);
    }
  }
}

const Argument* CommandLine::Value(Option option) const {
  return Has(option) ? &Values(option).back() : nullptr;
}

std::size_t CommandLine::TakeOption(const std::vector<Argument>& arguments, std::size_t at) {
  const WideView text = ViewOf(arguments[at].text);
  const std::size_t equals = text.find(KTEXT('='));
  const WideView name = text.substr(0, equals);
  const OptionRule* rule = FindOption(name);
  if (rule == nullptr) {
    SetFault(KTEXT("there is no option {1}"), {Quoted(ToWString(name))});
    return 1;
  }
  std::vector<Argument>& values = m_options[Index(rule->option)];
  if (equals != WideView::npos) {
    if (!rule->hasValue) SetFault(KTEXT("{1} takes no value"), {rule->name});
    // The name is ASCII, so that it has the same length in the units of a path.
    const auto& native = arguments[at].path.native();
    values.push_back({ToWString(text.substr(equals + 1)), native.substr(equals + 1)});
    return 1;
  }
  if (!rule->hasValue) {
    values.emplace_back();
    return 1;
  }
  if (at + 1 == arguments.size()) {
    SetFault(KTEXT("{1} needs a value behind it"), {rule->name});
    return 1;
  }
  values.push_back(arguments[at + 1]);
  return 2;
}

void CommandLine::TakeOperand(const Argument& argument) {
  if (m_hasCommand) {
    m_operands.push_back(argument);
  } else {
    m_command = argument.text;
    m_hasCommand = true;
  }
}

void CommandLine::SetFault(const WChar* source, std::vector<WString> values) {
  if (!m_fault) m_fault = {source, std::move(values)};
}

}  // namespace console
