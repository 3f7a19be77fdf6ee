#include "kelp0lang/FmtText.h"

#include <gtest/gtest.h>

namespace {

TEST(FmtText, TextIsFormattedAsStringsAre) {
  EXPECT_EQ(fmt::format("{}|{:>4}|{:.1}", kelp::String("P1"), kelp::WString(KTEXT("\x00E8")),
                        kelp::WString(KTEXT("xyz"))),
            "P1|   \xC3\xA8|x");
}

}  // namespace
