#include "fieldbook/Program.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/values/LocalTime.h"
#include "kelp0lang/Translate.h"
#include "kelp0lang/UtcTime.h"

namespace fieldbook {
namespace {

constexpr unsigned kEverywhere = Bit(Option::Data) | Bit(Option::Lang) | Bit(Option::Help) |
                                 Bit(Option::Version) | Bit(Option::Verbose);
constexpr unsigned kFileOptions = Bit(Option::From) | Bit(Option::Columns) | Bit(Option::Progress);
constexpr unsigned kLengthOptions = kFileOptions | Bit(Option::To) | Bit(Option::Decimals) |
                                    Bit(Option::Denominator) | Bit(Option::Reduced);

const Command kCommands[] = {
    {KTEXT("show"), ShowCommand, kShowHelp,
     kEverywhere | kLengthOptions | Bit(Option::Csv) | Bit(Option::Points) | Bit(Option::Sort) |
         Bit(Option::Within) | Bit(Option::Limit)},
    {KTEXT("angle"), AngleCommand, kAngleHelp,
     kEverywhere | Bit(Option::From) | Bit(Option::To) | Bit(Option::Decimals) | Bit(Option::Lat) |
         Bit(Option::Lon)},
    {KTEXT("inverse"), InverseCommand, kInverseHelp, kEverywhere | kLengthOptions},
    {KTEXT("polar"), PolarCommand, kPolarHelp, kEverywhere | kLengthOptions | Bit(Option::Csv)},
    {KTEXT("area"), AreaCommand, kAreaHelp, kEverywhere | kLengthOptions},
    {KTEXT("plot"), PlotCommand, kPlotHelp, kEverywhere | kFileOptions | Bit(Option::Output)},
    {KTEXT("units"), UnitsCommand, kUnitsHelp, kEverywhere},
    {KTEXT("edit"), EditCommand, kEditHelp, kEverywhere | kFileOptions | Bit(Option::NoBackup)},
};

const WChar* const kGeneralHelp = KTEXT(
    "Usage: fieldbook COMMAND ... [--data DIR] [--lang LANGUAGE] [--verbose]\n"
    "\n"
    "Reads survey points and angles, shows them in the unit that you ask for, and\n"
    "changes points files.\n"
    "\n"
    "  fieldbook show FILE...          the points of files as tables\n"
    "  fieldbook angle VALUE...        angles from one notation into another\n"
    "  fieldbook inverse FILE FROM TO  distance and direction between points\n"
    "  fieldbook polar FILE FROM DIRECTION DISTANCE\n"
    "                                  the point that lies there\n"
    "  fieldbook area FILE P1 P2 P3... the area within points\n"
    "  fieldbook plot FILE -o MAP.svg  the points as a drawing\n"
    "  fieldbook units                 the settings of units\n"
    "  fieldbook units set KEY VALUE   changes one, for good\n"
    "  fieldbook edit FILE             changes a file by commands, with undo\n"
    "\n"
    "  fieldbook help COMMAND          what the command takes, with all options\n"
    "  fieldbook --version             the version of the program\n"
    "  --data DIR                      folder of the settings, instead of fieldbook\n"
    "                                  in your application data\n"
    "  --lang LANGUAGE                 texts in another language than that of the\n"
    "                                  environment: en, it, or a gettext catalogue\n"
    "                                  (.po or .mo)\n"
    "  --verbose                       the local time of the run on standard error\n"
    "\n"
    "Options may stand anywhere; behind -- nothing is an option. A points file has\n"
    "rows of point, easting, northing, elevation and description.\n"
    "\n"
    "Exit status: 0 done, 1 not done, 2 done but for some rows, values\n"
    "or commands.\n"
    "\n"
    "Examples:\n"
    "  fieldbook units set dist-units us-ft num-coord-dec 2\n"
    "  fieldbook show survey.csv --from us-ft --to m\n"
    "  fieldbook angle -10.5 --from deg --to dms\n"
    "  fieldbook inverse survey.csv T1 T2\n");

// The catalogue beside the program for a language such as "it" or "it_IT"; an empty path where
// there is none.
Argument ShippedCatalogue(const WString& language) {
  const WideView code = ViewOf(language).substr(0, ViewOf(language).find_first_of(KTEXT("_.@-")));
  if (code.empty() ||
      code.find_first_not_of(KTEXT("abcdefghijklmnopqrstuvwxyz")) != WideView::npos) {
    return {};
  }
  std::string name;
  AppendUtf8(name, ToWString(code));
  const std::filesystem::path path = Console::ProgramFolder() / (name + ".po");
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  const std::u8string text = path.u8string();
  return {Decode({reinterpret_cast<const char*>(text.data()), text.size()}, true), path};
}

// The language of the user, for as long as the program runs: that of --lang, a catalogue or the
// name of a language that comes with the program, or that of the environment.
class Language {
 public:
  explicit Language(const Argument* given) {
    if (given != nullptr && given->text == WString(KTEXT("en"))) return;  // the texts themselves
    if (given != nullptr) {
      const Argument shipped = ShippedCatalogue(given->text);
      Load(shipped.path.empty() ? *given : shipped);
      return;
    }
    const Argument shipped = ShippedCatalogue(Console::EnvironmentLanguage());
    if (!shipped.path.empty()) Load(shipped);
  }
  ~Language() { kelp::UnloadTranslateFile(); }
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;

 private:
  static void Load(const Argument& catalogue) {
    RequireReadable(catalogue);
    if (!kelp::LoadTranslateFile(catalogue.text)) {
      throw Failure({KTEXT("--lang: {1}"), {Shown(kelp::GetTranslateFileError())}});
    }
  }
};

const Command* FindCommand(const WString& name) {
  const auto* command =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&name](const Command& c) { return name.Compare(c.name) == 0; });
  return command == std::end(kCommands) ? nullptr : command;
}

void RequireOptionsOf(const Command& command, const CommandLine& line) {
  for (int i = 0; i < kOptionCount; ++i) {
    const auto option = static_cast<Option>(i);
    if (!line.Has(option) || (command.options & Bit(option)) != 0) continue;
    throw UsageFailure({KTEXT("{1} takes no {2}"), {command.name, NameOf(option)}});
  }
}

const Command& RequireCommand(const CommandLine& line) {
  if (line.Command().empty()) {
    throw UsageFailure({KTEXT("a command is missing: one of {1}"), {NamesOf(kCommands)}});
  }
  const Command* command = FindCommand(line.Command());
  if (command != nullptr) return *command;
  throw UsageFailure({KTEXT("there is no command \"{1}\", only {2}"),
                      {Quoted(line.Command()), NamesOf(kCommands)}});
}

Status RunLine(const CommandLine& line, Console& console) {
  if (line.Fault()) throw UsageFailure(line.Fault());
  if (line.Has(Option::Version)) {
    console.PrintLine(KTEXT("fieldbook ") + WString::ConvertFromUtf8(FIELDBOOK_VERSION));
    return kDone;
  }
  const bool wantsHelp = line.Has(Option::Help);
  const bool isHelp = line.Command() == WString(KTEXT("help"));
  if (isHelp && !line.Operands().empty()) {
    const Command* command = FindCommand(line.Operands()[0].text);
    if (command != nullptr) {
      console.PrintText(kelp::Xlate(command->help));
      return kDone;
    }
  }
  if (isHelp || (wantsHelp && line.Command().empty())) {
    console.PrintText(kelp::Xlate(kGeneralHelp));
    return kDone;
  }
  const Command& command = RequireCommand(line);
  if (wantsHelp) {
    console.PrintText(kelp::Xlate(command.help));
    return kDone;
  }
  RequireOptionsOf(command, line);
  if (line.Has(Option::Verbose)) {
    const WString now = LocalTimeText(kelp::FGetUtcCurTime());
    console.Complain(Message{KTEXT("started: {1}"), {now}}.Text());
  }
  return command.run(line, console);
}

// Where the help is for a line that can't be carried out.
void Hint(const CommandLine& line, Console& console) {
  const Command* command = FindCommand(line.Command());
  const WString place = command == nullptr ? WString() : KTEXT(' ') + WString(command->name);
  console.Complain(Message{KTEXT("Try: fieldbook{1} --help"), {place}}.Text());
}

int RunInLanguage(const CommandLine& line, Console& console) {
  try {
    const Status status = RunLine(line, console);
    console.Flush();
    return console.IsOutputLost() ? kFailed : status;
  } catch (const UsageFailure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
    Hint(line, console);
  } catch (const Failure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
  } catch (const std::bad_alloc&) {
    ComplainOfFailure(kelp::Xlate(KTEXT("there isn't enough memory")), console);
  }
  return kFailed;
}

}  // namespace

int Run(const std::vector<Argument>& arguments, Console& console) {
  const CommandLine line(arguments);
  try {
    const Language language(line.Value(Option::Lang));
    return RunInLanguage(line, console);
  } catch (const Failure& failure) {
    ComplainOfFailure(failure.GetMsg(), console);
    return kFailed;
  }
}

}  // namespace fieldbook
