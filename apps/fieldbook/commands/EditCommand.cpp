// fieldbook edit: a points file changed by commands.
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/EditCompletion.h"
#include "fieldbook/commands/EditReporter.h"
#include "fieldbook/commands/EditedFile.h"
#include "fieldbook/commands/PointEdits.h"
#include "fieldbook/commands/RecentFiles.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Words.h"
#include "fieldbook/points/PointReading.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kEditHelp = KTEXT(
    "Usage: fieldbook edit FILE [--from UNIT] [--columns P,E,N,Z,D] [--no-backup]\n"
    "                      [--data DIR]\n"
    "\n"
    "Changes a points file by commands from standard input, one a line.\n"
    "\n"
    "  FILE            a points file, see fieldbook show --help\n"
    "  --from UNIT     unit of the coordinates in the file, where its heads have none\n"
    "  --columns LIST  the order of its columns, where it has no heads\n"
    "  --no-backup     the first save keeps no copy of the file as it was (FILE.bak)\n"
    "  --data DIR      folder of the settings\n"
    "\n"
    "The commands:\n"
    "  add P E N [H [CODE]]  a new point\n"
    "  move P dE dN dH       moves a point by so much east, north and up\n"
    "  shift dE dN dH        moves all points\n"
    "  set P WHAT VALUE      gives a point another east, north, up, name or code;\n"
    "                        up \"\" takes the elevation away\n"
    "  rename OLD NEW        gives a point another name\n"
    "  delete P              takes a point out\n"
    "  begin NAME            what follows is one step to undo, up to\n"
    "  end\n"
    "  undo [all], redo      the latest step, or all; the last 20 are kept\n"
    "  list                  the points as they stand\n"
    "  save [FILE]           writes the file, or another one\n"
    "  help                  this text\n"
    "  quit                  so does the end of the input\n"
    "Lengths are in the unit of the file, unless a unit stands behind one: move P 1 ft\n"
    "0 0. A name with blanks stands in quotes, with \"\" for a quote in it. Empty lines\n"
    "and lines with # in front are skipped. On a terminal the arrow keys edit a line\n"
    "and bring earlier ones back, and Tab completes commands and names of points.\n"
    "\n"
    "What is saved is comma-separated and UTF-8, with the columns and the unit of the\n"
    "file and all decimals; comments, empty lines and heads stay. A file with rows\n"
    "that can't be read isn't written over, but can be saved under another name,\n"
    "without them. Other files that are there already aren't written over.\n"
    "\n"
    "A command that can't be carried out is reported as -:LINE: what is wrong, the\n"
    "others are carried out, and the exit status is 2. So it is when changes are left\n"
    "unsaved; on a terminal quit, or Ctrl-C, has to be given twice then.\n");

namespace {

// A bar while a long file is read.
class ReadingBar {
 public:
  ReadingBar(const CommandLine& line, Console& console)
      : m_progress(line, console), m_task(m_progress, KTEXT("reading"), 1) {}
  Watch GetWatch() {
    return [this](double fraction) { m_progress.Set(fraction); };
  }

 private:
  Progress m_progress;
  const Progress::Task m_task;
};

// Points are echoed in the unit of the file, since lengths are typed in it.
PointStyle StyleInUnit(PointStyle style, const LengthUnit& unit) {
  style.plane.unit = style.height.unit = &unit;
  return style;
}

class EditSession {
 public:
  EditSession(const CommandLine& line, Console& console)
      : m_console(console),
        m_file(line.Operands()[0], !line.Has(Option::NoBackup), console),
        m_settings(OpenSettings(line, console)),
        m_list(&m_manager, m_file.Bytes(), ChooseLayout(line, m_settings),
               ReadingBar(line, console).GetWatch()),
        m_edits(m_list),
        m_style(StyleInUnit(ChoosePointStyle(m_settings.units, line), m_list.Unit())),
        m_reporter(m_list, m_style, console) {
    if (console.IsInteractive()) m_editor = std::make_unique<LineEditor>(console, MakeCompleter());
  }

  Status Run();

 private:
  struct Rule {
    const WChar* name;
    void (EditSession::*run)(const Words& words);
    std::size_t least;  // words behind the name
    std::size_t most;
    const WChar* operands;
  };
  static const Rule kRules[14];

  Completer MakeCompleter() const;
  bool Ask(std::string& line);
  void DoLine(const std::string& bytes, int number);
  void Do(const WString& line);
  void Leave();
  void Complain(const Message& what);

  template <void (PointEdits::*kChange)(const Words&, const WString&)>
  void Change(const Words& words) {
    (m_edits.*kChange)(words, m_step);
  }
  void Begin(const Words& words);
  void End(const Words& words);
  void Undo(const Words& words);
  void Redo(const Words& words);
  void List(const Words& words);
  void Save(const Words& words);
  void Help(const Words& words);
  void Quit(const Words& words);

  void RequireNoGroup() const;

  Console& m_console;
  EditedFile m_file;
  kelp::CChangeTransactionManager m_manager;
  const Settings m_settings;
  PointList m_list;
  PointEdits m_edits;
  const PointStyle m_style;
  EditReporter m_reporter;
  std::unique_ptr<LineEditor> m_editor;        // on a terminal
  std::optional<InterruptScope> m_interrupts;  // likewise
  WString m_step;                              // what a change is called in undo
  std::unique_ptr<kelp::CSourceEventScope> m_group;
  bool m_isLeaving = false;
  bool m_isWarned = false;  // of unsaved changes
  Status m_status = kDone;
};

const EditSession::Rule EditSession::kRules[14] = {
    {KTEXT("add"), &EditSession::Change<&PointEdits::Add>, 3, 9, kAddOperands},
    {KTEXT("move"), &EditSession::Change<&PointEdits::Move>, 4, 7, kMoveOperands},
    {KTEXT("shift"), &EditSession::Change<&PointEdits::Shift>, 3, 6, kShiftOperands},
    {KTEXT("set"), &EditSession::Change<&PointEdits::Set>, 3, 4, kSetOperands},
    {KTEXT("rename"), &EditSession::Change<&PointEdits::Rename>, 2, 2, KTEXT("OLD NEW")},
    {KTEXT("delete"), &EditSession::Change<&PointEdits::Delete>, 1, 1, KTEXT("P")},
    {KTEXT("begin"), &EditSession::Begin, 1, 1, KTEXT("NAME")},
    {KTEXT("end"), &EditSession::End, 0, 0, nullptr},
    {KTEXT("undo"), &EditSession::Undo, 0, 1, KTEXT("[all]")},
    {KTEXT("redo"), &EditSession::Redo, 0, 0, nullptr},
    {KTEXT("list"), &EditSession::List, 0, 0, nullptr},
    {KTEXT("save"), &EditSession::Save, 0, 1, KTEXT("[FILE]")},
    {KTEXT("help"), &EditSession::Help, 0, 0, nullptr},
    {KTEXT("quit"), &EditSession::Quit, 0, 0, nullptr},
};

Status EditSession::Run() {
  // A file that is empty, or has heads alone, is one that points are added to.
  if (!m_list.Faults().IsEmpty()) {
    RequirePoints(m_file.File(), m_list.CountPoints(), m_list.Faults());
  }
  RememberFiles({m_file.File()});
  m_console.PrintLine(LayoutText(m_list.Layout()));
  ComplainOfRows(m_list.Faults(), m_file.File(), m_console);
  if (!m_list.Faults().IsEmpty()) m_status = kPartly;
  if (m_console.IsInteractive()) {
    m_console.PrintLine(Message{
        KTEXT("{1}: {2} points; help tells the commands"),
        {Shown(m_file.File().text), WString::ValueOf(static_cast<int>(m_list.CountPoints()))}}
                            .Text());
  }
  std::string line;
  for (int number = 1; !m_isLeaving && Ask(line); ++number) DoLine(line, number);
  Leave();
  return m_status;
}

Completer EditSession::MakeCompleter() const {
  std::vector<WString> commands;
  for (const Rule& rule : kRules) commands.push_back(rule.name);
  return [this, commands](const WString& before) { return CompleteEdit(before, commands, m_list); };
}

// On a terminal Ctrl-C asks what quit asks, also where it comes while a line is carried out;
// elsewhere it ends the program as usual.
bool EditSession::Ask(std::string& line) {
  if (m_editor == nullptr) return ReadInputLine(line);
  if (!m_interrupts) m_interrupts.emplace();
  for (;;) {
    if (!m_interrupts->IsInterrupted() && m_editor->Read(line)) return true;
    m_console.PrintLine(WString());
    if (!m_interrupts->IsInterrupted()) return false;
    m_interrupts.emplace();  // for the next one
    Quit({});
    if (m_isLeaving) return false;
  }
}

void EditSession::DoLine(const std::string& bytes, int number) {
  try {
    if (bytes.size() > kLongestLine) throw Failure({KTEXT("the line is too long"), {}});
    const WString text = Decode(number == 1 ? WithoutMark(bytes) : bytes);
    const WideView line = Trimmed(ViewOf(text));
    if (!line.empty() && line.front() != KTEXT('#')) Do(ToWString(line));
  } catch (const Failure& failure) {
    WString place;
    if (!m_console.IsInteractive()) {
      place = WString(KTEXT("-:")).Concat(WString::ValueOf(number)) + KTEXT(": ");
    }
    m_console.Complain(place.Concat(failure.GetMsg()));
    m_status = kPartly;
  }
}

void EditSession::Do(const WString& line) {
  Words words = SplitWords(line);
  const WString name = words.front();
  words.erase(words.begin());
  const auto* rule = std::find_if(std::begin(kRules), std::end(kRules),
                                  [&name](const Rule& r) { return name.Compare(r.name) == 0; });
  if (rule == std::end(kRules)) {
    throw Failure(
        {KTEXT("there is no command \"{1}\", only {2}"), {Quoted(name), NamesOf(kRules)}});
  }
  if (words.size() < rule->least || words.size() > rule->most) {
    if (rule->operands == nullptr) throw Failure({KTEXT("{1} takes nothing behind it"), {name}});
    FailOnOperands(name, rule->operands);
  }
  if (rule->run != &EditSession::Quit) m_isWarned = false;
  if (m_group == nullptr) m_step = line;
  (this->*rule->run)(words);
}

// What is still open when the input is at its end.
void EditSession::Leave() {
  if (m_group != nullptr) {
    Complain({KTEXT("the group \"{1}\" isn't ended; it ends here"), {Quoted(m_step)}});
    m_status = kPartly;
    m_group.reset();
  }
  if (!m_list.IsChanged() || m_isWarned) return;
  Complain({KTEXT("{1}: the changes aren't saved"), {Shown(m_file.File().text)}});
  m_status = kPartly;
}

void EditSession::Complain(const Message& what) {
  m_console.Complain(what.Text());
}

void EditSession::Begin(const Words& words) {
  RequireNoGroup();
  m_step = words[0];
  m_group = std::make_unique<kelp::CSourceEventScope>(&m_list);
}

void EditSession::End(const Words&) {
  if (m_group == nullptr) throw Failure({KTEXT("no group is open"), {}});
  m_group.reset();
}

void EditSession::RequireNoGroup() const {
  if (m_group == nullptr) return;
  throw Failure({KTEXT("the group \"{1}\" is open; end it first"), {Quoted(m_step)}});
}

// The transaction around it makes one event of all changes of the step.
void EditSession::Undo(const Words& words) {
  RequireNoGroup();
  const bool isAll = !words.empty();
  if (isAll && words[0] != KTEXT("all")) FailOnOperands(KTEXT("undo"), KTEXT("[all]"));
  if (!m_manager.CanUndo()) throw Failure({KTEXT("there is nothing to undo"), {}});
  do {
    const kelp::CSourceEventScope transaction(&m_list);
    m_manager.Undo();
  } while (isAll && m_manager.CanUndo());
}

void EditSession::Redo(const Words&) {
  RequireNoGroup();
  if (!m_manager.CanRedo()) throw Failure({KTEXT("there is nothing to redo"), {}});
  const kelp::CSourceEventScope transaction(&m_list);
  m_manager.Redo();
}

void EditSession::List(const Words&) {
  Table table = MakePointTable(m_style);
  CoordinateWriter writer(m_list.Unit(), m_style);
  for (const std::size_t row : m_list.RowsOfPoints()) {
    const Point& point = m_list.PointIn(row);
    std::string name, description;
    AppendUtf8(name, point.name);
    AppendUtf8(description, point.description);
    table.AddCell(name);
    for (const std::string& text : writer.Write(point)) table.AddCell(text);
    table.AddCell(description);
  }
  table.WriteAligned(m_console.HasColour(),
                     [this](std::string_view piece) { m_console.Print(piece); });
}

void EditSession::Save(const Words& words) {
  RequireNoGroup();
  const Argument file =
      words.empty() ? m_file.File() : Argument{words[0], std::filesystem::path(words[0].c_str())};
  m_file.Save(m_list, file);
  m_list.MarkSaved();
  m_console.PrintLine(Message{KTEXT("saved in {1}"), {Shown(file.text)}}.Text());
}

void EditSession::Help(const Words&) {
  m_console.PrintText(kelp::Xlate(kEditHelp));
}

void EditSession::Quit(const Words&) {
  m_isLeaving = !m_console.IsInteractive() || m_isWarned || !m_list.IsChanged();
  if (m_isLeaving) return;
  Complain({KTEXT("the changes aren't saved; save them, or quit again to drop them"), {}});
  m_isWarned = true;
}

}  // namespace

Status EditCommand(const CommandLine& line, Console& console) {
  if (line.Operands().size() != 1) {
    throw UsageFailure({KTEXT("edit takes one FILE, {1} given"),
                        {WString::ValueOf(static_cast<int>(line.Operands().size()))}});
  }
  if (line.Operands()[0].text == WString(KTEXT("-"))) {
    throw UsageFailure({KTEXT("edit takes a FILE; standard input is for the commands"), {}});
  }
  if (IsWebAddress(line.Operands()[0].text)) {
    throw UsageFailure({KTEXT("edit takes a FILE that it can write; one on the web it can't"), {}});
  }
  return EditSession(line, console).Run();
}

}  // namespace fieldbook
