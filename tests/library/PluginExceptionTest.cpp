// What becomes of the library's own exception when a list lets it out, as an aggregated list may that serves
// as a plug-in's.
#include "AggregatedDeviceList.h"
#include "support/Codes.h"
#include "support/Machine.h"
#include <functional>
#include <gtest/gtest.h>

namespace vykeltest {
namespace {

struct FailingList final : vykel::IDeviceList {
    void act(const char* operation) const {
        if (failing == operation)
            vyerr::raiseError(StatusCode::OsFault, vyerr::constant::osFault, {"dir/site.cpp", 7});
    }
    std::int32_t getVersion() override { return 0; }
    bool isStale() override { return act("isStale"), true; }
    void refresh(vykel::StatusBlock*) override { act("refresh"); }
    std::uint32_t getCount() override { return 0; }
    vykel::IDevice* getDevice(std::uint32_t, std::int32_t, vykel::StatusBlock*) override { return nullptr; }
    void release() override {}
    void attach(std::uint64_t, vykel::StatusBlock*) override { act("attach"); }
    void detach(std::uint64_t) override { act("detach"); }

    std::string failing;
};

struct OneList final : vykel::IPellumKelPluginManager {
    FailingList list;
    void getDeviceLists(std::vector<vykel::DeviceListPtr>& lists) override { lists.emplace_back(&list); }
};

TEST(PluginException, KeepsCodeAndSiteAndPassesWhereNoStatusIs) {
    const Machine machine;
    OneList plugin;
    const vykel::DeviceListPtr list(new vykel::AggregatedDeviceList(plugin));
    vykel::StatusBlock status = vykel::makeStatusBlock();
    const struct {
        const char* failing;
        std::function<void()> call;
        bool passes;
    } cases[] = {{"", [&] { list->refresh(&status); }, false},
                 {"isStale", [&] { list->isStale(); }, true},
                 {"detach", [&] { list->detach(7); }, true},
                 {"attach", [&] { list->attach(7, &status); }, false},
                 {"refresh", [&] { list->refresh(&status); }, false},
                 {"isStale", [&] { list->refresh(&status); }, false}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.failing);
        const bool fails = *each.failing != '\0';
        status = vykel::makeStatusBlock();
        plugin.list.failing = each.failing;
        try {
            each.call();
            EXPECT_FALSE(each.passes);
        } catch (const vyerr::ExceptionBase& exception) {
            EXPECT_TRUE(each.passes);
            vyerr::statusToBlock(exception.status(), &status);
        }
        EXPECT_EQ(status.code, fails ? osFault : success);
        EXPECT_STREQ(status.file, fails ? "dir/site.cpp" : "");
        EXPECT_EQ(status.line, fails ? 7u : 0u);
    }
}

} // namespace
} // namespace vykeltest
