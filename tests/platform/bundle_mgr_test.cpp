// SPDX-FileCopyrightText: 2026 The libnubis_lite authors
// SPDX-License-Identifier: Apache-2.0

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bundlemgr/bundle_mgr_proxy.h"
#include "host/ability_registry.h"
#include "ipc_test_support.h"
#include "iservice_registry.h"
#include "system_ability_definition.h"
#include "want.h"

using namespace IpcTest;
using namespace OHOS::AppExecFwk;
using OHOS::sptr;

namespace {

sptr<OHOS::IRemoteObject> BundleMgrObject()
{
    auto manager = OHOS::SystemAbilityManagerClient::GetInstance().GetSystemAbilityManager();
    EXPECT_NE(manager, nullptr);
    EXPECT_EQ(manager->CheckSystemAbility(402), nullptr);
    EXPECT_EQ(manager->CheckSystemAbility(401), manager->GetSystemAbility(401));
    return manager->GetSystemAbility(OHOS::BUNDLE_MGR_SERVICE_SYS_ABILITY_ID);
}

std::string VersionOf(const ApplicationInfo &info)
{
    for (const auto &module : info.metaData) {
        for (const auto &data : module.second) {
            if (data.name == "abilityVersion") {
                return data.value;
            }
        }
    }
    return "none";
}

} // namespace

TEST(BundleMgrTest, AnswersFromManifestsThroughBothCasts)
{
    TestHost::Get().OfferService("test.info");
    TestHost::Get().WriteManifest("test.broken", "{");
    auto object = BundleMgrObject();
    sptr<IBundleMgr> byInterface = OHOS::iface_cast<IBundleMgr>(object);
    sptr<BundleMgrProxy> byProxy = OHOS::iface_cast<BundleMgrProxy>(object);
    ASSERT_NE(byInterface, nullptr);
    ASSERT_NE(byProxy, nullptr);
    ApplicationInfo info;
    EXPECT_TRUE(byInterface->GetApplicationInfo("test.info", 64, 100, info));
    EXPECT_EQ(info.bundleName, "test.info");
    EXPECT_EQ(VersionOf(info), "7");
    ASSERT_EQ(info.moduleInfos.size(), 1U);
    EXPECT_EQ(info.metaData.count(info.moduleInfos[0].moduleName), 1U);
    EXPECT_TRUE(info.metadata.empty());
    EXPECT_TRUE(byProxy->GetApplicationInfo("test.info", GET_BASIC_APPLICATION_INFO, 100, info));
    EXPECT_TRUE(info.metaData.empty());
    EXPECT_TRUE(byProxy->GetApplicationInfo("test.info", GET_APPLICATION_INFO_WITH_METADATA, 100, info));
    EXPECT_EQ(VersionOf(info), "7");
    EXPECT_EQ(byProxy->GetApplicationInfoV9("test.info", 2, 100, info), 0);
    EXPECT_EQ(VersionOf(info), "7");
    for (const char *name : {"", "test.unknown", "test.broken", "../test.info"}) {
        EXPECT_FALSE(byProxy->GetApplicationInfo(name, 64, 100, info)) << name;
        EXPECT_NE(byProxy->GetApplicationInfoV9(name, 2, 100, info), 0) << name;
        EXPECT_EQ(info.bundleName, "test.info");
    }
}

TEST(BundleMgrTest, RegisteredMetadataComesFirst)
{
    TestHost::Get().OfferService("test.both");
    auto bundleMgr = OHOS::iface_cast<IBundleMgr>(BundleMgrObject());
    const auto versionFor = [&](int32_t user) {
        ApplicationInfo info;
        EXPECT_TRUE(bundleMgr->GetApplicationInfo("test.both", 64, user, info));
        return VersionOf(info);
    };
    Host::AbilityRegistry::Offer("test.both", ABILITY, 100, new TestAbility(), {{"abilityVersion", "12"}});
    EXPECT_EQ(versionFor(100), "12");
    EXPECT_EQ(versionFor(101), "7");
    Host::AbilityRegistry::Withdraw("test.both", ABILITY, 100);
    EXPECT_EQ(versionFor(100), "7");
}

TEST(BundleMgrTest, CastsFollowDescriptorAndKind)
{
    sptr<OHOS::IRemoteObject> none;
    EXPECT_EQ(OHOS::iface_cast<IBundleMgr>(none), nullptr);
    sptr<OHOS::IRemoteObject> stub = new TestAbility();
    EXPECT_EQ(OHOS::iface_cast<IBundleMgr>(stub), nullptr);
    EXPECT_EQ(OHOS::iface_cast<ITestAbility>(stub)->AsObject(), stub);
    // Nobody has registered a proxy class for the test interface.
    EXPECT_EQ(OHOS::iface_cast<ITestAbility>(BundleMgrObject()), nullptr);
}

TEST(AbilityBaseTest, WantsAndElementsSurviveParcels)
{
    OHOS::AAFwk::Want want;
    want.SetAction("act").SetElementName("device", "bundle", "ability", "module");
    OHOS::Parcel parcel;
    ASSERT_TRUE(want.Marshalling(parcel));
    std::unique_ptr<OHOS::AAFwk::Want> copy(OHOS::AAFwk::Want::Unmarshalling(parcel));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetAction(), "act");
    ElementName element = copy->SetElementName("other", "thing").GetElement();
    EXPECT_EQ(element.GetDeviceID() + element.GetBundleName() + element.GetAbilityName() + element.GetModuleName(),
        "deviceotherthingmodule");
    EXPECT_EQ(OHOS::AAFwk::Want::Unmarshalling(parcel), nullptr);
}
