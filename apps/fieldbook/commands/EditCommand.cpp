// fieldbook edit: a points file changed by commands.
#include <algorithm>
#include <iterator>
#include <memory>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/PointTable.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Words.h"
#include "fieldbook/points/PointList.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

const WChar* const kEditHelp = KTEXT(
    "Usage: fieldbook edit FILE [--from UNIT] [--data DIR]\n"
    "\n"
    "Changes a points file by commands from standard input, one a line.\n"
    "\n"
    "  FILE         a points file, see fieldbook show --help\n"
    "  --from UNIT  unit of the coordinates in the file (m)\n"
    "  --data DIR   folder of the settings\n"
    "\n"
    "The commands:\n"
    "  move P dE dN dH  moves a point by so much east, north and up, in the distance\n"
    "                   unit of the settings, see fieldbook units\n"
    "  rename OLD NEW   gives a point another name\n"
    "  delete P         takes a point out\n"
    "  begin NAME       what follows is one step to undo, up to\n"
    "  end\n"
    "  undo, redo       the latest step; the last 20 are kept\n"
    "  list             the points as they stand\n"
    "  save [FILE]      writes the file, or another one\n"
    "  help             this text\n"
    "  quit             so does the end of the input\n"
    "A name with blanks stands in quotes, with \"\" for a quote in it. Empty lines and\n"
    "lines with # in front are skipped.\n"
    "\n"
    "What is saved is comma-separated and UTF-8, with the coordinates in the unit of\n"
    "the file and all their decimals; comments, empty lines and heads stay. A file\n"
    "with rows that can't be read isn't written over, but can be saved under another\n"
    "name, without them. Other files that are there already aren't written over.\n"
    "\n"
    "A command that can't be carried out is reported as -:LINE: what is wrong, the\n"
    "others are carried out, and the exit status is 2. Changes that are left unsaved\n"
    "are reported; on a terminal quit has to be given twice then.\n");

namespace {

namespace fs = std::filesystem;
using Words = std::vector<WString>;

// Prints what a transaction has changed.
class EditReporter final : public kelp::CSourceEvent::IEvent,
                           public kelp::CCmdExecutedList::IEvents {
 public:
  EditReporter(PointList& list, const PointStyle& style, Console& console)
      : m_list(list), m_style(style), m_console(console) {
    m_list.Register(this);
    m_list.GetChangeTransactionManager()->RegisterForUndoRedoEvents(this);
  }
  ~EditReporter() {
    m_list.GetChangeTransactionManager()->UnregisterForUndoRedoEvents(this);
    m_list.Unregister(this);
  }
  EditReporter(const EditReporter&) = delete;
  EditReporter& operator=(const EditReporter&) = delete;

  void OnBeginEvent(kelp::CSourceEvent*) override { m_way = nullptr; }
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
  void OnEndEvent(kelp::CSourceEvent*) override {
    if (m_way != nullptr) m_console.PrintLine(Message{m_way, {Shown(m_list.Step())}}.Text());
    for (const std::size_t row : m_list.ChangedRows()) PrintRow(row);
  }

  void OnBeforeUndoRedo(bool undo) override {
    m_way = undo ? KTEXT("undone: {1}") : KTEXT("redone: {1}");
  }
  void OnAfterUndoRedo(bool) override {}

 private:
  void PrintRow(std::size_t row) {
    const Point& point = m_list.PointIn(row);
    WString text = Shown(point.name);
    if (m_list.IsRemoved(row)) {
      m_console.PrintLine(Message{KTEXT("{1} is deleted"), {text}}.Text());
      return;
    }
    for (const WString& coordinate : CoordinateTexts(point, m_list.Unit(), m_style)) {
      if (!coordinate.empty()) text += KTEXT("  ");
      text += coordinate;
    }
    m_console.PrintLine(text);
  }

  PointList& m_list;
  const PointStyle& m_style;
  Console& m_console;
  const WChar* m_way = nullptr;  // a source text; null for a change that isn't undone or redone
};

class EditSession {
 public:
  EditSession(const CommandLine& line, Console& console)
      : m_console(console),
        m_style(StyleOfSettings(OpenSettings(line, console), line)),
        m_file(line.Operands()[0]),
        m_bytes(ReadAll(m_file)),
        m_list(&m_manager, m_bytes, ChooseFileUnit(line)),
        m_reporter(m_list, m_style, console) {}

  Status Run();

 private:
  struct Rule {
    const WChar* name;
    void (EditSession::*run)(const Words& words);
    std::size_t least;  // words behind the name
    std::size_t most;
    const WChar* operands;
  };
  static const Rule kRules[11];

  bool Ask(std::string& line);
  void DoLine(const std::string& bytes, int number);
  void Do(const WString& line);
  void Leave();
  void Complain(const Message& what);

  void Move(const Words& words);
  void Rename(const Words& words);
  void Delete(const Words& words);
  void Begin(const Words& words);
  void End(const Words& words);
  void Undo(const Words& words);
  void Redo(const Words& words);
  void List(const Words& words);
  void Save(const Words& words);
  void Help(const Words& words);
  void Quit(const Words& words);

  void RequireNoGroup() const;
  double ReadShift(const WChar* name, const WString& text) const;
  void SaveOwn();
  void SaveOther(const Argument& file);
  void RequireUntouched() const;
  void RequireFree(const Argument& file) const;

  Console& m_console;
  PointStyle m_style;
  Argument m_file;
  std::string m_bytes;              // of the file, as it was read or written last
  std::vector<fs::path> m_written;  // other files that this run has made
  kelp::CChangeTransactionManager m_manager;
  PointList m_list;
  EditReporter m_reporter;
  WString m_step;  // what a change is called in undo
  std::unique_ptr<kelp::CSourceEventScope> m_group;
  bool m_isLeaving = false;
  bool m_isWarned = false;  // of unsaved changes
  Status m_status = kDone;
};

const EditSession::Rule EditSession::kRules[11] = {
    {KTEXT("move"), &EditSession::Move, 4, 4, KTEXT("P dE dN dH")},
    {KTEXT("rename"), &EditSession::Rename, 2, 2, KTEXT("OLD NEW")},
    {KTEXT("delete"), &EditSession::Delete, 1, 1, KTEXT("P")},
    {KTEXT("begin"), &EditSession::Begin, 1, 1, KTEXT("NAME")},
    {KTEXT("end"), &EditSession::End, 0, 0, nullptr},
    {KTEXT("undo"), &EditSession::Undo, 0, 0, nullptr},
    {KTEXT("redo"), &EditSession::Redo, 0, 0, nullptr},
    {KTEXT("list"), &EditSession::List, 0, 0, nullptr},
    {KTEXT("save"), &EditSession::Save, 0, 1, KTEXT("[FILE]")},
    {KTEXT("help"), &EditSession::Help, 0, 0, nullptr},
    {KTEXT("quit"), &EditSession::Quit, 0, 0, nullptr},
};

Status EditSession::Run() {
  PointFile unread;
  unread.faults = m_list.Faults();
  ComplainOfRows(unread, m_file, m_console);
  if (!unread.faults.empty()) m_status = kPartly;
  if (m_console.IsInteractive()) {
    m_console.PrintLine(
        Message{KTEXT("{1}: {2} points; help tells the commands"),
                {Shown(m_file.text), WString::ValueOf(static_cast<int>(m_list.Points().size()))}}
            .Text());
  }
  std::string line;
  for (int number = 1; !m_isLeaving && Ask(line); ++number) DoLine(line, number);
  Leave();
  return m_status;
}

bool EditSession::Ask(std::string& line) {
  if (m_console.IsInteractive()) m_console.Prompt();
  if (ReadInputLine(line)) return true;
  if (m_console.IsInteractive()) m_console.PrintLine(WString());
  return false;
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
    throw Failure({KTEXT("{1} takes {2}"), {name, rule->operands}});
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
  if (m_list.IsChanged() && !m_isWarned) {
    Complain({KTEXT("{1}: the changes aren't saved"), {Shown(m_file.text)}});
  }
}

void EditSession::Complain(const Message& what) {
  m_console.Complain(what.Text());
}

double EditSession::ReadShift(const WChar* name, const WString& text) const {
  const LengthUnit& unit = *m_style.plane.unit;
  const Reading shift = ReadLength(text, unit, DecimalMark::PointOrComma);
  if (!shift.fault) return ConvertDist(shift.value, unit.unit, m_list.Unit().unit);
  throw Failure({KTEXT("{1} \"{2}\": {3}"), {name, Quoted(text), shift.fault.Text()}});
}

void EditSession::Move(const Words& words) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  Point point = m_list.PointIn(row);
  point.easting += ReadShift(KTEXT("dE"), words[1]);
  point.northing += ReadShift(KTEXT("dN"), words[2]);
  const double up = ReadShift(KTEXT("dH"), words[3]);
  const bool hasElevation = point.elevation < kelp::kNotSetThreshold;
  if (hasElevation) {
    point.elevation += up;
  } else if (up != 0) {
    throw Failure({KTEXT("the point \"{1}\" has no elevation"), {Quoted(point.name)}});
  }
  for (const double value : {point.easting, point.northing, hasElevation ? point.elevation : 0}) {
    if (!IsWithinReach(value, m_list.Unit())) throw Failure(OutOfRange());
  }
  m_list.Replace(row, point, m_step);
}

void EditSession::Rename(const Words& words) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  Point point = m_list.PointIn(row);
  point.name = ToWString(Trimmed(ViewOf(words[1])));
  if (point.name.empty()) throw Failure({KTEXT("a point can't be without a name"), {}});
  if (m_list.HasPoint(point.name)) {
    throw Failure({KTEXT("there is a point \"{1}\" already"), {Quoted(point.name)}});
  }
  m_list.Replace(row, point, m_step);
}

void EditSession::Delete(const Words& words) {
  m_list.Remove(m_list.RequirePoint(words[0]), m_step);
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
void EditSession::Undo(const Words&) {
  RequireNoGroup();
  if (!m_manager.CanUndo()) throw Failure({KTEXT("there is nothing to undo"), {}});
  const kelp::CSourceEventScope transaction(&m_list);
  m_manager.Undo();
}

void EditSession::Redo(const Words&) {
  RequireNoGroup();
  if (!m_manager.CanRedo()) throw Failure({KTEXT("there is nothing to redo"), {}});
  const kelp::CSourceEventScope transaction(&m_list);
  m_manager.Redo();
}

void EditSession::List(const Words&) {
  const Table table = MakePointTable(m_list.Points(), m_list.Unit(), m_style);
  m_console.Print(table.Aligned(m_console.HasColour()));
}

void EditSession::Save(const Words& words) {
  RequireNoGroup();
  const Argument file = words.empty() ? m_file : Argument{words[0], fs::path(words[0].c_str())};
  std::error_code ignored;
  if (file.path == m_file.path || fs::equivalent(file.path, m_file.path, ignored)) {
    SaveOwn();
  } else {
    SaveOther(file);
  }
  m_list.MarkSaved();
  m_console.PrintLine(Message{KTEXT("saved in {1}"), {Shown(file.text)}}.Text());
}

void EditSession::SaveOwn() {
  if (!m_list.IsWhole()) {
    throw Failure({KTEXT("{1} holds what can't be read and isn't written over; save under another "
                         "name"),
                   {Shown(m_file.text)}});
  }
  RequireUntouched();
  const std::string bytes = m_list.Bytes();
  WriteAll(m_file, bytes);
  m_bytes = bytes;
}

void EditSession::RequireUntouched() const {
  std::error_code ignored;
  if (!fs::exists(m_file.path, ignored) || ReadAll(m_file) == m_bytes) return;
  throw Failure(
      {KTEXT("{1} has changed since it was read; save under another name"), {Shown(m_file.text)}});
}

void EditSession::SaveOther(const Argument& file) {
  RequireFree(file);
  WriteAll(file, m_list.Bytes());
  m_written.push_back(fs::absolute(file.path));
  if (!m_list.IsWhole()) {
    Complain({KTEXT("{1} is without what couldn't be read in {2}"),
              {Shown(file.text), Shown(m_file.text)}});
  }
}

// An empty file holds nothing that could get lost.
void EditSession::RequireFree(const Argument& file) const {
  std::error_code error;
  if (!fs::is_regular_file(file.path, error) || fs::file_size(file.path, error) == 0) return;
  const fs::path path = fs::absolute(file.path);
  if (std::find(m_written.begin(), m_written.end(), path) != m_written.end()) return;
  throw Failure({KTEXT("{1} is there already; save under another name"), {Shown(file.text)}});
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
  return EditSession(line, console).Run();
}

}  // namespace fieldbook
