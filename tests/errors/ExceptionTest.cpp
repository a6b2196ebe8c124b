#include "errors/Exception.h"

#include "errors/CatchLadder.h"
#include "errors/ErrorInfo.h"
#include "errors/ScopedStatus.h"
#include "support/OwnedStatus.h"
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <system_error>
#include <typeinfo>

namespace vyerr {

namespace {

using vykel::StatusCode;
using vykeltest::numberOf;

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

void throwFromStatus(std::int32_t code) {
    vykeltest::OwnedStatus status(code);
    throwIfFailed(&status);
}

void throwFromBlock(std::int32_t code) {
    StatusBlock block = vykel::makeStatusBlock();
    block.code = code;
    throwIfFailed(&block);
}

} // namespace

TEST(Exception, BecomesACodeAtTheBoundary) {
    const auto atBoundary = [](StatusCode code) { return numberOf(code) + " boundary.cpp 50"; };
    EXPECT_EQ(outcome([] {}), "0  0");
    EXPECT_EQ(outcome([] { raiseError(-7, constant::osFault, site); }), "-7 dir/site.cpp 7");
    EXPECT_EQ(outcome([] { throw Exception(); }), atBoundary(StatusCode::GeneralFault));
    EXPECT_EQ(outcome([] { raiseError(3, "", site); }), atBoundary(StatusCode::GeneralFault)); // a warning
    EXPECT_EQ(outcome([] { throwFromStatus(8); }), "0  0"); // a warning is no reason to throw
    EXPECT_EQ(outcome([] { throwFromBlock(8); }), "0  0");
    EXPECT_EQ(outcome([] { throwFromStatus(-8); }), "-8  0");
    EXPECT_EQ(outcome([] { throwFromBlock(-8); }), "-8  0");
    EXPECT_EQ(outcome([] { throw std::bad_array_new_length(); }), atBoundary(StatusCode::MemoryFull));
    EXPECT_EQ(outcome([] { throw std::invalid_argument(""); }), atBoundary(StatusCode::InvalidParameter));
    EXPECT_EQ(outcome([] { throw std::bad_cast(); }), atBoundary(StatusCode::BadCast));
    EXPECT_EQ(outcome([] { throw std::system_error(std::error_code()); }), atBoundary(StatusCode::OsFault));
    EXPECT_EQ(outcome([] { throw std::length_error(""); }), atBoundary(StatusCode::GeneralFault));
    EXPECT_EQ(outcome([] { throw 1; }), atBoundary(StatusCode::GeneralFault));
}

TEST(ScopedStatus, ThrowsAtItsEndButNotIntoAnotherException) {
    const auto failingScope = [](bool checks) {
        ScopedStatus status;
        recordError(status.get(), -7, constant::osFault, site.file, site.line);
        if (checks)
            status.check();
    };
    const auto failingBlockScope = [] { ScopedStatusBlock().get()->code = -8; };
    EXPECT_EQ(outcome([&] { failingScope(false); }), "-7 dir/site.cpp 7");
    EXPECT_EQ(outcome(failingBlockScope), "-8  0");
    EXPECT_EQ(outcome([] { ScopedStatus().get()->code = 1; }), "0  0");
    struct OnUnwinding {
        std::function<void()> body;
        ~OnUnwinding() { body(); }
    };
    EXPECT_EQ(outcome([&] {
                  const OnUnwinding first{[&] { failingScope(false); }};
                  const OnUnwinding second{failingBlockScope};
                  const OnUnwinding third{[&] { EXPECT_THROW(failingScope(true), Exception); }};
                  raiseError(-9, "", {"first", 1});
              }),
              "-9 first 1");
}

} // namespace vyerr
