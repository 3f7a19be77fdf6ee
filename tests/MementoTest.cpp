#include "kelp0lang/Memento.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "kelp0lang/CmdExecuted.h"
#include "kelp0lang/IdRemapper.h"
#include "kelp0lang/Ptr64Mapper.h"

namespace {

// A point that keeps its height, and the command that swaps two heights.
class Point : public kelp::IMementableObject {
 public:
  class Memento : public kelp::IMemento {
   public:
    explicit Memento(const Point* point) : IMemento(point), height(point->height) {}
    unsigned int GetMemSize() const override { return sizeof(*this); }
    double height;
  };
  kelp::IMemento* CreateMemento() const override { return new Memento(this); }
  bool IsEqualToMemento(const kelp::IMemento* memento) const override {
    return static_cast<const Memento*>(memento)->height == height;
  }

  double height = 0;

 protected:
  void DoSetMemento(kelp::IMemento* memento) override {
    height = static_cast<Memento*>(memento)->height;
  }
};

class SetHeight : public kelp::ICmdExecuted {
 public:
  SetHeight(Point* point, double height) : m_point(point), m_kept(point->CreateMemento()) {
    m_point->AddReference();
    m_point->height = height;
  }
  ~SetHeight() override {
    m_kept->SubReference();
    m_point->SubReference();
  }
  void Undo() override {
    kelp::IMemento* const present = m_point->CreateMemento();
    m_point->SetMemento(m_kept);
    m_kept->SubReference();
    m_kept = present;
  }
  void Redo() override { Undo(); }
  unsigned int GetMemSize() override { return m_kept->GetMemSize(); }

 private:
  Point* m_point;
  kelp::IMemento* m_kept;
};

TEST(Memento, CommandsRestoreWhatWasKept) {
  Point* const point = new Point;
  auto* const list = new kelp::CCmdExecutedList(new kelp::CCmdExecutedListStrategyNumber(5));
  list->Add(new SetHeight(point, 10));
  list->Add(new SetHeight(point, 20));
  point->SubReference();  // the commands hold it
  list->Undo();
  EXPECT_EQ(point->height, 10);
  list->Undo();
  EXPECT_EQ(point->height, 0);
  list->Redo();
  list->Redo();
  EXPECT_EQ(point->height, 20);
  Point* const copy = new Point(*point);
  kelp::IMemento* const memento = copy->CreateMemento();
  EXPECT_TRUE(point->IsEqualToMemento(memento));
  memento->SubReference();
  copy->SubReference();
  list->SubReference();
}

TEST(IdRemapper, FindsTheLatest) {
  kelp::CIdRemapper ids;
  EXPECT_EQ(ids.FindId(5), 0);
  ids.InsertId(5, 9);
  const kelp::CIdRemapper copy(ids);
  ids.InsertId(5, 7);
  ids.InsertId(std::numeric_limits<std::int64_t>::min(), -1);
  EXPECT_EQ(ids.FindId(5), 7);
  EXPECT_EQ(ids.FindId(std::numeric_limits<std::int64_t>::min()), -1);
  EXPECT_EQ(copy.FindId(5), 9);

  Point a, b;
  kelp::CRefObjIdRemapper objects;
  objects.InsertId(&a, &b);
  kelp::CRefObjIdRemapper other(std::move(objects));
  EXPECT_EQ(objects.FindId(&a), nullptr);
  EXPECT_EQ(other.FindId(&a), &b);
  other.InsertId(&b, &a);
  objects = std::move(other);
  EXPECT_EQ(objects.FindId(&b), &a);
  EXPECT_EQ(other.FindId(&b), nullptr);
}

TEST(Ptr64Mapper, NumbersInOrderOfAppearance) {
  constexpr std::int64_t a = std::numeric_limits<std::int64_t>::max(), b = -7;
  kelp::CPtr64Mapper mapper;
  EXPECT_EQ(mapper.GetPointer32(a), 1);
  EXPECT_EQ(mapper.GetPointer32(b), 2);
  EXPECT_EQ(mapper.GetPointer32(a), 1);
  EXPECT_EQ(mapper.GetPointer32(0), 3);

  kelp::CPtr64Mapper copy(mapper);
  EXPECT_EQ(copy.GetPointer32(11), 4);
  EXPECT_EQ(mapper.GetPointer32(12), 4);

  kelp::CPtr64Mapper moved(std::move(mapper));
  EXPECT_EQ(moved.GetPointer32(12), 4);
  EXPECT_EQ(mapper.GetPointer32(12), 1);
  mapper = std::move(moved);
  EXPECT_EQ(mapper.GetPointer32(b), 2);
  EXPECT_EQ(moved.GetPointer32(b), 1);
}

TEST(Ptr64Mapper, OneForTheProcess) {
  kelp::CPtr64Mapper* const mapper = kelp::GetPrt64TmpMapper();
  EXPECT_EQ(mapper, kelp::CPtr64TmpMapper::GetInstance()->GetMapper());
  const int number = mapper->GetPointer32(77);
  EXPECT_EQ(kelp::GetPrt64TmpMapper()->GetPointer32(77), number);
}

}  // namespace
