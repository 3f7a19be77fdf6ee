#include "kelp0lang/CmdExecuted.h"

#include <malloc.h>

#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/TestText.h"

using kelp::CCmdExecuted;
using kelp::CCmdExecutedList;
using kelp::CCmdExecutedListStrategyNumber;
using kelp::ICmdExecuted;
using kelp::WString;

namespace {

using Log = std::vector<std::string>;

std::string Entry(char what, int id) {
  return std::string(1, what) += std::to_string(id);
}

// Writes down what happens to it: "+7" redo, "-7" undo, "~7" deleted.
class Command : public ICmdExecuted {
 public:
  Command(Log* log, int id, unsigned memSize = 1) : m_log(log), m_id(id), m_memSize(memSize) {}
  ~Command() override { Write('~'); }
  void Undo() override { Write('-'); }
  void Redo() override { Write('+'); }
  unsigned int GetMemSize() override { return m_memSize; }

 private:
  void Write(char what) { m_log->push_back(Entry(what, m_id)); }

  Log* m_log;
  int m_id;
  unsigned m_memSize;
};

class CmdExecutedListTest : public testing::Test {
 protected:
  CmdExecutedListTest() { Reset(0); }
  ~CmdExecutedListTest() override { m_list->SubReference(); }

  void Reset(unsigned limit) {
    if (m_list != nullptr) m_list->SubReference();
    m_list = new CCmdExecutedList(new CCmdExecutedListStrategyNumber(limit));
    m_log.clear();
  }
  void Add(int id, unsigned memSize = 2) { m_list->Add(new Command(&m_log, id, memSize)); }
  Log TakeLog() { return std::exchange(m_log, {}); }

  Log m_log;
  CCmdExecutedList* m_list = nullptr;
};

TEST_F(CmdExecutedListTest, AGroupHasANameAndEndsWithItsOutermostRecord) {
  m_list->SetPendingName(WString(KTEXT("Move")));
  m_list->StartRecordCmd();
  for (int id = 1; id <= 6; ++id) Add(id);
  m_list->StartRecordCmd();
  m_list->StopRecordCmd();
  const CCmdExecuted* group = m_list->GetRecCmd();
  ASSERT_NE(group, nullptr) << "an inner stop leaves the group open";
  EXPECT_EQ(group->GetName(), WString(KTEXT("Move")));
  m_list->StopRecordCmd();
  EXPECT_EQ(m_list->GetRecCmd(), nullptr);
  EXPECT_EQ(m_list->GetMemSize(), 12u);
  Add(7);
  m_list->StartRecordCmd();
  Add(8);
  EXPECT_TRUE(m_list->GetRecCmd()->GetName().empty()) << "a name serves one record";
  m_list->StopRecordCmd();
  m_list->FreeUndoList();
  EXPECT_EQ(TakeLog(), (Log{"~1", "~2", "~3", "~4", "~5", "~6", "~7", "~8"}));
  EXPECT_FALSE(m_list->PopFrontCmd());
}

TEST_F(CmdExecutedListTest, StrategySeesTheGroupBeforeItJoins) {
  struct Strategy : CCmdExecutedList::IStrategy {
    explicit Strategy(std::vector<unsigned>* seen) : m_seen(seen) {}
    void OnAdd(CCmdExecutedList* list, CCmdExecuted* group) override {
      m_seen->insert(m_seen->end(), {list->GetUndoListSize(), group->GetMemSize()});
      while (list->GetUndoMemSize() + group->GetMemSize() > 10 && list->PopFrontCmd()) {
      }
    }
    std::vector<unsigned>* m_seen;
  };
  std::vector<unsigned> seen;
  m_list->SubReference();
  m_list = new CCmdExecutedList(new Strategy(&seen));
  Add(1, 4);
  Add(2, 5);
  Add(3, 6);
  EXPECT_EQ(seen, (std::vector<unsigned>{0, 4, 1, 5, 2, 6}));
  EXPECT_EQ(m_log, (Log{"~1", "~2"})) << "a strategy may keep to a number of bytes";
}

TEST_F(CmdExecutedListTest, AThrowingCommandTakesItsGroupAlong) {
  struct Throwing : Command {
    using Command::Command;
    void Undo() override { throw 1; }
  };
  m_list->Add(new Throwing(&m_log, 1));
  EXPECT_THROW(m_list->Undo(), int);
  EXPECT_EQ(m_log, Log{"~1"});
  EXPECT_FALSE(m_list->CanUndo() || m_list->CanRedo());
  EXPECT_EQ(m_list->GetMemSize(), 0u);
}

TEST(CmdExecutedGroup, ACopyDoesNotOwn) {
  Log log;
  Command* const command = new Command(&log, 1, 3);
  CCmdExecuted source(WString(KTEXT("s")));
  source.Add(command);
  {
    CCmdExecuted copy(source);
    copy.Add(new Command(&log, 2, 4));
    EXPECT_TRUE(copy.IsPresent(command));
    EXPECT_EQ(copy.GetMemSize(), 7u);
    copy = *&copy;
    CCmdExecuted other(WString(KTEXT("o")));
    other.Add(new Command(&log, 3));
    other = copy;
    other.Undo();
    other = source;
    EXPECT_EQ(other.GetName(), WString(KTEXT("s")));
    EXPECT_EQ(log, (Log{"~3", "-1", "-2"}));
  }
  EXPECT_EQ(log.back(), "~2") << "what was added to the copy is its own";
  EXPECT_FALSE(source.IsPresent(nullptr));
  source.Redo();
  EXPECT_EQ(log.back(), "+1");
}

// A listener that does something to the list while it is told.
class Listener final : public CCmdExecutedList::IEvents {
 public:
  Listener(Log* log, int id) : m_log(log), m_id(id) {}
  void OnBeforeUndoRedo(bool undo) override { Told(undo ? 'u' : 'r'); }
  void OnAfterUndoRedo(bool undo) override { Told(undo ? 'U' : 'R'); }

  std::function<void(char)> act;

 private:
  void Told(char what) {
    m_log->push_back(Entry(what, m_id));
    if (act) act(what);
  }
  Log* m_log;
  int m_id;
};

TEST_F(CmdExecutedListTest, ListenersLeaveAndNestWhileTheyAreTold) {
  // An array, so that the order of addresses is known.
  Listener listeners[] = {{&m_log, 0}, {&m_log, 1}, {&m_log, 2}, {&m_log, 3}};
  Add(1);
  Add(2);
  m_list->Register(&listeners[2]);
  m_list->Register(&listeners[1]);
  listeners[1].act = [&](char what) {
    if (what != 'u') return;
    m_list->Unregister(&listeners[1]);
    m_list->Register(&listeners[0]);  // below: not told this time
    m_list->Register(&listeners[3]);  // above: told
  };
  m_list->Undo();
  EXPECT_EQ(TakeLog(), (Log{"u1", "u2", "u3", "-2", "U0", "U2", "U3"}));

  // An undo inside an undo sweeps the list of listeners in the middle of the outer walk.
  listeners[1].act = nullptr;
  m_list->Register(&listeners[1]);
  listeners[2].act = [&](char what) {
    if (what != 'r') return;
    m_list->Unregister(&listeners[2]);
    m_list->Undo();
  };
  m_list->Redo();
  EXPECT_EQ(TakeLog(), (Log{"r0", "r1", "r2", "u0", "u1", "u3", "-1", "U0", "U1", "U3", "r3", "+2",
                            "R0", "R1", "R3"}));
  m_list->Unregister(&listeners[2]);
}

// Random work against a plain model: two stacks of groups and a map of listeners.
TEST_F(CmdExecutedListTest, AgreesWithAModel) {
  for (const unsigned limit : {0u, 1u, 3u, 15u}) {
    Reset(limit);
    std::mt19937 random(limit);
    std::vector<std::vector<int>> undo, redo;
    std::vector<int> open;
    int depth = 0, nextId = 0;
    const auto memory = [](const auto& groups) {
      std::size_t size = 0;
      for (const auto& group : groups) size += 2 * group.size();
      return size;
    };
    for (int step = 0; step < 3000; ++step) {
      Log expected;
      const auto remove = [&expected](const std::vector<int>& group) {
        for (const int id : group) expected.push_back(Entry('~', id));
      };
      const auto close = [&] {
        if (open.empty()) return;
        if (limit != 0) {
          for (; undo.size() >= limit; undo.erase(undo.begin())) remove(undo.front());
        }
        undo.push_back(std::exchange(open, {}));
      };
      const auto move = [&expected](auto& from, auto& to, char what) {
        if (from.empty()) return;
        for (const int id : from.back()) expected.push_back(Entry(what, id));
        to.push_back(from.back());
        from.pop_back();
      };
      switch (random() % 6) {
        case 0:
          m_list->StartRecordCmd();
          ++depth;
          break;
        case 1:
          if (depth == 0) break;
          m_list->StopRecordCmd();
          if (--depth == 0) close();
          break;
        case 2:
          m_list->Redo();
          move(redo, undo, '+');
          break;
        case 3:
          m_list->Undo();
          move(undo, redo, '-');
          break;
        default:
          for (const auto& group : redo) remove(group);
          redo.clear();
          open.push_back(nextId);
          Add(nextId++);
          if (depth == 0) close();
      }
      ASSERT_EQ(TakeLog(), expected) << "limit " << limit << ", step " << step;
      ASSERT_EQ(m_list->GetUndoListSize(), undo.size());
      ASSERT_EQ(m_list->GetUndoMemSize(), memory(undo));
      ASSERT_EQ(m_list->GetRedoMemSize(), memory(redo));
      ASSERT_EQ(m_list->CanUndo(), !undo.empty());
      ASSERT_EQ(m_list->CanRedo(), !redo.empty());
    }
    for (; depth > 0; --depth) m_list->StopRecordCmd();
  }
}

// Bytes of the heap in use.
std::size_t HeapInUse() {
#ifdef _WIN32
  std::size_t bytes = 0;
  _HEAPINFO block = {};
  while (_heapwalk(&block) == _HEAPOK) {
    if (block._useflag == _USEDENTRY) bytes += block._size;
  }
  return bytes;
#else
  return mallinfo2().uordblks;
#endif
}

class SmallCommand : public ICmdExecuted {
 public:
  void Undo() override {}
  void Redo() override {}
  unsigned int GetMemSize() override { return sizeof(*this); }
};

// A program that keeps every step has a group for each.
TEST(CmdExecutedMemory, AGroupOfOneCommandTakesLittle) {
  constexpr std::size_t kGroups = 10'000;
  constexpr std::size_t kMost = 128;
  std::vector<ICmdExecuted*> commands(kGroups);
  const std::size_t before = HeapInUse();
  for (ICmdExecuted*& command : commands) command = new SmallCommand;
  const std::size_t made = HeapInUse();

  auto* const list = new CCmdExecutedList(new CCmdExecutedListStrategyNumber(0));
  for (ICmdExecuted* command : commands) list->Add(command);
  const std::size_t recorded = HeapInUse();
  EXPECT_EQ(list->GetUndoListSize(), kGroups);
  list->SubReference();
  if (made < before + kGroups * sizeof(SmallCommand)) {
    GTEST_SKIP() << "this heap doesn't tell what is in use";
  }
  EXPECT_LE(recorded - made, kGroups * kMost);
  EXPECT_GE(recorded - made, kGroups * sizeof(void*)) << "it can't take nothing";
}

}  // namespace
