#include "errors/Exception.h"

#include "errors/CatchLadder.h"
#include "errors/ErrorInfo.h"
#include "errors/ScopedStatus.h"
#include "support/OwnedStatus.h"
#include "support/Unwinding.h"
#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace vyerr;

constexpr RaiseSite site{"dir/site.cpp", 7};

/// What a boundary makes of its body: "code file line". An error that the block held before must stay.
std::string outcome(const std::function<void()>& body) {
    StatusBlock block = vykel::makeStatusBlock();
    block.code = -1;
    runGuarded(&block, {"boundary.cpp", 50}, body);
    EXPECT_EQ(block.code, -1);
    block.code = 0;
    runGuarded(&block, {"boundary.cpp", 50}, body);
    return std::to_string(block.code) + ' ' + block.file + ' ' + std::to_string(block.line);
}

/// A scope that records a code, and asks for errors or leaves that to its end.
template <class Scope>
void record(std::int32_t code, bool checks) {
    Scope scope;
    scope.get()->code = code;
    if (checks)
        scope.check();
}

// What standard and foreign exceptions become is tested with plug-ins that throw them.
TEST(Exception, BecomesACodeAtTheBoundary) {
    const std::string generalFault =
        std::to_string(toInteger(vykel::StatusCode::GeneralFault)) + " boundary.cpp 50";
    EXPECT_EQ(outcome([] {}), "0  0");
    EXPECT_EQ(outcome([] { raiseError(-7, constant::osFault, site); }), "-7 dir/site.cpp 7");
    EXPECT_EQ(outcome([] { throw Exception(); }), generalFault);
    EXPECT_EQ(outcome([] { raiseError(3, "", site); }), generalFault); // a warning
}

TEST(Exception, SaysWhatFailed) {
    const Exception none;
    EXPECT_STREQ(none.what(), "");
    recordError(none.status(), -7, constant::osFault, site.file, site.line);
    const Exception copy(none); // takes the text over
    EXPECT_STREQ(none.what(), "");
    EXPECT_NE(std::string(copy.what()).find(site.file), std::string::npos);
    EXPECT_EQ(copy.errorInfoJson(), copy.what());
}

TEST(ScopedStatus, ThrowsErrorsButItsEndNotIntoAnotherException) {
    for (const bool checks : {true, false}) {
        EXPECT_EQ(outcome([=] { record<ScopedStatus>(8, checks); }), "0  0"); // a warning
        EXPECT_EQ(outcome([=] { record<ScopedStatusBlock>(8, checks); }), "0  0");
        EXPECT_EQ(outcome([=] { record<ScopedStatus>(-8, checks); }), "-8  0");
        EXPECT_EQ(outcome([=] { record<ScopedStatusBlock>(-8, checks); }), "-8  0");
    }
    vykeltest::whileUnwinding([] {
        EXPECT_NO_THROW(record<ScopedStatus>(-8, false));
        EXPECT_NO_THROW(record<ScopedStatusBlock>(-8, false));
        EXPECT_THROW(record<ScopedStatus>(-8, true), Exception);
    });
}

} // namespace
