#include "kelp0lang/Translate.h"

#include "tests/TestText.h"

using kelp::WString;
using kelp::Xlate;

namespace {

TEST(Translate, WithoutATableOnlyTheNoteGoes) {
  const WChar* const cases[][2] = {
      {KTEXT("E@@East (1 char)"), KTEXT("E")},
      {KTEXT("a@b"), KTEXT("a@b")},
      {KTEXT("@x"), KTEXT("@x")},
      {KTEXT("@@x"), KTEXT("")},
      {KTEXT("@@"), KTEXT("")},
      {KTEXT("@"), KTEXT("@")},
      {KTEXT("x@@"), KTEXT("x")},
      {KTEXT("a@@@b"), KTEXT("a@")},
      {KTEXT("a@@b@@c"), KTEXT("a@@b")},
      {KTEXT("a@@b@c"), KTEXT("a@@b@c")},
      {KTEXT("a\\nb\\\\"), KTEXT("a\\nb\\\\")},
      {KTEXT(""), KTEXT("")},
      {nullptr, KTEXT("")},
  };
  for (const auto& [source, shown] : cases) EXPECT_EQ(Xlate(source), WString(shown));
}

}  // namespace
