// fieldbook edit: a points file changed by commands.
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/EditCompletion.h"
#include "fieldbook/commands/PointTable.h"
#include "fieldbook/commands/Settings.h"
#include "fieldbook/console/Words.h"
#include "fieldbook/points/PointList.h"
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
    const WString name = Shown(point.name);
    if (m_list.IsRemoved(row)) {
      m_console.PrintLine(Message{KTEXT("{1} is deleted"), {name}}.Text());
      return;
    }
    CoordinateWriter writer(m_list.Unit(), m_style);
    const std::vector<WString> heads = PointHeads(m_style);
    std::string text;
    AppendUtf8(text, name);
    std::size_t head = 1;
    for (const std::string& coordinate : writer.Write(point)) {
      if (!coordinate.empty()) {
        text += "  ";
        AppendUtf8(text, heads[head]);
        text += ' ' + coordinate;
      }
      ++head;
    }
    m_console.Print(text + '\n');
  }

  PointList& m_list;
  const PointStyle& m_style;
  Console& m_console;
  const WChar* m_way = nullptr;  // a source text; null for a change that isn't undone or redone
};

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
        m_file(line.Operands()[0]),
        m_keepsBackup(!line.Has(Option::NoBackup)),
        m_bytes(ReadAll(m_file)),
        m_settings(OpenSettings(line, console)),
        m_list(&m_manager, m_bytes, ChooseLayout(line, m_settings),
               ReadingBar(line, console).GetWatch()),
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

  void Add(const Words& words);
  void Move(const Words& words);
  void Shift(const Words& words);
  void Set(const Words& words);
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
  double ReadNumbered(const WChar* name, const WString& text, const LengthUnit& unit) const;
  std::vector<double> ReadLengths(const Words& words, std::size_t first,
                                  const std::vector<const WChar*>& names, std::size_t& next) const;
  Point Moved(std::size_t row, const std::vector<double>& shift) const;
  void MoveRow(std::size_t row, const std::vector<double>& shift);
  void RequireWithinReach(const Point& point) const;
  void RequireNewName(const WString& name) const;
  void KeepBackup();
  void SaveOwn();
  void SaveOther(const Argument& file);
  void RequireUntouched() const;
  void RequireFree(const Argument& file) const;

  Console& m_console;
  Argument m_file;
  bool m_keepsBackup;               // at the first save
  std::string m_bytes;              // of the file, as it was read or written last
  std::vector<fs::path> m_written;  // other files that this run has made
  kelp::CChangeTransactionManager m_manager;
  const Settings m_settings;
  PointList m_list;
  const PointStyle m_style;
  EditReporter m_reporter;
  std::unique_ptr<LineEditor> m_editor;        // on a terminal
  std::optional<InterruptScope> m_interrupts;  // likewise
  WString m_step;                              // what a change is called in undo
  std::unique_ptr<kelp::CSourceEventScope> m_group;
  bool m_isLeaving = false;
  bool m_isWarned = false;  // of unsaved changes
  bool m_saysCommas = false;
  Status m_status = kDone;
};

constexpr const WChar* kSetOperands = KTEXT("P WHAT VALUE");

[[noreturn]] void FailOnOperands(const WString& command, const WChar* operands) {
  throw Failure({KTEXT("{1} takes {2}"), {command, operands}});
}

const EditSession::Rule EditSession::kRules[14] = {
    {KTEXT("add"), &EditSession::Add, 3, 9, KTEXT("P E N [H [CODE]]")},
    {KTEXT("move"), &EditSession::Move, 4, 7, KTEXT("P dE dN dH")},
    {KTEXT("shift"), &EditSession::Shift, 3, 6, KTEXT("dE dN dH")},
    {KTEXT("set"), &EditSession::Set, 3, 4, kSetOperands},
    {KTEXT("rename"), &EditSession::Rename, 2, 2, KTEXT("OLD NEW")},
    {KTEXT("delete"), &EditSession::Delete, 1, 1, KTEXT("P")},
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
    RequirePoints(m_file, m_list.CountPoints(), m_list.Faults());
  }
  m_console.PrintLine(LayoutText(m_list.Layout()));
  ComplainOfRows(m_list.Faults(), m_file, m_console);
  if (!m_list.Faults().IsEmpty()) m_status = kPartly;
  if (m_console.IsInteractive()) {
    m_console.PrintLine(
        Message{KTEXT("{1}: {2} points; help tells the commands"),
                {Shown(m_file.text), WString::ValueOf(static_cast<int>(m_list.CountPoints()))}}
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
  Complain({KTEXT("{1}: the changes aren't saved"), {Shown(m_file.text)}});
  m_status = kPartly;
}

void EditSession::Complain(const Message& what) {
  m_console.Complain(what.Text());
}

// In the unit of the file.
double EditSession::ReadNumbered(const WChar* name, const WString& text,
                                 const LengthUnit& unit) const {
  const Reading reading = ReadLength(text, unit, DecimalMark::PointOrComma);
  if (!reading.fault) return ConvertDist(reading.value, unit.unit, m_list.Unit().unit);
  throw Failure({KTEXT("{1} \"{2}\": {3}"), {name, Quoted(text), reading.fault.Text()}});
}

// Where blanks part the words, "1 1/2" is two of them, and nobody can tell what was meant.
void RequireNoPart(const WChar* name, const WString& before, const WString& word) {
  const WideView digits = ViewOf(before);
  if (!IsFraction(word) || digits.empty() || !IsDigit(digits.back()) ||
      digits.find_first_of(KTEXT(".,/")) != WideView::npos) {
    return;
  }
  throw Failure(
      {KTEXT("{1} \"{2}\": this could be a value of its own or part of \"{3}\", which then "
             "stands in quotes"),
       {name, Quoted(word), Quoted(before + KTEXT(' ') + word.c_str())}});
}

const LengthUnit* UnitNamed(const WString& word) {
  const auto* unit =
      std::find_if(std::begin(kLengthUnits), std::end(kLengthUnits),
                   [&word](const LengthUnit& u) { return word.Compare(u.name) == 0; });
  return unit == std::end(kLengthUnits) ? nullptr : unit;
}

// As many lengths as there are names, each with a unit behind it or not; an empty one isn't set.
// next becomes the place of the word behind them.
std::vector<double> EditSession::ReadLengths(const Words& words, std::size_t first,
                                             const std::vector<const WChar*>& names,
                                             std::size_t& next) const {
  std::vector<double> lengths;
  next = first;
  for (const WChar* name : names) {
    if (next >= words.size()) throw Failure({KTEXT("{1} is missing"), {name}});
    const WString& text = words[next++];
    if (next - 1 > first) RequireNoPart(name, words[next - 2], text);
    const LengthUnit* unit = next < words.size() ? UnitNamed(words[next]) : nullptr;
    if (unit != nullptr) ++next;
    lengths.push_back(text.empty()
                          ? kelp::kNotSet
                          : ReadNumbered(name, text, unit != nullptr ? *unit : m_list.Unit()));
  }
  return lengths;
}

const std::vector<const WChar*> kShiftNames = {KTEXT("dE"), KTEXT("dN"), KTEXT("dH")};

void EditSession::RequireWithinReach(const Point& point) const {
  for (const double value : {point.easting, point.northing, point.elevation}) {
    if (value < kelp::kNotSetThreshold && !IsWithinReach(value, m_list.Unit())) {
      throw Failure(OutOfRange());
    }
  }
}

void EditSession::RequireNewName(const WString& name) const {
  if (name.empty()) throw Failure({KTEXT("a point can't be without a name"), {}});
  if (!m_list.HasPoint(name)) return;
  throw Failure({KTEXT("there is a point \"{1}\" already"), {Quoted(name)}});
}

void EditSession::Add(const Words& words) {
  Point point{ToWString(Trimmed(ViewOf(words[0]))), 0, 0, kelp::kNotSet, WString(), 0, {}};
  RequireNewName(point.name);
  std::size_t next = 1;
  const std::vector<double> plane = ReadLengths(words, next, {KTEXT("E"), KTEXT("N")}, next);
  point.easting = plane[0];
  point.northing = plane[1];
  if (std::max(point.easting, point.northing) > kelp::kNotSetThreshold) {
    throw Failure(
        {KTEXT("{1} is missing"), {point.easting > point.northing ? KTEXT("E") : KTEXT("N")}});
  }
  if (next < words.size()) point.elevation = ReadLengths(words, next, {KTEXT("H")}, next)[0];
  if (next < words.size()) {
    RequireNoPart(KTEXT("CODE"), words[next - 1], words[next]);
    point.description = words[next++];
  }
  if (next < words.size()) FailOnOperands(KTEXT("add"), KTEXT("P E N [H [CODE]]"));
  RequireWithinReach(point);
  m_list.Add(point, m_step);
}

void EditSession::Move(const Words& words) {
  std::size_t next = 0;
  const std::vector<double> shift = ReadLengths(words, 1, kShiftNames, next);
  if (next < words.size()) FailOnOperands(KTEXT("move"), KTEXT("P dE dN dH"));
  MoveRow(m_list.RequirePoint(words[0]), shift);
}

// All or none: what moves out of reach is found before anything moves.
void EditSession::Shift(const Words& words) {
  std::size_t next = 0;
  const std::vector<double> shift = ReadLengths(words, 0, kShiftNames, next);
  if (next < words.size()) FailOnOperands(KTEXT("shift"), KTEXT("dE dN dH"));
  const kelp::CSourceEventScope transaction(&m_list);
  for (const std::size_t row : m_list.RowsOfPoints()) RequireWithinReach(Moved(row, shift));
  for (const std::size_t row : m_list.RowsOfPoints())
    m_list.Replace(row, Moved(row, shift), m_step);
}

Point EditSession::Moved(std::size_t row, const std::vector<double>& shift) const {
  Point point = m_list.PointIn(row);
  point.easting += shift[0];
  point.northing += shift[1];
  if (point.elevation < kelp::kNotSetThreshold) point.elevation += shift[2];
  return point;
}

void EditSession::MoveRow(std::size_t row, const std::vector<double>& shift) {
  const Point& point = m_list.PointIn(row);
  if (point.elevation > kelp::kNotSetThreshold && shift[2] != 0) {
    throw Failure({KTEXT("the point \"{1}\" has no elevation"), {Quoted(point.name)}});
  }
  const Point moved = Moved(row, shift);
  RequireWithinReach(moved);
  m_list.Replace(row, moved, m_step);
}

void EditSession::Set(const Words& words) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  const WString& what = words[1];
  Point point = m_list.PointIn(row);
  const auto length = [&](bool isRequired) {
    std::size_t next = 0;
    const double value = ReadLengths(words, 2, {what.c_str()}, next)[0];
    if (next < words.size()) {
      RequireNoPart(what.c_str(), words[next - 1], words[next]);
      FailOnOperands(KTEXT("set"), kSetOperands);
    }
    if (isRequired && value > kelp::kNotSetThreshold) {
      throw Failure({KTEXT("{1} is missing"), {what}});
    }
    return value;
  };
  const bool isText = what == KTEXT("code") || what == KTEXT("name");
  if (isText && words.size() > 3) FailOnOperands(KTEXT("set"), kSetOperands);
  if (what == KTEXT("east")) {
    point.easting = length(true);
  } else if (what == KTEXT("north")) {
    point.northing = length(true);
  } else if (what == KTEXT("up")) {
    point.elevation = length(false);
  } else if (what == KTEXT("code")) {
    point.description = words[2];
  } else if (what == KTEXT("name")) {
    return Rename({words[0], words[2]});
  } else {
    throw Failure({KTEXT("set: \"{1}\" isn't one of {2}"),
                   {Quoted(what), KTEXT("east, north, up, name, code")}});
  }
  RequireWithinReach(point);
  m_list.Replace(row, point, m_step);
}

void EditSession::Rename(const Words& words) {
  const std::size_t row = m_list.RequirePoint(words[0]);
  Point point = m_list.PointIn(row);
  point.name = ToWString(Trimmed(ViewOf(words[1])));
  RequireNewName(point.name);
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
  std::string bytes = m_list.Bytes();
  KeepBackup();
  WriteAll(m_file, bytes);
  m_bytes = std::move(bytes);
  if (m_list.Layout().separator != ',' && !m_saysCommas) {
    m_console.PrintLine(kelp::Xlate(KTEXT("the fields are separated by commas now")));
    m_saysCommas = true;
  }
}

// The file as it was before this run, once a run.
void EditSession::KeepBackup() {
  if (!m_keepsBackup) return;
  m_keepsBackup = false;
  std::error_code ignored;
  if (!fs::exists(m_file.path, ignored)) return;
  Argument backup = m_file;
  backup.text += KTEXT(".bak");
  backup.path += ".bak";
  WriteAll(backup, m_bytes);
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
