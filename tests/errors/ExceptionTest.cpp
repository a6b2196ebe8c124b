#include "errors/Exception.h"

#include "errors/CatchLadder.h"
#include "errors/ErrorInfo.h"
#include "errors/ScopedStatus.h"
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <typeinfo>

namespace vyerr {

namespace {

constexpr RaiseSite site{"dir/site.cpp", 7};
constexpr const char* siteText = "{\"error_constant\":\"vyplaterr_osFault\",\"file\":\"dir/"
                                 "site.cpp\",\"line\":7,\"component\":\"vykeldevenum\"}";

} // namespace

TEST(Exception, HandsItsTextOverToACopy) {
    try {
        raiseError(vykel::StatusCode::OsFault, constant::osFault, site);
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.status()->code, -52008);
        EXPECT_STREQ(exception.errorInfoJson(), siteText);
        const Exception copy(exception);
        EXPECT_STREQ(copy.what(), siteText);
        EXPECT_STREQ(exception.what(), "");
        EXPECT_EQ(exception.status()->code, -52008);
    }
}

TEST(Exception, BecomesACodeAtTheBoundary) {
    const auto raised = [](std::int32_t code) {
        return [code] { raiseError(code, constant::osFault, site); };
    };
    const struct {
        std::function<void()> body;
        std::int32_t code;
        const char* file;
        std::uint32_t line;
    } cases[] = {
        {[] {}, 0, "", 0},
        {raised(-7), -7, "dir/site.cpp", 7},
        {[] { throw Exception(); }, -52003, "boundary.cpp", 50},
        {raised(3), -52003, "boundary.cpp", 50}, // a warning is no reason to throw
        {[] {
             StatusBlock block = vykel::makeStatusBlock();
             block.code = -8;
             throwIfFailed(&block);
         },
         -8, "", 0},
        {[] { throw std::bad_array_new_length(); }, -52000, "boundary.cpp", 50},
        {[] { throw std::invalid_argument(""); }, -52005, "boundary.cpp", 50},
        {[] { throw std::bad_cast(); }, -52004, "boundary.cpp", 50},
        {[] { throw std::system_error(std::error_code()); }, -52008, "boundary.cpp", 50},
        {[] { throw std::length_error(""); }, -52003, "boundary.cpp", 50},
        {[] { throw 1; }, -52003, "boundary.cpp", 50},
    };
    for (const auto& each : cases) {
        StatusBlock block = vykel::makeStatusBlock();
        runGuarded(&block, {"boundary.cpp", 50}, each.body);
        EXPECT_EQ(block.code, each.code);
        EXPECT_STREQ(block.file, each.file) << each.code;
        EXPECT_EQ(block.line, each.line) << each.code;
        block = vykel::makeStatusBlock();
        block.code = -1;
        runGuarded(&block, {"boundary.cpp", 50}, each.body);
        EXPECT_EQ(block.code, -1);
    }
}

TEST(ScopedStatus, ThrowsAtItsEndButNotIntoAnotherException) {
    const auto failingScope = [] {
        ScopedStatus status;
        recordError(status.get(), -7, constant::osFault, site.file, site.line);
    };
    const auto failingBlockScope = [] { ScopedStatusBlock().get()->code = -8; };
    try {
        failingScope();
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_NE(std::string(exception.what()).find("site.cpp"), std::string::npos);
    }
    EXPECT_THROW(failingBlockScope(), Exception);
    EXPECT_NO_THROW({
        ScopedStatus warned;
        (*warned).code = 1;
    });
    struct OnUnwinding {
        std::function<void()> body;
        ~OnUnwinding() { body(); }
    };
    try {
        const OnUnwinding first{failingScope};
        const OnUnwinding second{failingBlockScope};
        const OnUnwinding third{[] {
            ScopedStatus status;
            recordError(status.get(), -9, constant::osFault, site.file, site.line);
            EXPECT_THROW(status.check(), Exception); // asked for, it throws also now
        }};
        throw 5;
    } catch (int thrown) {
        EXPECT_EQ(thrown, 5);
    }
}

} // namespace vyerr
