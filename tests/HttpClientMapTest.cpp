// The map of names to values, and the progress of a post.
#include "kelp0lang/HttpClientMap.h"
#include "kelp0lang/HttpPostStat.h"
#include "tests/HttpTest.h"

namespace {

using Map = Dovek::CHttpClientMapT<Dovek::CHttpToolW>;
using Stat = Dovek::CHttpPostStatT<Dovek::CHttpToolW>;

std::string Of(const Map& map, const WChar* name, std::uint32_t index) {
  const Map::Value found = map.Get(name, index);
  return found.value == nullptr ? "null" : Narrow(found.value) + std::to_string(found.flags);
}

TEST(HttpClientMap, ANameHasItsValuesInTheOrderTheyCame) {
  Map map;
  EXPECT_FALSE(map.RemoveAll());
  map.Add(KTEXT("b"), KTEXT("x"), Dovek::ParamFile);
  map.Add(KTEXT("a"), KTEXT("1"), 0);
  map.Add(KTEXT("A"), KTEXT("2"), Dovek::ParamEncodedValue);
  map.AddPointerDirectly(Dovek::CHttpToolW::Copy(KTEXT("")).release(), nullptr, 0);
  EXPECT_EQ(Of(map, KTEXT("A"), 0), "10");
  EXPECT_EQ(Of(map, KTEXT("a"), 1), "24");
  EXPECT_EQ(Of(map, KTEXT("a"), 2), "null");
  EXPECT_EQ(Of(map, KTEXT("c"), 0), "null");
  EXPECT_EQ(Of(map, KTEXT(""), 0), "0");
  EXPECT_EQ(map.Count(KTEXT("A")), 2u);
  EXPECT_EQ(map.Count(nullptr), 4u);
  std::string names;
  for (const auto& entry : map.All()) names += Narrow(entry.first.get()) + ",";
  EXPECT_EQ(names, ",a,A,b,");

  EXPECT_TRUE(map.RemoveAll(KTEXT("A")));
  EXPECT_FALSE(map.RemoveAll(KTEXT("A")));
  EXPECT_EQ(map.Count(nullptr), 2u);
  EXPECT_TRUE(map.RemoveAll());
  EXPECT_EQ(map.Count(nullptr), 0u);
}

TEST(HttpClientMap, RefusesANullName) {
  Map map;
  const std::string null = ": szName can not be NULL.";
  EXPECT_EQ(FailureOf([&] { map.Add(nullptr, KTEXT("x"), 0); }),
            "0 0: CHttpClientMapT::Add" + null);
  const auto value = [] { return Dovek::CHttpToolW::Copy(KTEXT("x")).release(); };
  EXPECT_EQ(FailureOf([&] { map.AddPointerDirectly(nullptr, value(), 0); }),
            "0 0: CHttpClientMapT::AddPointerDirectly" + null);
  EXPECT_EQ(FailureOf([&] { map.Get(nullptr, 0); }), "0 0: CHttpClientMapT::Get" + null);
  EXPECT_EQ(FailureOf([&] { map.RemoveAll(nullptr); }), "0 0: CHttpClientMapT::RemoveAll" + null);
}

TEST(HttpPostStat, CountsWhatIsPosted) {
  Stat stat;
  EXPECT_EQ(FailureOf([&] { stat.TotalCount(); }),
            "0 0: CHttpPostStatT::TotalCount: The post context is not active.");
  stat._MakeActive(20, 8, 2, 1);
  stat._AddActualPostedBytes(7);
  stat._StartNewEntry(KTEXT("a"), 5, true, KTEXT("C:\\f"));
  EXPECT_TRUE(stat.CurrParamIsFile());
  stat._AddPostedBytes(4);
  const Stat copy = stat;
  EXPECT_EQ(copy.CurrParamRemainByte(), 1u);
  EXPECT_FALSE(copy.CurrParamIsComplete());
  stat._AddPostedBytes(1);
  EXPECT_TRUE(stat.CurrParamIsComplete());
  stat._StartNewEntry(KTEXT("a"), 3, false, KTEXT("ignored"));
  EXPECT_FALSE(stat.CurrParamIsFile());
  EXPECT_EQ(stat.PostedCount(), 2u);
  EXPECT_EQ(stat.PostedFileCount(), 1u);
  EXPECT_EQ(stat.CurrParamPostedByte(), 0u);
  EXPECT_EQ(stat.ActualPostedByte(), 12u);
  stat._AddActualPostedBytes(8);
  EXPECT_TRUE(stat.IsActualFinished());

  EXPECT_EQ(FailureOf([&] { stat._AddPostedBytes(~std::uint64_t{0}); }),
            "112 0: An arithmetic overflow error has been occurred.");
  EXPECT_EQ(stat.ActualPostedByte(), 20u);
  stat._MakeInactive();
  EXPECT_THROW(stat.IsActualFinished(), Dovek::httpclientexceptionW);
  EXPECT_TRUE(copy.CurrParamIsFile());
}

}  // namespace
