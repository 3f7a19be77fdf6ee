// Undo beside that of Qt, and transactions beside the bare calls to their listeners.
#include <QUndoCommand>
#include <QUndoStack>
#include <array>
#include <cstdint>

#include "bench/BenchTable.h"
#include "bench/ListenersByHand.h"
#include "kelp0lang/ChangeTransaction.h"
#include "kelp0lang/CmdExecuted.h"

namespace bench {
namespace {

constexpr int kGroups = 1'000'000;

// The document of both sides is a number, and a command adds to it.
class AddToNumber : public kelp::ICmdExecuted {
 public:
  explicit AddToNumber(std::int64_t* number) : m_number(number) {}
  void Undo() override { --*m_number; }
  void Redo() override { ++*m_number; }
  unsigned int GetMemSize() override { return sizeof(*this); }

 private:
  std::int64_t* m_number;
};

class QtAddToNumber : public QUndoCommand {
 public:
  explicit QtAddToNumber(std::int64_t* number) : m_number(number) {}
  void undo() override { --*m_number; }
  void redo() override { ++*m_number; }

 private:
  std::int64_t* m_number;
};

// The commands are made, carried out and added, taken back, carried out again, and deleted.
void RunOurUndo(std::int64_t* number) {
  auto* const list = new kelp::CCmdExecutedList(new kelp::CCmdExecutedListStrategyNumber(0));
  for (int i = 0; i < kGroups; ++i) {
    auto* const command = new AddToNumber(number);
    command->Redo();
    list->Add(command);
  }
  while (list->CanUndo()) list->Undo();
  while (list->CanRedo()) list->Redo();
  list->SubReference();
}

// Qt carries a command out when it is added.
void RunQtUndo(std::int64_t* number) {
  QUndoStack stack;
  for (int i = 0; i < kGroups; ++i) stack.push(new QtAddToNumber(number));
  while (stack.canUndo()) stack.undo();
  while (stack.canRedo()) stack.redo();
}

Measure OverGroups(void (*run)(std::int64_t*)) {
  return [run](benchmark::State& state) {
    std::int64_t number = 0;
    for (auto _ : state) run(&number);
    if (number != state.iterations() * kGroups) state.SkipWithError("not all commands ran");
    state.SetItemsProcessed(state.iterations() * kGroups);
  };
}

class CountingListener : public kelp::CSourceEvent::IEvent {
 public:
  void OnBeginEvent(kelp::CSourceEvent*) override { ++m_calls; }
  void OnBeforeEndEvent(kelp::CSourceEvent*) override { ++m_calls; }
  void OnEndEvent(kelp::CSourceEvent*) override { ++m_calls; }
  std::int64_t Calls() const { return m_calls; }

 private:
  std::int64_t m_calls = 0;
};

constexpr int kListeners = 10;
constexpr int kTellings = 3;

// A document of one source.
struct Document {
  Document() {
    for (CountingListener& listener : listeners) {
      source.Register(&listener);
      told.push_back(&listener);
    }
  }

  std::array<CountingListener, kListeners> listeners;
  Listeners told;
  kelp::CChangeTransactionManager manager;
  kelp::CSourceEvent source{&manager};
};

template <class Tell>
Measure OverTransactions(Tell tell) {
  return [tell](benchmark::State& state) {
    Document document;
    for (auto _ : state) tell(document);
    for (const CountingListener& listener : document.listeners) {
      if (listener.Calls() != state.iterations() * kTellings) state.SkipWithError("calls missing");
    }
    state.SetItemsProcessed(state.iterations());
  };
}

}  // namespace

void AddChangeWorks() {
  Compare("record, undo, redo a group", OverGroups(RunOurUndo),
          {{"QUndoStack", 0.5, OverGroups(RunQtUndo)}});
  Compare("transaction, 10 listeners", OverTransactions([](Document& document) {
            const kelp::CSourceEventScope transaction(&document.source);
          }),
          {{"the 30 calls", 10.0, OverTransactions([](Document& document) {
              TellByHand(document.told, &document.source);
            })}});
}

}  // namespace bench
