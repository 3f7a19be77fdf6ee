#include "kelp0lang/LocaleFree.h"

#include "tests/TestText.h"

namespace {

TEST(Format, PrintsIntoBuffersOfBothWidths) {
  WChar w[64];
  char n[64];
  EXPECT_EQ(kelp_snwprintf(w, 64, KTEXT("%.3f|%8.2f|%-6d|%ls"), 512345.6785, -1.5, 42, KTEXT("x")),
            28);
  EXPECT_EQ(kelp::WString(w), kelp::WString(KTEXT("512345.678|   -1.50|42    |x")));
  EXPECT_EQ(kelp_sprintf(n, "%s %g %e %#x %p", "a", 0.0001, 12345.678, 255, nullptr), 43);
  EXPECT_STREQ(n, "a 0.0001 1.234568e+04 0xff 0000000000000000");
  EXPECT_EQ(kelp_swprintf_s(w, 3, KTEXT("%d"), 123), -1);
  EXPECT_EQ(w[0], 0);
  EXPECT_EQ(kelp_wtof(KTEXT(" -12.5e1x")), -125);
  EXPECT_EQ(kelp_atof("123456789012345678901234567890"), 123456789012345678901234567890.);
}

}  // namespace
