#include "fieldbook/points/PointList.h"

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <utility>

#include "console/Console.h"
#include "fieldbook/console/Words.h"
#include "fieldbook/points/RowIndex.h"
#include "tests/TestText.h"

using fieldbook::kLengthUnits;
using fieldbook::LayoutWishes;
using fieldbook::Point;
using fieldbook::PointList;
using fieldbook::RowIndex;
using kelp::WString;

namespace {

const WString kStep = KTEXT("step");

LayoutWishes InUnit(const fieldbook::LengthUnit& unit) {
  LayoutWishes wishes;
  wishes.fileUnit = &unit;
  return wishes;
}

std::string BytesOf(const std::string& bytes) {
  kelp::CChangeTransactionManager manager;
  return PointList(&manager, bytes, {}).Bytes();
}

TEST(PointList, IsWrittenWithCommasAndEverythingElseInPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"# top\n\nPoint;North;East;Height;Code;Date\nA;1,5;2;3;wall, old\n \t\n# end",
       "# top\n\nPoint,North,East,Height,Code,Date\nA,1.500,2.000,3.000,\"wall, old\",\n \t\n"
       "# end\n"},
      {"Date,P,N,E,Foo\n1/1,A,1,2,\"x,y\",note,2\n",
       "Date,P,N,E,Foo\n1/1,A,1.000,2.000,\"x,y\",\"note,2\"\n"},
      {"A\t1\t2\t\tlocalit\xE0\n", "A,1.000,2.000,,localit\xC3\xA0\n"},
      {"Point, North, East\r\nA, 1, 2\r\n", "Point, North, East\r\nA,1.000,2.000,\r\n"},
      {"\xEF\xBB\xBF\"#1\",1.00000,-2.123456789,3e-3,18\" pipe\n",
       "\xEF\xBB\xBF\"#1\",1.000,-2.123456789,0.003,\"18\"\" pipe\"\n"},
  };
  for (const auto& [bytes, written] : cases) {
    EXPECT_EQ(BytesOf(bytes), written);
    EXPECT_EQ(BytesOf(written), written) << "what is written stays as it is";
  }
}

TEST(PointList, EveryValueIsReadBackExactly) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> digits(-1, 1);
  for (const fieldbook::LengthUnit& unit : kLengthUnits) {
    kelp::CChangeTransactionManager manager;
    PointList list(&manager, "A,1,2,3,x\n", InUnit(unit));
    for (int round = 0; round < 200; ++round) {
      Point point = list.PointIn(0);
      point.northing = digits(random) * std::pow(10, round % 14 - 7);
      point.easting = digits(random) * 5e6;
      point.elevation = round % 3 == 0 ? kelp::kNotSet : digits(random) * 1e-300;
      list.Replace(0, point, kStep);
      const Point read = ReadPoints(list.Bytes(), InUnit(unit)).points.at(0);
      EXPECT_EQ(read.northing, point.northing);
      EXPECT_EQ(read.easting, point.easting);
      EXPECT_EQ(read.elevation, point.elevation);
    }
  }
}

TEST(PointList, WhatWouldBeReadOtherwiseIsNotWritten) {
  kelp::CChangeTransactionManager manager;
  // As a row with semicolons the whole beginning would be the name.
  PointList list(&manager, "A,1,2,3,\"x;1;2;3;y\"\nB,1,2,3,\n", {});
  EXPECT_EQ(list.Points().size(), 2u);
  EXPECT_FALSE(list.Bytes().empty());
  list.Remove(list.RequirePoint(KTEXT("B")), kStep);
  EXPECT_THROW(list.Bytes(), fieldbook::Failure);
}

TEST(PointList, KnowsWhetherTheFileIsAllThere) {
  kelp::CChangeTransactionManager manager;
  const auto isWhole = [&manager](const std::string& bytes) {
    return PointList(&manager, bytes, {}).IsWhole();
  };
  EXPECT_TRUE(isWhole("# c\nA,1,2,3,x\n"));
  EXPECT_FALSE(isWhole("A,1,2,3,x\nB,1\n"));
  EXPECT_FALSE(isWhole(std::string("# a\0b\nA,1,2,3,x\n", 16)));
}

TEST(PointList, ANameStandsForOnePoint) {
  kelp::CChangeTransactionManager manager;
  PointList list(&manager, "A,1,2,3,x\n# B\nA,1,2,3,x\nC,1,2,3,x\n", {});
  EXPECT_THROW(list.RequirePoint(KTEXT("A")), fieldbook::Failure);
  EXPECT_THROW(list.RequirePoint(KTEXT("B")), fieldbook::Failure);
  list.Remove(list.RequirePoint(KTEXT("C")), kStep);
  EXPECT_THROW(list.RequirePoint(KTEXT("C")), fieldbook::Failure);
  EXPECT_FALSE(list.HasPoint(KTEXT("C")));
}

class Listener final : public kelp::CSourceEvent::IEvent {
 public:
  void OnBeginEvent(kelp::CSourceEvent*) override {}
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {}
  void OnEndEvent(kelp::CSourceEvent* source) override {
    ++ends;
    rows = static_cast<PointList*>(source)->ChangedRows();
  }

  int ends = 0;
  std::set<std::size_t> rows;
};

TEST(PointList, ListenersHearOfAGroupOnce) {
  kelp::CChangeTransactionManager manager;
  PointList list(&manager, "A,1,2,3,x\nB,1,2,3,x\nC,1,2,3,x\n", {});
  Listener listener;
  list.Register(&listener);
  {
    const kelp::CSourceEventScope group(&list);
    list.Remove(2, kStep);
    list.Remove(0, kStep);
    EXPECT_EQ(listener.ends, 0);
  }
  EXPECT_EQ(listener.ends, 1);
  EXPECT_EQ(listener.rows, (std::set<std::size_t>{0, 2}));
  list.Remove(1, kStep);
  EXPECT_EQ(listener.rows, std::set<std::size_t>{1});
  EXPECT_TRUE(list.IsChanged());
  manager.Undo();
  manager.Undo();
  EXPECT_FALSE(list.IsChanged());
  EXPECT_EQ(list.Points().size(), 3u);
  EXPECT_FALSE(manager.CanUndo());
  list.Unregister(&listener);
}

// Random groups over few points, so that one group often changes a point several times.
TEST(PointList, UndoAndRedoGoThroughTheSameStates) {
  std::mt19937 random(5);
  for (int round = 0; round < 50; ++round) {
    kelp::CChangeTransactionManager manager;
    PointList list(&manager, "A,1,2,3,x\nB,1,2,3,x\nC,1,2,3,x\n", {});
    std::vector<std::string> states = {list.Bytes()};
    for (int group = 0; group < 8; ++group) {
      const kelp::CSourceEventScope scope(group % 2 == 0 ? &list : nullptr);
      const int changes = group % 2 == 0 ? 1 + static_cast<int>(random() % 6) : 1;
      for (int i = 0; i < changes; ++i) {
        const std::size_t row = random() % 3;
        Point point = list.PointIn(row);
        point.northing += 1 + random() % 100;
        point.name = WString::ValueOf(static_cast<int>(random() % 1000));
        if (random() % 4 == 0) {
          list.Remove(row, kStep);
        } else {
          list.Replace(row, point, kStep);
        }
      }
      states.push_back(list.Bytes());
    }
    for (std::size_t i = states.size(); i-- > 1;) {
      EXPECT_EQ(list.Bytes(), states[i]);
      manager.Undo();
    }
    EXPECT_EQ(list.Bytes(), states[0]);
    for (std::size_t i = 1; i < states.size(); ++i) {
      manager.Redo();
      EXPECT_EQ(list.Bytes(), states[i]);
    }
  }
}

TEST(Words, ComeApartByBlanksAndQuotes) {
  const auto split = [](const char* line) {
    std::string joined;
    for (const WString& word : fieldbook::SplitWords(WString::ConvertFromUtf8(line))) {
      joined += word.ToUtf8().c_str() + std::string("|");
    }
    return joined;
  };
  EXPECT_EQ(split(""), "");
  EXPECT_EQ(split("  move\tA1 1  -2 "), "move|A1|1|-2|");
  EXPECT_EQ(split("rename \"A 1\" \"the \"\"old\"\" one\""), "rename|A 1|the \"old\" one|");
  EXPECT_EQ(split("move P 5'6\"3/8 6\" \"\""), "move|P|5'6\"3/8|6\"||");
  EXPECT_THROW(split("delete \"A"), fieldbook::Failure);
}

// Few hashes, so that chains are long; far more rows than were reserved for.
TEST(RowIndex, KeepsWhatAMapKeeps) {
  std::mt19937 random(7);
  RowIndex index;
  std::map<std::size_t, std::size_t> hashes;  // of the rows that are there
  for (int step = 0; step < 5000; ++step) {
    const std::size_t row = random() % 1000;
    if (hashes.count(row) != 0) {
      index.Remove(row);
      hashes.erase(row);
    } else {
      hashes[row] = random() % 97;
      index.Add(hashes[row], row);
    }
    const std::size_t wanted = random() % 97;
    std::set<std::size_t> found, expected;
    for (std::size_t r = index.First(wanted); r != RowIndex::kNone; r = index.Next(r)) {
      ASSERT_TRUE(hashes.count(r) != 0);
      if (hashes[r] == wanted) found.insert(r);
    }
    for (const auto& [r, hash] : hashes) {
      if (hash == wanted) expected.insert(r);
    }
    ASSERT_EQ(found, expected);
  }
}

}  // namespace
