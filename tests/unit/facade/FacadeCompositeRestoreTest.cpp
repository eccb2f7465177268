// Restore-side composites: the launch checks per cloud type, image import
// polling, instance existence, the tenancy's domains, object storage under the
// tenant's namespace, and public keys of key pairs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CompositeTestBackends.h"

using namespace facadetest;
using ::testing::ElementsAre;

namespace {

SVMInfoLib LaunchableVM() {
    SVMInfoLib vm;
    vm.vmName = "web01";
    vm.compartmentId = "user1";
    vm.shape = "oc3";
    SDiskInfoLib boot;
    boot.name = "/C/user1/boot";
    boot.index = 1;
    boot.bootable = true;
    SDiskInfoLib data;
    data.name = "/C/user1/data";
    data.index = 10;
    vm.disks = {boot, data};
    vm.sshKeys = {"key1"};
    vm.securityGroups.resize(1);
    vm.vnics.resize(1);
    return vm;
}

}  // namespace

// ---- ValidateInstanceInfoForRestore ------------------------------------------

TEST(FacadeValidateRestore, ClassicAcceptsSlotsOneToTenAndNeedsABootVolume) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    SVMInfoLib vm = LaunchableVM();
    EXPECT_TRUE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(log.lines.empty()) << "a complete record needs no remark";

    vm.disks[1].index = 11;
    EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(LoggedError(log, "Cannot launch Instance [web01], invalid index [11] for volume [/C/user1/data]"));
    vm.disks[1].index = 0;
    EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(LoggedError(log, "Cannot launch Instance [web01], invalid index [0] for volume [/C/user1/data]"));

    vm = LaunchableVM();
    vm.disks[0].bootable = false;
    EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(LoggedError(log, "Cannot launch Instance [web01], No bootable volume found"));

    vm.disks.clear();
    EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(LoggedError(log, "Cannot launch Instance [web01] without any volumes"));
    EXPECT_EQ(f.queries->calls.size() + f.operations->calls.size(), 0u);
    EXPECT_EQ(f.connection->requests, 0);
}

TEST(FacadeValidateRestore, RequiredFieldsAreCheckedInOrderForEveryCloudType) {
    for (EOracleCloudType type : {ORACLE_CLOUD_CLASSIC, ORACLE_CLOUD_INFRASTRUCTURE}) {
        LogCapture log;
        CompositeFacade f(type);
        SVMInfoLib vm;
        EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
        vm.vmName = "web01";
        EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
        vm.compartmentId = "ocid1.compartment.oc1..c";
        EXPECT_FALSE(f.facade.ValidateInstanceInfoForRestore(vm));
        EXPECT_THAT(log.errors, ElementsAre("Cannot launch Instance as instance name is absent",
                                            "Cannot launch Instance [web01] as user account is absent",
                                            "Cannot launch Instance [web01] as instance shape is absent"))
            << type;
    }
}

TEST(FacadeValidateRestore, OCINeedsNoDisksAndMissingListsOnlyEarnDebugRemarks) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_INFRASTRUCTURE);
    SVMInfoLib vm;
    vm.vmName = "web01";
    vm.compartmentId = "ocid1.compartment.oc1..c";
    vm.shape = "VM.Standard.E4.Flex";
    EXPECT_TRUE(f.facade.ValidateInstanceInfoForRestore(vm));
    EXPECT_TRUE(log.errors.empty());
    EXPECT_TRUE(Logged(log, "No network lists will be added for instance [web01] "));
    EXPECT_FALSE(Logged(log, "No SSH Keys will be added for instance [web01] ")) << "a Classic-only remark";

    CompositeFacade c(ORACLE_CLOUD_CLASSIC);
    SVMInfoLib classic = LaunchableVM();
    classic.sshKeys.clear();
    classic.securityGroups.clear();
    classic.vnics.clear();
    EXPECT_TRUE(c.facade.ValidateInstanceInfoForRestore(classic));
    EXPECT_TRUE(Logged(log, "No SSH Keys will be added for instance [web01] "));
    EXPECT_TRUE(Logged(log, "No security lists will be added for instance [web01] "));
    EXPECT_TRUE(log.errors.empty());
}

TEST(FacadeValidateRestore, CloudTypesOtherThanOneSkipTheSlotRules) {
    CompositeFacade f(ORACLE_CLOUD_UNSPECIFIED);
    SVMInfoLib vm = LaunchableVM();
    vm.disks[0].index = 42;
    EXPECT_TRUE(f.facade.ValidateInstanceInfoForRestore(vm));
}

// ---- IsImageImportOperationCompleted ----------------------------------------

TEST(FacadeImageImport, ReportsImportingAndAvailableWithoutWaiting) {
    CompositeFacade f;
    f.queries->imageToReturn.status = "IMPORTING";
    bool completed = true;
    EXPECT_TRUE(f.facade.IsImageImportOperationCompleted("ocid1.image.oc1..m", completed, "us-ashburn-1"));
    EXPECT_FALSE(completed);
    f.queries->imageToReturn.status = "AVAILABLE";
    EXPECT_TRUE(f.facade.IsImageImportOperationCompleted("ocid1.image.oc1..m", completed, "us-ashburn-1"));
    EXPECT_TRUE(completed);
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetTemplateInfo("ocid1.image.oc1..m","us-ashburn-1"))",
                                              R"(GetTemplateInfo("ocid1.image.oc1..m","us-ashburn-1"))"));
}

TEST(FacadeImageImport, AnyOtherStateOrAFailedReadIsAnError) {
    CompositeFacade f;
    f.queries->imageToReturn.status = "DISABLED";
    bool completed = false;
    EXPECT_FALSE(f.facade.IsImageImportOperationCompleted("ocid1.image.oc1..m", completed, ""));
    EXPECT_EQ(f.facade.GetLastError(),
              "Image [ocid1.image.oc1..m] went into erroneous state [DISABLED] while importing.");

    f.queries->failing = {"GetTemplateInfo"};
    EXPECT_FALSE(f.facade.IsImageImportOperationCompleted("ocid1.image.oc1..m", completed, ""));
    EXPECT_EQ(f.facade.GetLastError(), "GetTemplateInfo failed in the backend");
}

TEST(FacadeImageImport, ClassicFacadeAnswersNotImplementedWithoutARequest) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    bool completed = false;
    EXPECT_FALSE(f.facade.IsImageImportOperationCompleted("image", completed, ""));
    EXPECT_TRUE(LoggedError(log, "NOT IMPLEMENTED"));
    EXPECT_TRUE(f.queries->calls.empty());
}

// ---- DoesVMExist / availability domains ------------------------------------

TEST(FacadeDoesVMExist, NotFoundIsAnAnswerAndOtherFailuresAreErrors) {
    LogCapture log;
    CompositeFacade f;
    bool exists = false;
    f.queries->vmToReturn.state = "RUNNING";
    EXPECT_TRUE(f.facade.DoesVMExist("", "ocid1.instance.oc1..i", exists));
    EXPECT_TRUE(exists);
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetVMInfo("","ocid1.instance.oc1..i",0,""))"));

    f.queries->vmToReturn.state = "TERMINATED";
    EXPECT_TRUE(f.facade.DoesVMExist("", "ocid1.instance.oc1..i", exists));
    EXPECT_FALSE(exists);

    f.queries->failing = {"GetVMInfo"};
    f.connection->httpCode = 404;
    exists = true;
    EXPECT_TRUE(f.facade.DoesVMExist("", "ocid1.instance.oc1..i", exists));
    EXPECT_FALSE(exists);

    f.connection->httpCode = 200;  // OCI: a read that answered but could not be used
    EXPECT_FALSE(f.facade.DoesVMExist("", "ocid1.instance.oc1..i", exists));
    f.connection->httpCode = 503;
    EXPECT_FALSE(f.facade.DoesVMExist("", "ocid1.instance.oc1..i", exists));
    EXPECT_EQ(f.facade.GetLastError(), "GetVMInfo failed in the backend");
    EXPECT_TRUE(LoggedError(log, "Fetching the instance details for instance [ocid1.instance.oc1..i] has failed"));
}

TEST(FacadeDoesVMExist, ClassicWalkThatFoundNoSuchNameMeansAbsent) {
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->failing = {"GetVMInfo"};
    f.connection->httpCode = 200;
    bool exists = true;
    EXPECT_TRUE(f.facade.DoesVMExist("web01", "user1", exists));
    EXPECT_FALSE(exists);
    f.connection->httpCode = 0;  // no answer at all
    EXPECT_FALSE(f.facade.DoesVMExist("web01", "user1", exists));
}

TEST(FacadeAvailabilityDomains, ListedOnTheTenancysRootCompartment) {
    CompositeFacade f;
    std::vector<SAvailabilityDomainInfoLib> domains;
    EXPECT_TRUE(f.facade.GetAvailabilityDomainListForTenancy(domains, "eu-frankfurt-1"));
    EXPECT_THAT(f.queries->calls,
                ElementsAre(R"(GetAvailabilityDomainList(0,"ocid1.tenancy.oc1..t","eu-frankfurt-1"))"));
    f.queries->failing = {"GetAvailabilityDomainList"};
    EXPECT_FALSE(f.facade.GetAvailabilityDomainListForTenancy(domains, ""));
    EXPECT_EQ(f.facade.GetLastError(), "GetAvailabilityDomainList failed in the backend");
}

// ---- Object storage and keys --------------------------------------------------

TEST(FacadeObjectStorage, TheTenantsNamespaceGoesInFrontOfTheCallersArguments) {
    CompositeFacade f;
    SImageInfoLib image;
    image.displayName = "restored-image";
    EXPECT_TRUE(f.facade.UploadToObjectStorage("bucket1", "disk.vmdk", "bytes"));
    EXPECT_TRUE(f.facade.CreateImage("bucket1", "disk.vmdk", image));
    EXPECT_TRUE(f.facade.DeleteStorageObject("bucket1", "disk.vmdk"));
    EXPECT_EQ(image.id, "ocid1.image.oc1..imported");
    EXPECT_THAT(f.operations->calls,
                ElementsAre(R"(UploadToObjectStorage("tenantns","bucket1","disk.vmdk","bytes"))",
                            R"(CreateImage("tenantns","bucket1","disk.vmdk","restored-image"))",
                            R"(DeleteStorageObject("tenantns","bucket1","disk.vmdk"))"));
    EXPECT_EQ(f.queries->calls.size(), 3u) << "the namespace is asked for on every call";
}

TEST(FacadeObjectStorage, WithoutANamespaceNothingIsSentAndTheLastErrorStays) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.queries->failing = {"GetNamespaceForTenant"};
    f.facade.setLastError("older text");
    SImageInfoLib image;
    EXPECT_FALSE(f.facade.UploadToObjectStorage("b", "o", "c"));
    EXPECT_FALSE(f.facade.CreateImage("b", "o", image));
    EXPECT_FALSE(f.facade.DeleteStorageObject("b", "o"));
    EXPECT_EQ(log.errors, std::vector<std::string>(3, "Could not obtain storage namespace for the tenant"));
    EXPECT_TRUE(f.operations->calls.empty());
    EXPECT_EQ(f.facade.GetLastError(), "older text");
}

TEST(FacadeObjectStorage, ClassicBackendHasNoNamespaceAndFailsTheSameWay) {
    LogCapture log;
    TestableWrapper facade(ORACLE_CLOUD_CLASSIC);  // the real Classic backend
    EXPECT_FALSE(facade.UploadToObjectStorage("b", "o", "c"));
    EXPECT_TRUE(LoggedError(log, "Could not obtain storage namespace for the tenant"));
}

TEST(FacadeObjectStorage, OperationFailureHandsTheBackendsTextOver) {
    CompositeFacade f;
    f.operations->failing = {"UploadToObjectStorage", "CreateImage", "DeleteStorageObject"};
    SImageInfoLib image;
    EXPECT_FALSE(f.facade.UploadToObjectStorage("b", "o", "c"));
    EXPECT_EQ(f.facade.GetLastError(), "UploadToObjectStorage failed in the backend");
    EXPECT_FALSE(f.facade.CreateImage("b", "o", image));
    EXPECT_EQ(f.facade.GetLastError(), "CreateImage failed in the backend");
    EXPECT_FALSE(f.facade.DeleteStorageObject("b", "o"));
    EXPECT_EQ(f.facade.GetLastError(), "DeleteStorageObject failed in the backend");
}

TEST(FacadePublicKey, KeyTextOfANamedKeyPair) {
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    SKeyPairInfoLib key;
    key.name = "ops";
    key.keyText = "ssh-rsa AAAAB3Nza ops@host";
    f.queries->keys["/C/u/ops"] = key;
    std::string publicKey;
    EXPECT_TRUE(f.facade.GetPublicKeyForKeyName("/C/u/ops", publicKey));
    EXPECT_EQ(publicKey, "ssh-rsa AAAAB3Nza ops@host");
}

TEST(FacadePublicKey, EmptyNameMissingKeyAndKeyWithoutTextFailAtDebugLevelOnly) {
    LogCapture log;
    CompositeFacade f(ORACLE_CLOUD_CLASSIC);
    f.facade.setLastError("older text");
    SKeyPairInfoLib textless;
    textless.name = "blank";
    f.queries->keys["blank"] = textless;
    std::string publicKey = "untouched";
    EXPECT_FALSE(f.facade.GetPublicKeyForKeyName("", publicKey));
    EXPECT_TRUE(Logged(log, "Cannot fetch public key as an empty key name was provided"));
    EXPECT_FALSE(f.facade.GetPublicKeyForKeyName("missing", publicKey));
    EXPECT_TRUE(Logged(log, "Failed to fetch public key for key [missing]"));
    EXPECT_FALSE(f.facade.GetPublicKeyForKeyName("blank", publicKey));
    EXPECT_TRUE(Logged(log, "Failed to fetch public key for key [blank]"));
    EXPECT_TRUE(log.errors.empty());
    EXPECT_EQ(publicKey, "untouched");
    EXPECT_EQ(f.facade.GetLastError(), "older text");
    EXPECT_THAT(f.queries->calls, ElementsAre(R"(GetKeyInfoForKeyName("missing"))",
                                              R"(GetKeyInfoForKeyName("blank"))"));
}
