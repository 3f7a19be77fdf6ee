#include "kelp0lang/ChangeTransaction.h"

#include <algorithm>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/TestText.h"

using kelp::CChangeTransactionManager;
using kelp::CSourceEvent;
using kelp::CSourceEventScope;

namespace {

using Log = std::vector<std::string>;

class Command : public kelp::ICmdExecuted {
 public:
  explicit Command(std::function<void()> undo = [] {}) : m_undo(std::move(undo)) {}
  void Undo() override { m_undo(); }
  void Redo() override { m_undo(); }
  unsigned int GetMemSize() override { return 1; }

 private:
  std::function<void()> m_undo;
};

// Writes its hooks down: "<A" before it begins, "[A" before its end, "]A" after it.
class Source : public CSourceEvent {
 public:
  Source(Log* log, std::string name, CChangeTransactionManager* manager = nullptr)
      : CSourceEvent(manager), m_log(log), m_name(std::move(name)) {}
  const std::string& Name() const { return m_name; }

 protected:
  void OnBeforeBeginEvent() override { m_log->push_back("<" + m_name); }
  void OnBeforeEndEvent() override { m_log->push_back("[" + m_name); }
  void OnAfterEndEvent() override { m_log->push_back("]" + m_name); }

 private:
  Log* m_log;
  std::string m_name;
};

// Writes down what it is told: "b:A", "e:A", "E:A", and then may act.
class Listener final : public CSourceEvent::IEvent {
 public:
  explicit Listener(Log* log, std::string prefix = "") : m_log(log), m_prefix(std::move(prefix)) {}
  void OnBeginEvent(CSourceEvent* source) override { Told("b:", source); }
  void OnBeforeEndEvent(CSourceEvent* source) override { Told("e:", source); }
  void OnEndEvent(CSourceEvent* source) override { Told("E:", source); }

  std::function<void(const std::string& what)> act;

 private:
  void Told(const char* what, CSourceEvent* source) {
    const std::string text = m_prefix + what + static_cast<Source*>(source)->Name();
    m_log->push_back(text);
    if (act) act(text);
  }

  Log* m_log;
  std::string m_prefix;
};

class ChangeTransactionTest : public testing::Test {
 protected:
  Log TakeLog() { return std::exchange(m_log, {}); }
  unsigned CountUndo() {
    unsigned count = 0;
    for (; m_manager.CanUndo(); ++count) m_manager.Undo();
    return count;
  }

  Log m_log;
  CChangeTransactionManager m_manager;
};

TEST_F(ChangeTransactionTest, OnlyTheOutermostLevelCloses) {
  Source a(&m_log, "A", &m_manager);
  Listener listener(&m_log);
  a.Register(&listener);
  {
    const CSourceEventScope outer(&a), none(nullptr);
    {
      const CSourceEventScope inner(&a);
      m_manager.Add(new Command);
    }
    m_manager.Add(new Command);
    EXPECT_TRUE(a.HasActed());
    EXPECT_EQ(TakeLog(), (Log{"<A", "b:A"}));
    EXPECT_FALSE(m_manager.CanUndo());
  }
  EXPECT_EQ(TakeLog(), (Log{"e:A", "[A", "E:A", "]A"}));
  EXPECT_FALSE(a.HasActed());
  m_manager.Add(new Command);
  EXPECT_EQ(TakeLog(), Log{}) << "a command alone begins no source";
  EXPECT_EQ(CountUndo(), 2u);
}

TEST_F(ChangeTransactionTest, KeepsTwentySteps) {
  for (int i = 0; i < 25; ++i) m_manager.Add(new Command);
  EXPECT_EQ(CountUndo(), 20u);
}

TEST_F(ChangeTransactionTest, DependantsEndBeforeWhatTheyDependOn) {
  // The chain A -> B -> C, the tie A -> C and the bystander D, for each order of addresses.
  std::vector<int> places = {0, 1, 2, 3};
  do {
    std::vector<Source> s(4, Source(&m_log, ""));
    for (int i = 0; i < 4; ++i) s[places[i]] = Source(&m_log, std::string(1, "ABCD"[i]));
    Source *a = &s[places[0]], *b = &s[places[1]], *c = &s[places[2]], *d = &s[places[3]];
    Listener listener(&m_log);
    for (Source& source : s) {
      source.Attach(&m_manager);
      source.Register(&listener);
    }
    a->AddDependsOn(b);
    b->AddDependsOn(c);
    a->AddDependsOn(c);
    d->AddDependsOn(c);
    {
      const CSourceEventScope scope(a);
      Log begun = TakeLog();
      EXPECT_EQ(begun, (Log{"<C", "b:C", "<B", "b:B", "<A", "b:A"}));
    }
    Log log = TakeLog();
    ASSERT_EQ(log.size(), 12u);
    std::sort(log.begin(), log.begin() + 3);
    EXPECT_EQ(log,
              (Log{"e:A", "e:B", "e:C", "[A", "E:A", "]A", "[B", "E:B", "]B", "[C", "E:C", "]C"}));

    a->RemoveDependsOn(b);
    a->RemoveDependsOn(c);
    { const CSourceEventScope scope(a); }
    EXPECT_EQ(TakeLog(), (Log{"<A", "b:A", "e:A", "[A", "E:A", "]A"}));
    b->RemoveDependsOn(c);
    d->RemoveDependsOn(c);
  } while (std::next_permutation(places.begin(), places.end()));
}

TEST_F(ChangeTransactionTest, DependantsMayComeAndGoWhileTheyAreClosed) {
  // C closes its dependants D and E first. While D ends, E goes for good and F joins.
  Source c(&m_log, "C", &m_manager), d(&m_log, "D", &m_manager), f(&m_log, "F", &m_manager);
  auto e = std::make_unique<Source>(&m_log, "E", &m_manager);
  Listener listener(&m_log);
  listener.act = [&](const std::string& what) {
    if (what != "E:D") return;
    e->RemoveDependsOn(&c);
    e.reset();
    f.AddDependsOn(&c);
  };
  d.AddDependsOn(&c);
  e->AddDependsOn(&c);
  d.Register(&listener);
  {
    const CSourceEventScope first(&d), second(&f), third(e.get());
    TakeLog();
    // Out of the walk over all sources, so that only C can close them.
    for (Source* source : {&d, &f, e.get()}) m_manager.Unregister(source);
  }
  EXPECT_EQ(TakeLog(), (Log{"[D", "E:D", "]D", "[F", "]F", "[C", "]C"}));
}

TEST_F(ChangeTransactionTest, WhatEndsWhileItWaitsForOthersIsNotTouched) {
  // What a listener of D hears when it ends the source that waits for D's end or beginning.
  for (const char* when : {"b:D", "E:D"}) {
    auto waiting = std::make_unique<Source>(&m_log, "W", &m_manager);
    Source d(&m_log, "D", &m_manager);
    Listener listener(&m_log);
    d.Register(&listener);
    const bool atBegin = *when == 'b';
    Source& dependant = atBegin ? *waiting : d;
    Source& dependency = atBegin ? d : *waiting;
    dependant.AddDependsOn(&dependency);
    listener.act = [&](const std::string& what) {
      if (what != when) return;
      dependant.RemoveDependsOn(&dependency);
      waiting.reset();
    };
    TakeLog();
    // At the beginning it is the source that has opened the transaction.
    { const CSourceEventScope scope(atBegin ? waiting.get() : &d); }
    EXPECT_EQ(waiting, nullptr);
    const Log log = TakeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "]W"), 0) << when;
    EXPECT_EQ(std::count(log.begin(), log.end(), "]D"), 1) << when;
  }
}

TEST_F(ChangeTransactionTest, ASourceLeavesTheManagerThatItNoLongerHas) {
  CChangeTransactionManager other;
  {
    Source a(&m_log, "A", &m_manager), b(&m_log, "B", &other);
    a.Attach(&other);
    static_cast<CSourceEvent&>(b) = a;
    Source c(&m_log, "C", &m_manager);
    static_cast<CSourceEvent&>(c) = b;
  }
  // An entry that was left behind would be told now.
  Source d(&m_log, "D", &m_manager);
  { const CSourceEventScope scope(&d); }
  EXPECT_EQ(TakeLog(), (Log{"<D", "[D", "]D"}));
}

TEST_F(ChangeTransactionTest, WithoutAManagerNothingHappens) {
  Source a(&m_log, "A");
  { const CSourceEventScope scope(&a); }
  a.Detach();
  a.Attach(&m_manager);
  EXPECT_EQ(a.GetChangeTransactionManager(), &m_manager);
  const Source copy(a);
  EXPECT_EQ(copy.GetChangeTransactionManager(), &m_manager);
  a.Detach();
  a.Detach();
  EXPECT_EQ(a.GetChangeTransactionManager(), nullptr);
  { const CSourceEventScope scope(&a); }
  EXPECT_EQ(m_log, Log{});
}

TEST_F(ChangeTransactionTest, ASourceMayGoWhileOthersAreTold) {
  auto doomed = std::make_unique<Source>(&m_log, "X", &m_manager);
  auto other = std::make_unique<Source>(&m_log, "Y", &m_manager);
  // The one with the lower address is told first.
  if (std::less<>()(doomed.get(), other.get())) std::swap(doomed, other);
  const std::string killer = other->Name();
  Listener listener(&m_log);
  other->Register(&listener);
  listener.act = [&](const std::string& what) {
    if (what.starts_with("e:")) doomed.reset();
  };
  {
    const CSourceEventScope first(other.get()), second(doomed.get());
    TakeLog();
  }
  EXPECT_EQ(TakeLog(), (Log{"e:" + killer, "[" + killer, "E:" + killer, "]" + killer}));
  EXPECT_EQ(doomed, nullptr);
}

TEST_F(ChangeTransactionTest, DisabledSourcesBeginButDoNotEnd) {
  Source a(&m_log, "A", &m_manager);
  Listener listener(&m_log);
  a.Register(&listener);
  m_manager.DisableEvent();
  EXPECT_FALSE(m_manager.IsEnable());
  {
    const CSourceEventScope scope(&a);
    for (int i = 0; i < 2; ++i) m_manager.Add(new Command);
  }
  EXPECT_EQ(TakeLog(), (Log{"<A", "b:A"}));
  EXPECT_TRUE(a.HasActed());
  m_manager.EnableEvent();
  m_manager.Add(new Command);
  EXPECT_EQ(TakeLog(), (Log{"e:A", "[A", "E:A", "]A"})) << "the next closing ends it";
  EXPECT_EQ(CountUndo(), 3u) << "while disabled each command is a step of its own";
}

TEST_F(ChangeTransactionTest, UndoNotifiesAndRecordsNothing) {
  Source a(&m_log, "A", &m_manager);
  Listener listener(&m_log);
  listener.act = [&](const std::string& what) {
    if (m_manager.IsUndoInProgress()) m_log.push_back("during " + what.substr(0, 1));
  };
  a.Register(&listener);
  struct Events : kelp::CCmdExecutedList::IEvents {
    explicit Events(Log* log) : m_log(log) {}
    void OnBeforeUndoRedo(bool undo) override {
      m_log->push_back(undo ? "before undo" : "before redo");
    }
    void OnAfterUndoRedo(bool) override { m_log->push_back("after"); }
    Log* m_log;
  } events(&m_log);
  m_manager.RegisterForUndoRedoEvents(&events);

  m_manager.Add(new Command([&] { const CSourceEventScope scope(&a); }));
  const auto told = [](const char* before) {
    return Log{before, "<A",  "b:A",      "during b", "e:A",  "during e",
               "[A",   "E:A", "during E", "]A",       "after"};
  };
  m_manager.Undo();
  EXPECT_EQ(TakeLog(), told("before undo"));
  EXPECT_FALSE(m_manager.IsUndoInProgress());
  m_manager.Redo();
  EXPECT_EQ(TakeLog(), told("before redo"));
  m_manager.UnregisterForUndoRedoEvents(&events);
  m_manager.Undo();
  EXPECT_EQ(TakeLog().front(), "<A");
  EXPECT_TRUE(m_manager.CanRedo());
  m_manager.FreeUndoList();
  EXPECT_FALSE(m_manager.CanRedo());
}

TEST_F(ChangeTransactionTest, ExceptionsLeaveTheManagerUsable) {
  Source a(&m_log, "A", &m_manager);
  m_manager.Add(new Command([] { throw 1; }));
  EXPECT_THROW(m_manager.Undo(), int);
  EXPECT_FALSE(m_manager.IsUndoInProgress());

  Listener listener(&m_log);
  a.Register(&listener);
  m_manager.DisableEvent();
  { const CSourceEventScope scope(&a); }
  m_manager.EnableEvent();
  listener.act = [](const std::string& what) {
    if (what == "e:A") throw 2;
  };
  EXPECT_THROW(m_manager.Add(new Command), int) << "out of the closing that Add makes";
  listener.act = nullptr;
  TakeLog();
  m_manager.Add(new Command);
  EXPECT_EQ(TakeLog(), (Log{"e:A", "[A", "E:A", "]A"})) << "the level was counted down";
  EXPECT_EQ(CountUndo(), 2u) << "and the record ended";
}

// --- the closing on the window's thread ---

LRESULT CALLBACK MainWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != kelp::kEndEventMessage) return DefWindowProcW(window, message, wParam, lParam);
  EXPECT_EQ(lParam, 0);
  reinterpret_cast<CChangeTransactionManager*>(wParam)->DoEndEvent();
  return 0;
}

class MainWindow {
 public:
  MainWindow() {
    WNDCLASSW c{};
    c.lpfnWndProc = MainWndProc;
    c.lpszClassName = kClass;
    RegisterClassW(&c);
    m_window =
        CreateWindowExW(0, kClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  }
  ~MainWindow() {
    DestroyWindow(m_window);
    UnregisterClassW(kClass, nullptr);
  }
  // Runs a worker while this thread serves its window.
  void ServeWhile(const std::function<void()>& work) const {
    const DWORD owner = GetCurrentThreadId();
    std::thread worker([&] {
      work();
      PostThreadMessageW(owner, WM_QUIT, 0, 0);
    });
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    worker.join();
  }
  HWND Handle() const { return m_window; }

 private:
  static constexpr const WChar* kClass = KTEXT("ChangeTransactionTest");
  HWND m_window;
};

TEST_F(ChangeTransactionTest, AWorkersTransactionIsClosedOnTheOwnersThread) {
  const MainWindow window;
  Source a(&m_log, "A", &m_manager);
  Listener listener(&m_log);
  a.Register(&listener);
  std::map<std::string, DWORD> toldOn;
  listener.act = [&](const std::string& what) { toldOn[what] = GetCurrentThreadId(); };
  const DWORD owner = GetCurrentThreadId();

  for (const bool withWindow : {true, false}) {
    m_manager.SetMainWnd(withWindow ? window.Handle() : nullptr);
    TakeLog();
    DWORD workerId = 0;
    window.ServeWhile([&] {
      workerId = GetCurrentThreadId();
      for (int i = 0; i < 50; ++i) {
        const CSourceEventScope outer(&a), inner(&a);
        m_manager.Add(new Command);
      }
      EXPECT_FALSE(a.HasActed()) << "the worker waited for the end";
    });
    EXPECT_EQ(m_log.size(), 50u * 6);
    EXPECT_EQ(toldOn["b:A"], workerId);
    EXPECT_EQ(toldOn["e:A"], withWindow ? owner : workerId);
    EXPECT_EQ(toldOn["E:A"], withWindow ? owner : workerId);
  }
  EXPECT_EQ(CountUndo(), 20u);
  { const CSourceEventScope scope(&a); }
  EXPECT_EQ(toldOn["E:A"], owner) << "the owner closes its own without the window";
}

// --- random work against a model ---

constexpr int kSources = 6;
constexpr int kListeners = 5;

// The rules, with numbers for addresses: a plain second writing to compare with.
class Model {
 public:
  using Flags = std::map<int, bool>;

  Model(Log* log, std::function<void()> act) : m_log(log), m_act(std::move(act)) {
    for (int s = 0; s < kSources; ++s) m_registered[s] = true;
  }
  void SetListener(int s, int l, bool listens) { m_state[s].listeners[l] = listens; }
  void SetSource(int s, bool registered) { m_registered[s] = registered; }
  void AddDependsOn(int s, int other) {
    m_state[s].dependencies.insert(other);
    m_state[other].dependants.push_back(s);
  }
  void RemoveDependsOn(int s, int other) {
    m_state[s].dependencies.erase(other);
    auto& dependants = m_state[other].dependants;
    const auto found = std::find(dependants.begin(), dependants.end(), s);
    if (found != dependants.end()) dependants.erase(found);
  }
  void Begin(int s) {
    ++m_depth;
    DoBegin(s);
  }
  void End() {
    if (m_depth == 1) Close();
    --m_depth;
  }

 private:
  struct State {
    bool acted = false;
    Flags listeners;
    std::vector<int> dependants;
    std::set<int> dependencies;
  };

  template <class F>
  static void Walk(const Flags& flags, F tell) {
    for (int key = -1;;) {
      const auto next = flags.upper_bound(key);
      if (next == flags.end()) return;
      key = next->first;
      if (next->second) tell(key);
    }
  }
  void Tell(int s, const char* what) {
    Walk(m_state[s].listeners, [&](int l) {
      m_log->push_back(std::to_string(l) + what + std::to_string(s));
      m_act();
    });
  }
  void DoBegin(int s) {
    if (std::exchange(m_state[s].acted, true)) return;
    for (int key = -1;;) {
      const auto next = m_state[s].dependencies.upper_bound(key);
      if (next == m_state[s].dependencies.end()) break;
      key = *next;
      DoBegin(key);
    }
    m_log->push_back("<" + std::to_string(s));
    Tell(s, "b:");
  }
  void OnEnd(int s) {
    const auto in = [](const std::vector<int>& list, int x) {
      return std::count(list.begin(), list.end(), x) != 0;
    };
    const std::vector<int> first = m_state[s].dependants;
    for (const int x : first) {
      if (in(m_state[s].dependants, x) && m_state[x].acted) OnEnd(x);
    }
    const std::vector<int> second = m_state[s].dependants;
    for (const int x : second) {
      if (!first.empty() && !in(first, x) && m_state[x].acted) OnEnd(x);
    }
    m_log->push_back("[" + std::to_string(s));
    m_state[s].acted = false;
    Tell(s, "E:");
    m_log->push_back("]" + std::to_string(s));
  }
  void Close() {
    Walk(m_registered, [&](int s) {
      if (m_state[s].acted) Tell(s, "e:");
    });
    Walk(m_registered, [&](int s) {
      if (m_state[s].acted) OnEnd(s);
    });
  }

  Log* m_log;
  std::function<void()> m_act;
  State m_state[kSources];
  Flags m_registered;
  int m_depth = 0;
};

// The same face over the real classes. Arrays, so that the order of addresses is that of the
// numbers.
class Real {
 public:
  Real(Log* log, const std::function<void()>& act) {
    m_sources.reserve(kSources);
    for (int s = 0; s < kSources; ++s) {
      m_sources.emplace_back(log, std::to_string(s)).Attach(&m_manager);
    }
    m_listeners.reserve(kListeners);
    for (int l = 0; l < kListeners; ++l) {
      m_listeners.emplace_back(log, std::to_string(l)).act = [act](const std::string&) { act(); };
    }
  }
  void SetListener(int s, int l, bool listens) {
    CSourceEvent& source = m_sources[s];
    listens ? source.Register(&m_listeners[l]) : source.Unregister(&m_listeners[l]);
  }
  void SetSource(int s, bool registered) {
    registered ? m_manager.Register(&m_sources[s]) : m_manager.Unregister(&m_sources[s]);
  }
  void AddDependsOn(int s, int other) { m_sources[s].AddDependsOn(&m_sources[other]); }
  void RemoveDependsOn(int s, int other) { m_sources[s].RemoveDependsOn(&m_sources[other]); }
  void Begin(int s) { m_open.push_back(std::make_unique<CSourceEventScope>(&m_sources[s])); }
  void End() {
    // Off the stack first: the closing may open and close further scopes.
    const auto scope = std::move(m_open.back());
    m_open.pop_back();
  }

 private:
  CChangeTransactionManager m_manager;
  std::vector<Source> m_sources;
  std::vector<Listener> m_listeners;
  std::vector<std::unique_ptr<CSourceEventScope>> m_open;
};

// A run of transactions in which listeners change everything while they are told.
template <class World>
Log RandomRun(unsigned seed) {
  Log log;
  std::mt19937 random(seed);
  int budget = 0;  // operations left to the listeners of one transaction
  World* world = nullptr;
  const auto change = [&] {
    const int s = random() % kSources, l = random() % kListeners, other = random() % kSources;
    switch (random() % 5) {
      case 0:
        return world->SetListener(s, l, random() % 3 != 0);
      case 1:
        return world->SetSource(s, random() % 3 != 0);
      case 2:  // towards one direction only, so that there is no cycle
        if (s * 5 % 7 < other * 5 % 7) world->AddDependsOn(s, other);
        return;
      case 3:
        return world->RemoveDependsOn(s, other);
      default:
        world->Begin(s);
        return world->End();
    }
  };
  World made(&log, [&] {
    if (budget > 0 && random() % 2 == 0) {
      --budget;
      change();
    }
  });
  world = &made;
  for (int transaction = 0; transaction < 60; ++transaction) {
    log.push_back("transaction " + std::to_string(transaction));
    budget = 0;
    for (int i = 0; i < 4; ++i) change();
    budget = 25;
    world->Begin(random() % kSources);
    world->Begin(random() % kSources);
    world->End();
    world->End();
  }
  return log;
}

TEST(ChangeTransactionModel, ListenersMayChangeEverythingWhileTheyAreTold) {
  std::size_t lines = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    const Log real = RandomRun<Real>(seed), model = RandomRun<Model>(seed);
    const auto differ = std::mismatch(real.begin(), real.end(), model.begin(), model.end());
    ASSERT_TRUE(real == model) << "seed " << seed << " at line " << differ.first - real.begin();
    lines += real.size();
  }
  EXPECT_GT(lines, 60u * 60 * 10) << "the runs told too little to compare";
}

}  // namespace
