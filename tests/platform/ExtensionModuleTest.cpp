// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "platform/ExtensionModule.h"

namespace tavrix::platform {
namespace {

Instance const kInstance = reinterpret_cast<Instance>(0x10000);

// Writes down what the entry point asks of it.
class RecordingFramework : public ExtensionFramework {
  public:
    bool AfxInitExtensionModule(ExtensionRecord& record, Instance instance) override {
        calls += "init ";
        seen = &record;
        EXPECT_EQ(instance, kInstance);
        return !refuses;
    }
    void NewCDynLinkLibrary(const ExtensionRecord& record) override {
        calls += "library ";
        EXPECT_EQ(&record, seen);
    }
    void AfxTermExtensionModule(ExtensionRecord& record, bool all) override {
        calls += all ? "term-all " : "term ";
        EXPECT_EQ(&record, seen);
    }

    bool refuses = false;
    std::string calls;
    const ExtensionRecord* seen = nullptr;
};

TEST(ModuleEntry, RegistersOnAttachAndUnregistersOnDetach) {
    RecordingFramework framework;
    ExtensionRecord record;
    for (const EntryReason reason : {EntryReason::ProcessAttach, EntryReason::ThreadAttach,
                                     EntryReason::ThreadDetach, EntryReason::ProcessDetach}) {
        EXPECT_EQ(ModuleEntry(framework, record, kInstance, reason), 1);
    }
    EXPECT_EQ(framework.calls, "init library term ");
}

TEST(ModuleEntry, FailsWhenTheFrameworkRefuses) {
    RecordingFramework framework;
    framework.refuses = true;
    ExtensionRecord record;
    EXPECT_EQ(ModuleEntry(framework, record, kInstance, EntryReason::ProcessAttach), 0);
    EXPECT_EQ(framework.calls, "init ");
}

TEST(ModuleChain, HoldsEachModuleFromAttachToDetach) {
    ModuleChain chain;
    ExtensionRecord ours, other;
    const auto otherInstance = reinterpret_cast<Instance>(0x20000);
    EXPECT_EQ(ModuleEntry(chain, ours, nullptr, EntryReason::ProcessAttach), 0);
    ASSERT_EQ(ModuleEntry(chain, ours, kInstance, EntryReason::ProcessAttach), 1);
    ASSERT_EQ(ModuleEntry(chain, other, otherInstance, EntryReason::ProcessAttach), 1);
    EXPECT_TRUE(ours.initialized);
    ASSERT_NE(chain.First(), nullptr);
    EXPECT_EQ(chain.First()->module, otherInstance);
    ASSERT_NE(chain.First()->next, nullptr);
    EXPECT_EQ(chain.First()->next->resources, kInstance);

    EXPECT_EQ(ModuleEntry(chain, ours, kInstance, EntryReason::ProcessDetach), 1);
    EXPECT_FALSE(ours.initialized);
    ASSERT_NE(chain.First(), nullptr);
    EXPECT_EQ(chain.First()->module, otherInstance);
    EXPECT_EQ(chain.First()->next, nullptr);
    EXPECT_EQ(ModuleEntry(chain, ours, kInstance, EntryReason::ProcessDetach), 1);  // a second time: nothing
    EXPECT_NE(chain.First(), nullptr);
}

}  // namespace
}  // namespace tavrix::platform
