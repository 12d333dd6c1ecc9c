// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "platform/ExtensionModule.h"

namespace tavrix::platform {
namespace {

using enum EntryReason;

Instance const kInstance = reinterpret_cast<Instance>(0x10000);

// Writes down what the entry point asks of it.
class RecordingFramework : public ExtensionFramework {
  public:
    bool AfxInitExtensionModule(ExtensionRecord&, Instance instance) override {
        calls += instance == kInstance ? "init " : "init of another ";
        return !refuses;
    }
    void NewCDynLinkLibrary(const ExtensionRecord&) override { calls += "library "; }
    void AfxTermExtensionModule(ExtensionRecord&, bool all) override { calls += all ? "term-all " : "term "; }

    bool refuses = false;
    std::string calls;
};

TEST(ModuleEntry, RegistersOnAttachAndUnregistersOnDetach) {
    RecordingFramework framework;
    ExtensionRecord record;
    for (const EntryReason reason : {ProcessAttach, ThreadAttach, ThreadDetach, ProcessDetach}) {
        EXPECT_EQ(ModuleEntry(framework, record, kInstance, reason), 1);
    }
    EXPECT_EQ(framework.calls, "init library term ");
    framework.refuses = true;
    EXPECT_EQ(ModuleEntry(framework, record, kInstance, ProcessAttach), 0);
    EXPECT_EQ(framework.calls, "init library term init ");
}

TEST(ModuleChain, HoldsEachModuleFromAttachToDetach) {
    ModuleChain chain;
    ExtensionRecord ours, other;
    const auto otherInstance = reinterpret_cast<Instance>(0x20000);
    EXPECT_EQ(ModuleEntry(chain, ours, nullptr, ProcessAttach), 0);
    ASSERT_EQ(ModuleEntry(chain, ours, kInstance, ProcessAttach), 1);
    ASSERT_EQ(ModuleEntry(chain, other, otherInstance, ProcessAttach), 1);
    EXPECT_TRUE(ours.initialized);
    ASSERT_NE(chain.First(), nullptr);
    EXPECT_EQ(chain.First()->module, otherInstance);
    ASSERT_NE(chain.First()->next, nullptr);
    EXPECT_EQ(chain.First()->next->resources, kInstance);

    for (int times = 0; times < 2; ++times) {  // the second time there is nothing to do
        EXPECT_EQ(ModuleEntry(chain, ours, kInstance, ProcessDetach), 1);
        EXPECT_FALSE(ours.initialized);
        ASSERT_NE(chain.First(), nullptr);
        EXPECT_EQ(chain.First()->module, otherInstance);
        EXPECT_EQ(chain.First()->next, nullptr);
    }
}

}  // namespace
}  // namespace tavrix::platform
