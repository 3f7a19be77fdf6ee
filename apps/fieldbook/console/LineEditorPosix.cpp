#include <histedit.h>
#include <locale.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <utility>

#include "fieldbook/console/LineEditor.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {
namespace {

constexpr int kHistory = 1000;            // lines
constexpr std::size_t kMostChoices = 60;  // that are listed at once

// The terminal of the user is UTF-8, as all that the program prints; libedit goes by the locale.
class Utf8Scope {
 public:
  Utf8Scope() : m_own(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (m_own != nullptr) m_former = uselocale(m_own);
  }
  ~Utf8Scope() {
    if (m_own == nullptr) return;
    uselocale(m_former);
    freelocale(m_own);
  }
  Utf8Scope(const Utf8Scope&) = delete;
  Utf8Scope& operator=(const Utf8Scope&) = delete;

 private:
  locale_t m_own;
  locale_t m_former = nullptr;
};

volatile sig_atomic_t g_signal = 0;  // the latest that was caught

void NoteSignal(int signal) {
  g_signal = signal;
}

// While the object lives the terminal is libedit's, and a signal that ends or stops the program
// must not find it so. Signals are heard while a key is waited for and at no other time; Ctrl-C is
// the business of InterruptScope.
class SignalsAtKeys {
 public:
  SignalsAtKeys() {
    g_signal = 0;
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGINT);
    struct sigaction note = {};
    note.sa_handler = NoteSignal;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      sigaddset(&held, kSignals[i]);
      sigaction(kSignals[i], nullptr, &m_former[i]);
      if (m_former[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &note, nullptr);
    }
    pthread_sigmask(SIG_BLOCK, &held, &m_open);
  }
  ~SignalsAtKeys() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
      sigaction(kSignals[i], &m_former[i], nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &m_open, nullptr);
  }
  SignalsAtKeys(const SignalsAtKeys&) = delete;
  SignalsAtKeys& operator=(const SignalsAtKeys&) = delete;

  // False where a signal came first, be it before the signals were held.
  bool WaitForKey() const {
    if (InterruptScope::IsInterrupted()) return false;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return ppoll(&input, 1, nullptr, &m_open) > 0;
  }

 private:
  static constexpr int kSignals[] = {SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGWINCH};

  sigset_t m_open;  // the signals as they are outside
  struct sigaction m_former[std::size(kSignals)];
};

bool CanMoveCursor() {
  const char* terminal = std::getenv("TERM");
  return terminal != nullptr && *terminal != 0 && std::string_view(terminal) != "dumb";
}

std::string Utf8Of(const WString& text) {
  std::string bytes;
  AppendUtf8(bytes, text);
  return bytes;
}

// How many characters the last units of a text are.
int CharactersOf(const WString& text, std::size_t units) {
  const WideView view = ViewOf(text).substr(text.length() - units);
  return static_cast<int>(std::count_if(view.begin(), view.end(),
                                        [](WChar unit) { return (unit & 0xFC00) != 0xDC00; }));
}

}  // namespace

class LineEditor::Terminal {
 public:
  explicit Terminal(Completer completer)
      : m_completer(std::move(completer)),
        m_history(history_init()),
        m_editor(el_init("fieldbook", stdin, stdout, stderr)) {
    if (!IsSetUp()) return;
    HistEvent event;
    history(m_history, &event, H_SETSIZE, kHistory);
    history(m_history, &event, H_SETUNIQUE, 1);
    el_set(m_editor, EL_CLIENTDATA, this);
    el_set(
        m_editor, EL_PROMPT, +[](EditLine*) { return const_cast<char*>("> "); });
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history);
    el_set(m_editor, EL_SIGNAL, 0);
    el_set(
        m_editor, EL_GETCFN,
        +[](EditLine* editor, wchar_t* character) { return Of(editor).GetCharacter(*character); });
    // Wide, since libedit keeps these texts as they are, and of narrow ones copies that it loses.
    el_wset(
        m_editor, EL_ADDFN, L"complete-word", L"Completes the word before the cursor",
        +[](EditLine* editor, wint_t) { return Of(editor).CompleteWord(); });
    el_set(m_editor, EL_BIND, "^I", "complete-word", nullptr);
    el_source(m_editor, nullptr);
  }
  ~Terminal() {
    if (m_editor != nullptr) el_end(m_editor);
    if (m_history != nullptr) history_end(m_history);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  bool IsSetUp() const { return m_editor != nullptr && m_history != nullptr; }

  bool Read(std::string& line) {
    int signal = 0;
    bool isRead = false;
    {
      const SignalsAtKeys signals;
      m_signals = &signals;
      int size = 0;
      const char* text = el_gets(m_editor, &size);
      isRead = text != nullptr && size > 0;
      if (isRead) line.assign(text, static_cast<std::size_t>(size));
      m_signals = nullptr;
      signal = g_signal;
    }
    // The terminal is the user's again; now the signal does what it was to do.
    if (IsEnding(signal)) raise(signal);
    if (!isRead) return false;
    if (line.back() == '\n') line.pop_back();
    Remember(line);
    return true;
  }

 private:
  static Terminal& Of(EditLine* editor) {
    void* terminal = nullptr;
    el_get(editor, EL_CLIENTDATA, &terminal);
    return *static_cast<Terminal*>(terminal);
  }
  static bool IsEnding(int signal) {
    return signal == SIGTERM || signal == SIGHUP || signal == SIGQUIT;
  }

  // One character of UTF-8; stray bytes are left out. 0 at the end, -1 where a signal ends the
  // wait.
  int GetCharacter(wchar_t& character) {
    std::mbstate_t state = {};
    for (;;) {
      if (!m_signals->WaitForKey()) {
        if (!GoOnAfterSignal()) return -1;
        continue;
      }
      char byte = 0;
      const ssize_t size = read(STDIN_FILENO, &byte, 1);
      if (size <= 0) return static_cast<int>(size);
      const std::size_t used = std::mbrtowc(&character, &byte, 1, &state);
      if (used <= 1) return 1;
      if (used == static_cast<std::size_t>(-1)) state = {};
    }
  }

  bool GoOnAfterSignal() {
    const int signal = std::exchange(g_signal, IsEnding(g_signal) ? g_signal : 0);
    if (signal == SIGWINCH) {
      el_resize(m_editor);
    } else if (signal == SIGTSTP) {
      el_set(m_editor, EL_PREP_TERM, 0);
      raise(SIGSTOP);
      el_set(m_editor, EL_PREP_TERM, 1);
    } else {
      return false;
    }
    el_set(m_editor, EL_REFRESH);
    return true;
  }

  unsigned char CompleteWord() {
    const LineInfo* info = el_line(m_editor);
    const WString before = Decode(
        std::string_view(info->buffer, static_cast<std::size_t>(info->cursor - info->buffer)));
    const Completion completion = m_completer(before);
    if (completion.choices.empty()) return CC_REFRESH_BEEP;
    const WString word = before.Substring(static_cast<int>(before.length() - completion.typed));
    if (completion.text != word) {
      el_deletestr(m_editor, CharactersOf(before, completion.typed));
      el_insertstr(m_editor, Utf8Of(completion.text).c_str());
      return CC_REFRESH;
    }
    ListChoices(completion.choices);
    return CC_REDISPLAY;
  }

  static void ListChoices(const std::vector<WString>& choices) {
    const std::size_t listed = std::min(choices.size(), kMostChoices);
    std::string text = "\n";
    for (std::size_t i = 0; i < listed; ++i) text += Utf8Of(Shown(choices[i])) + "  ";
    if (listed < choices.size()) {
      text += Utf8Of(Message{KTEXT("and {1} more"),
                             {WString::ValueOf(static_cast<int>(choices.size() - listed))}}
                         .Text());
    }
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }

  void Remember(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos) return;
    HistEvent event;
    history(m_history, &event, H_ENTER, line.c_str());
  }

  const Completer m_completer;
  History* const m_history;
  EditLine* const m_editor;
  const SignalsAtKeys* m_signals = nullptr;
};

LineEditor::LineEditor(Console& console, Completer completer) : m_console(console) {
  if (!CanMoveCursor()) return;
  const Utf8Scope utf8;
  m_terminal = std::make_unique<Terminal>(std::move(completer));
  if (!m_terminal->IsSetUp()) m_terminal.reset();
}

LineEditor::~LineEditor() = default;

bool LineEditor::Read(std::string& line) {
  if (m_terminal == nullptr) {
    m_console.Prompt();
    return ReadInputLine(line);
  }
  std::fflush(stdout);
  const Utf8Scope utf8;
  return m_terminal->Read(line);
}

}  // namespace fieldbook
