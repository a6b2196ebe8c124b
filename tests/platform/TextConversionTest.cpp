// The buffers of the conversions; the fuzz target "text" compares the conversions with the
// formulas of the forms.
#include "vysys/textConversion.h"

#include "support/OwnedStatus.h"
#include <gtest/gtest.h>

namespace {

using namespace vysys;

TEST(StatusString, StaysTerminatedAndDoesNothingAfterAnError) {
    vykeltest::OwnedStatus status;
    Utf16String text;
    utf8ToUtf16("abc", text, status);
    EXPECT_TRUE(text.resize(1, status));
    EXPECT_EQ(text.c_str()[1], 0);
    status.code = -1;
    EXPECT_FALSE(text.resize(300, status));
    EXPECT_EQ(text.end() - text.begin(), 1);
}

} // namespace
