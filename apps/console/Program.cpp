#include "console/Program.h"

#include <algorithm>
#include <new>

#include "console/Language.h"
#include "console/LocalTime.h"
#include "kelp0lang/Translate.h"
#include "kelp0lang/UtcTime.h"

namespace console {
namespace {

const Command* FindCommand(const Program& program, const WString& name) {
  const auto command =
      std::find_if(program.commands.begin(), program.commands.end(),
                   [&name](const Command& c) { return name.Compare(c.name) == 0; });
  return command == program.commands.end() ? nullptr : &*command;
}

void RequireOptionsOf(const Command& command, const CommandLine& line) {
  for (int i = 0; i < kOptionCount; ++i) {
    const auto option = static_cast<Option>(i);
    if (!line.Has(option) || (command.options & Bit(option)) != 0) continue;
    throw UsageFailure({KTEXT("{1} takes no {2}"), {command.name, NameOf(option)}});
  }
}

const Command& RequireCommand(const Program& program, const CommandLine& line) {
  if (line.Command().empty()) {
    throw UsageFailure({KTEXT("a command is missing: one of {1}"), {NamesOf(program.commands)}});
  }
  const Command* command = FindCommand(program, line.Command());
  if (command != nullptr) return *command;
  throw UsageFailure({KTEXT("there is no command \"{1}\", only {2}"),
                      {Quoted(line.Command()), NamesOf(program.commands)}});
}

// The help that a line asks for, a source text; null where it asks for none.
const WChar* HelpFor(const Program& program, const CommandLine& line) {
  const bool isHelp = line.Command() == WString(KTEXT("help"));
  if (isHelp && !line.Operands().empty()) {
    const Command* command = FindCommand(program, line.Operands()[0].text);
    if (command != nullptr) return command->help;
  }
  const bool wantsHelp = line.Has(Option::Help);
  if (isHelp || (wantsHelp && line.Command().empty())) return program.help;
  return wantsHelp ? RequireCommand(program, line).help : nullptr;
}

Status RunLine(const Program& program, const CommandLine& line, Console& console) {
  if (line.Fault()) throw UsageFailure(line.Fault());
  if (line.Has(Option::Version)) {
    console.PrintLine(
        (console.ProgramName() + KTEXT(' ')).Concat(WString::ConvertFromUtf8(program.version)));
    return kDone;
  }
  if (const WChar* const help = HelpFor(program, line)) {
    console.PrintText(kelp::Xlate(help));
    return kDone;
  }
  const Command& command = RequireCommand(program, line);
  RequireOptionsOf(command, line);
  if (line.Has(Option::Verbose)) {
    const WString now = LocalTimeText(kelp::FGetUtcCurTime());
    console.Complain(Message{KTEXT("started: {1}"), {now}}.Text());
  }
  return command.run(line, console);
}

// Where the help is for a line that can't be carried out.
void Hint(const Program& program, const CommandLine& line, Console& console) {
  const Command* command = FindCommand(program, line.Command());
  const WString place = command == nullptr ? WString() : KTEXT(' ') + WString(command->name);
  console.Complain(Message{KTEXT("Try: {1} --help"), {console.ProgramName().Concat(place)}}.Text());
}

int RunInLanguage(const Program& program, const CommandLine& line, Console& console) {
  try {
    const Status status = RunLine(program, line, console);
    console.Flush();
    return console.IsOutputLost() ? kFailed : status;
  } catch (const UsageFailure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
    Hint(program, line, console);
  } catch (const Failure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
  } catch (const std::bad_alloc&) {
    ComplainOfFailure(kelp::Xlate(KTEXT("there isn't enough memory")), console);
  }
  return kFailed;
}

}  // namespace

int Run(const Program& program, const std::vector<Argument>& arguments, Console& console) {
  const CommandLine line(arguments);
  try {
    const Language language(line.Value(Option::Lang), console);
    return RunInLanguage(program, line, console);
  } catch (const Failure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
    return kFailed;
  }
}

void ComplainOfFailure(const WString& what, Console& console) {
  console.Complain((console.ProgramName() + KTEXT(": ")).Concat(what));
}

}  // namespace console
