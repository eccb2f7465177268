// Inventory of compute resources through the facade: the compartment tree,
// every instance of a tenancy over several compartments and pages, one
// instance in detail, templates and shapes.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "EmulatorFixture.h"
#include "LogCapture.h"

namespace {

using namespace OracleCloudSDKWrapper;
using ocwtest::EmulatorTest;

constexpr unsigned long long kGuestOs = 2;
constexpr unsigned long long kDisks = 16;
constexpr unsigned long long kNetwork = 32;
constexpr unsigned long long kHostVMs = 1ULL << 29;

class InventoryCompute : public EmulatorTest {};

std::vector<std::string> Names(const std::vector<SContainerInfoLib>& containers) {
    std::vector<std::string> out;
    for (const auto& c : containers) out.push_back(c.name);
    return out;
}

// ---- compartments -------------------------------------------------------------

TEST_F(InventoryCompute, CompartmentListHoldsTheFirstLevelFollowedByTheTenancyAsRoot) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SContainerInfoLib> compartments;

    ASSERT_TRUE(facade->GetContainerInfoList(compartments, "", "")) << facade->GetLastError();

    // "ocw-demo-apps" lives one level further down and is not listed.
    EXPECT_EQ(Names(compartments),
              (std::vector<std::string>{"ocw-demo", "ocw-demo-db", "ocw-emulated-tenancy (root)"}));
    EXPECT_EQ(compartments.back().guid, info().tenancy);
    EXPECT_EQ(compartments.front().guid, FindResourceId("compartment", "ocw-demo"));
    auto sent = Requests();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[1].target, "/20160918/compartments?compartmentId=" + info().tenancy);
    EXPECT_EQ(sent[2].target, "/20160918/compartments/" + info().tenancy);
    EXPECT_EQ(sent[2].host, "identity." + info().region + ".oraclecloud.com");
}

TEST_F(InventoryCompute, CompartmentListOfASubCompartmentEndsWithThatCompartmentWithoutRootSuffix) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::vector<SContainerInfoLib> compartments;

    ASSERT_TRUE(facade->GetContainerInfoList(compartments, demo, ""));

    EXPECT_EQ(Names(compartments), (std::vector<std::string>{"ocw-demo-apps", "ocw-demo"}));
}

TEST_F(InventoryCompute, HostsAreCompartmentsWithIdFirstAndNameSecond) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SHostInfoLib> hosts;

    ASSERT_TRUE(facade->GetHostInfoList(hosts, "", 0, ""));

    ASSERT_EQ(hosts.size(), 3u);
    EXPECT_EQ(hosts[0].hostId, FindResourceId("compartment", "ocw-demo"));
    EXPECT_EQ(hosts[0].hostName, "ocw-demo");
    EXPECT_EQ(hosts[0].parentId, info().tenancy);
    EXPECT_EQ(hosts[2].hostName, "ocw-emulated-tenancy (root)");

    SHostInfoLib root;
    ASSERT_TRUE(facade->GetHostInfo(info().tenancy, "", "", root, 0, ""));
    EXPECT_EQ(root.hostName, "ocw-emulated-tenancy (root)");

    // The facade's host filler lists each host's VMs by (hostId, hostName).
    ASSERT_TRUE(facade->FillHostInfoListDetails(hosts, kHostVMs, ""));
    std::vector<std::string> demoVms;
    for (const auto& vm : hosts[0].vms) demoVms.push_back(vm.vmName);
    EXPECT_EQ(demoVms, (std::vector<std::string>{"ocw-web-1", "ocw-web-2", "ocw-win-1"}));
    EXPECT_TRUE(hosts[1].vms.empty());
}

// ---- all instances of a tenancy ------------------------------------------------

TEST_F(InventoryCompute, AllInstancesComeFromEveryCompartmentPageByPageWithoutTerminatedOnes) {
    ResetEmulator("scale");
    WriteConfig({{"nOCIPageLimit", "4"}});
    std::vector<std::string> compartments = ResourceIds("compartment");
    ASSERT_EQ(compartments.size(), 3u);
    std::vector<std::string> first = ResourceIds("instance", compartments[0]);
    ASSERT_EQ(first.size(), 9u);
    HoldState(first[1], "TERMINATED");
    HoldState(first[7], "TERMINATED");
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);

    std::vector<SVMInfoLib> vms(1);  // the list is cleared first
    ASSERT_TRUE(facade->GetVMInfoList(vms, 0, "")) << facade->GetLastError();

    EXPECT_EQ(vms.size(), static_cast<size_t>(ocwtest::kScaleInstances - 2));
    std::set<std::string> ids;
    for (const auto& vm : vms) {
        EXPECT_NE(vm.state, "TERMINATED");
        EXPECT_FALSE(vm.guid.empty());
        ids.insert(vm.guid);
    }
    EXPECT_EQ(ids.size(), vms.size()) << "an instance was listed twice";
    EXPECT_EQ(ids.count(first[1]), 0u);

    // 9, 8 and 8 instances in pages of 4, plus the empty root compartment.
    auto lists = RequestsTo("GET", "/20160918/instances?");
    ASSERT_EQ(lists.size(), 3u + 2u + 2u + 1u);
    size_t withToken = 0;
    for (const auto& r : lists) {
        EXPECT_EQ(r.status, 200) << r.target;
        EXPECT_NE(r.target.find("limit=4"), std::string::npos) << r.target;
        size_t page = r.target.find("&page=");
        if (page == std::string::npos) continue;
        ++withToken;
        // Tokens end in "=" padding; sent back they must be URL-encoded.
        std::string token = r.target.substr(page + 6);
        EXPECT_EQ(token.find('='), std::string::npos) << r.target;
        EXPECT_NE(token.find("%3D"), std::string::npos) << r.target;
    }
    EXPECT_EQ(withToken, 2u + 1u + 1u);
    EXPECT_EQ(lists[0].target.rfind("/20160918/instances?compartmentId=" + compartments[0] + "&limit=4", 0), 0u);
}

TEST_F(InventoryCompute, WithoutPageLimitNoLimitIsSentAndTheServicePageSizeApplies) {
    ResetEmulator("scale");
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SVMInfoLib> vms;

    ASSERT_TRUE(facade->GetVMInfoList(vms, 0, ""));

    EXPECT_EQ(vms.size(), static_cast<size_t>(ocwtest::kScaleInstances));
    for (const auto& r : Requests()) EXPECT_EQ(r.target.find("limit="), std::string::npos) << r.target;
    EXPECT_EQ(CountRequests("GET", "/20160918/instances?"), 1u + 1u + 1u + 1u);
}

TEST_F(InventoryCompute, AFailingCompartmentStopsTheWalkWithTheEarlierInstancesKept) {
    ResetEmulator("scale");
    WriteConfig({{"nOCIPageLimit", "4"}});
    std::vector<std::string> compartments = ResourceIds("compartment");
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SVMInfoLib> vms;
    bool ok = true;
    {
        // Once the first compartment is in, the instance lists start failing.
        ocwtest::LogTrigger trigger("Adding 9 instances from compartment scale-000",
                                               [this] { AddStatusFault("GET", "/20160918/instances", 404, -1); });
        ok = facade->GetVMInfoList(vms, 0, "");
        EXPECT_TRUE(trigger.fired());
    }

    EXPECT_FALSE(ok);
    EXPECT_EQ(vms.size(), 9u);
    for (const auto& vm : vms) EXPECT_EQ(vm.compartmentId, compartments[0]);
    EXPECT_FALSE(facade->GetLastError().empty());
}

TEST_F(InventoryCompute, InstancesOfOneHostAreAppendedAndOnlyTerminatedOnesDropped) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    HoldState(FindResourceId("instance", "ocw-web-2"), "TERMINATED");
    HoldState(FindResourceId("instance", "ocw-win-1"), "STOPPED");
    std::vector<SVMInfoLib> vms(1);
    vms[0].vmName = "kept";

    ASSERT_TRUE(facade->GetVMInfoListForHost(vms, demo, "ocw-demo", 0, ""));

    std::vector<std::string> names;
    for (const auto& vm : vms) names.push_back(vm.vmName);
    EXPECT_EQ(names, (std::vector<std::string>{"kept", "ocw-web-1", "ocw-win-1"}));
    EXPECT_EQ(vms[2].state, "STOPPED");
    // List entries carry only what the list answer holds: no detail requests.
    EXPECT_EQ(CountRequests("GET", "/20160918/vnicAttachments"), 0u);
    EXPECT_EQ(CountRequests("GET", "/20160918/images"), 0u);
}

// ---- one instance in detail ------------------------------------------------------

TEST_F(InventoryCompute, InstanceDetailsBringGuestOsDisksWithIscsiTargetAndVnicAddress) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string web1 = FindResourceId("instance", "ocw-web-1");
    std::string data = FindResourceId("volume", "ocw-data-1");
    std::string dataAttachment = ResourceIds("volumeattachment").at(0);
    SVMInfoLib vm;

    ASSERT_TRUE(facade->GetVMInfo("", web1, vm, kGuestOs | kDisks | kNetwork, "")) << facade->GetLastError();

    EXPECT_EQ(vm.guid, web1);
    EXPECT_EQ(vm.vmName, "ocw-web-1");
    EXPECT_EQ(vm.state, "RUNNING");
    EXPECT_EQ(vm.platform, "Oracle Linux");
    EXPECT_TRUE(vm.administratorPassword.empty());

    ASSERT_EQ(vm.disks.size(), 2u);
    EXPECT_EQ(vm.diskCount, 2u);
    const SDiskInfoLib& dataDisk = vm.disks[0];
    EXPECT_EQ(dataDisk.guid, data);
    EXPECT_EQ(dataDisk.name, "ocw-data-1");
    EXPECT_EQ(dataDisk.sizeBytes, 100ULL << 30);
    EXPECT_FALSE(dataDisk.bootable);
    EXPECT_EQ(dataDisk.iscsiPortal, ResourceMember(dataAttachment, "_ipv4") + ":3260");
    EXPECT_EQ(dataDisk.iscsiTarget, ResourceMember(dataAttachment, "_iqn"));
    EXPECT_FALSE(dataDisk.iscsiTarget.empty());
    const SDiskInfoLib& bootDisk = vm.disks[1];
    EXPECT_NE(bootDisk.guid.find(".bootvolume."), std::string::npos);
    EXPECT_TRUE(bootDisk.bootable);

    ASSERT_EQ(vm.vnics.size(), 1u);
    EXPECT_EQ(vm.nicCount, 1u);
    EXPECT_EQ(vm.vnics[0].subnetId, FindResourceId("subnet", "ocw-demo-public"));
    EXPECT_EQ(vm.ipAddress, vm.vnics[0].privateIp);
    EXPECT_EQ(vm.ipAddress.rfind("10.0.0.", 0), 0u) << vm.ipAddress;

    // The boot attachment is looked up with the instance's domain.
    auto boot = RequestsTo("GET", "/20160918/bootVolumeAttachments/?availabilityDomain=");
    ASSERT_EQ(boot.size(), 1u);
    EXPECT_NE(boot[0].target.find("&instanceId=" + web1), std::string::npos);
}

TEST_F(InventoryCompute, InstanceWithoutDetailFlagsSendsOneRequest) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    ClearRequestLog();
    SVMInfoLib vm;

    ASSERT_TRUE(facade->GetVMInfo("", FindResourceId("instance", "ocw-web-1"), vm, 0, ""));

    EXPECT_EQ(Requests().size(), 1u);
    EXPECT_TRUE(vm.disks.empty());
    EXPECT_EQ(vm.shape, "VM.Standard2.1");

    // The id may come as the first argument too.
    ASSERT_TRUE(facade->GetVMInfo(FindResourceId("instance", "ocw-app-1"), "", vm, 0, ""));
    EXPECT_EQ(vm.vmName, "ocw-app-1");
}

TEST_F(InventoryCompute, WindowsGuestBringsItsInitialPasswordAndWaitForBootDoesNotWait) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string win = FindResourceId("instance", "ocw-win-1");
    SVMInfoLib vm;
    {
        ocwtest::LogCapture log(9);
        ASSERT_TRUE(facade->GetVMInfo("", win, vm, kGuestOs, ""));
        ASSERT_FALSE(log.matching("initialCredentials").empty()) << "the answer is logged at this level";
        EXPECT_TRUE(log.matching(ResourceMember(win, "_password")).empty()) << "the password reached the log";
    }

    EXPECT_EQ(vm.platform, "Windows");
    EXPECT_EQ(vm.administratorPassword, ResourceMember(win, "_password"));
    EXPECT_FALSE(vm.administratorPassword.empty());

    SVMInfoLib booted;
    booted.guid = win;
    EXPECT_TRUE(facade->WaitForBoot(booted, 3600, true, ""));
    EXPECT_EQ(booted.administratorPassword, vm.administratorPassword);

    // A Linux guest has no initial credentials: still true.
    SVMInfoLib linux;
    linux.guid = FindResourceId("instance", "ocw-web-1");
    EXPECT_TRUE(facade->WaitForBoot(linux, 3600, true, ""));
    EXPECT_TRUE(linux.administratorPassword.empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/instances/" + linux.guid + "/initialCredentials"), 1u);
}

TEST_F(InventoryCompute, UnknownInstanceFailsWithTheServiceMessage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    SVMInfoLib vm;

    EXPECT_FALSE(facade->GetVMInfo("", "ocid1.instance.oc1.phx.nosuchinstance", vm, kDisks, ""));

    auto sent = RequestsTo("GET", "/20160918/instances/ocid1.instance.oc1.phx.nosuchinstance");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_NE(sent[0].responseBody.find(facade->GetLastError()), std::string::npos);
    EXPECT_FALSE(facade->GetLastError().empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/volumeAttachments"), 0u);
}

// ---- templates and shapes ------------------------------------------------------

TEST_F(InventoryCompute, TemplatesAreImagesWithoutDeletedOnes) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::string deleted = FindResourceId("image", "Oracle-Linux-7.9-2024.01.26-0");
    HoldState(deleted, "DELETED");
    std::vector<SVMInfoLib> templates;

    ASSERT_TRUE(facade->GetTemplateInfoList(templates, demo, 0, 0, ""));

    std::set<std::string> names;
    for (const auto& t : templates) {
        EXPECT_TRUE(t.isTemplate);
        EXPECT_EQ(t.state, "AVAILABLE");
        names.insert(t.vmName);
    }
    EXPECT_EQ(names.count("Oracle-Linux-7.9-2024.01.26-0"), 0u);
    EXPECT_EQ(names.count("Oracle-Linux-8.9-2024.01.26-0"), 1u);
    EXPECT_EQ(templates.size(), 3u);

    SVMInfoLib image;
    EXPECT_FALSE(facade->GetTemplateInfo(deleted, image, ""));
    EXPECT_NE(facade->GetLastError().find("has been deleted"), std::string::npos) << facade->GetLastError();
}

TEST_F(InventoryCompute, TemplateByNameSendsTheNameAndMapsTheImage) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::vector<SVMInfoLib> templates;

    ASSERT_TRUE(facade->GetTemplateInfoListFilterByName(templates, demo, "Windows-Server-2019-Standard-Edition-VM-2024.01.09-0",
                                                        0, 0, ""));

    ASSERT_EQ(templates.size(), 1u);
    EXPECT_EQ(templates[0].platform, "Windows");
    EXPECT_EQ(templates[0].launchMode, "NATIVE");
    EXPECT_EQ(templates[0].guid, FindResourceId("image", "Windows-Server-2019-Standard-Edition-VM-2024.01.09-0"));
    EXPECT_EQ(CountRequests("GET", "/20160918/images?compartmentId=" + demo +
                                       "&displayName=Windows-Server-2019-Standard-Edition-VM-2024.01.09-0"),
              1u);

    // A name with blanks travels encoded and simply matches nothing.
    templates.clear();
    ASSERT_TRUE(facade->GetTemplateInfoListFilterByName(templates, demo, "no such image", 0, 0, ""));
    EXPECT_TRUE(templates.empty());
    EXPECT_EQ(CountRequests("GET", "/20160918/images?compartmentId=" + demo + "&displayName=no%20such%20image"), 1u);
}

TEST_F(InventoryCompute, ShapesForAnImageAcrossDomainsAreSortedAndUnique) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::string demo = FindResourceId("compartment", "ocw-demo");
    std::string image = FindResourceId("image", "Oracle-Linux-8.9-2024.01.26-0");
    std::vector<SAvailabilityDomainInfoLib> domains;
    ASSERT_TRUE(facade->GetAvailabilityDomainList(domains, info().tenancy, ""));
    ASSERT_EQ(domains.size(), 3u);
    std::vector<SInstanceShapeInfoLib> shapes;

    for (const auto& d : domains) {
        ASSERT_TRUE(facade->GetInstanceShapeListForImage(shapes, demo, image, d.name, "")) << facade->GetLastError();
    }

    std::vector<std::string> names;
    for (const auto& s : shapes) names.push_back(s.name);
    std::vector<std::string> expected = names;
    std::sort(expected.begin(), expected.end());
    expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
    EXPECT_EQ(names, expected);
    EXPECT_EQ(names.size(), 8u);
    auto standard24 = std::find_if(shapes.begin(), shapes.end(),
                                   [](const SInstanceShapeInfoLib& s) { return s.name == "VM.Standard2.4"; });
    ASSERT_NE(standard24, shapes.end());
    EXPECT_EQ(standard24->cpuCount, 4);
    EXPECT_EQ(standard24->memoryMB, 60 << 10);

    auto sent = RequestsTo("GET", "/20160918/shapes?compartmentId=" + demo + "&imageId=" + image +
                                      "&availabilityDomain=" + domains[1].name);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(InventoryCompute, ShapesOfAllDomainsInOneListingCollapseToOneEntryEach) {
    auto facade = ConnectFacade();
    ASSERT_TRUE(facade);
    std::vector<SInstanceShapeInfoLib> shapes;

    // Without a domain the service repeats every shape once per domain, over several pages.
    ASSERT_TRUE(facade->GetInstanceShapeList(shapes, FindResourceId("compartment", "ocw-demo"), ""));

    EXPECT_EQ(shapes.size(), 8u);
    EXPECT_GE(CountRequests("GET", "/20160918/shapes?"), 3u);
    EXPECT_TRUE(std::is_sorted(shapes.begin(), shapes.end(),
                               [](const SInstanceShapeInfoLib& a, const SInstanceShapeInfoLib& b) {
                                   return a.name < b.name;
                               }));
}

}  // namespace
