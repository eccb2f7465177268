// Instance operations: launch (from an image or a boot volume), deploy with data
// disks, power actions, terminate and adding a VNIC.
#include "oci/OracleCloudInfrastructureOperationsInternal.h"

namespace OracleCloudSDKWrapper {

using ocioperations::CorePath;

bool COracleCloudInfrastructureOperations::LaunchInstance(SVMInfoLib& vm) {
    JsonObject json;
    prepareInstanceJson(vm, json);
    SVMInfoLib launched;
    if (!launchAndWaitUntilRunning(JsonHelper::Serialize(json), launched)) return false;
    vm.guid = launched.guid;
    ocilifecycle::SetState(vm, launched.state);
    return true;
}

bool COracleCloudInfrastructureOperations::DeployVMFromBootDisk(SVMInfoLib& vm, const std::string& bootVolumeId) {
    SVMInfoLib launched;
    if (!launchAndWaitUntilRunning(JsonHelper::Serialize(ocioperations::LaunchFromBootVolumeBody(vm, bootVolumeId)),
                                   launched)) {
        return false;
    }
    vm = launched;
    return true;
}

bool COracleCloudInfrastructureOperations::launchAndWaitUntilRunning(const std::string& body, SVMInfoLib& launched) {
    if (body.empty()) {
        return OCI_OPS_FAIL("The Request json could not be formed for launching instance");
    }
    std::string response;
    // The trailing "/" on the collection is what the agent has always sent.
    if (!postJson(OCI_SERVICE_CORE, CorePath("/instances") + "/", body, response)) return false;

    if (!m_parser->ParseObject(response, launched)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    OCW_LOG_DEBUG(&m_debugLog, "Successfully submitted request to create VM:[%s][%s]", launched.vmName.c_str(),
                  launched.guid.c_str());
    return WaitForObjectToReachEndState(CorePath("/instances", launched.guid), launched, "RUNNING", "TERMINATED");
}

bool COracleCloudInfrastructureOperations::DeployVM(SVMInfoLib& vm, const std::string& imageId) {
    vm.imageId = imageId;
    if (!LaunchInstance(vm)) return false;

    for (SDiskInfoLib& disk : vm.disks) {
        if (disk.bootable) continue;
        disk.compartmentId = vm.compartmentId;
        disk.availabilityDomain = vm.availabilityDomain;
        if (!CreateVolume(disk, std::string())) return false;
        // A disk that cannot be attached stays created; the caller sees it
        // missing from the instance and the attachment has logged why.
        bool limitReached = false;
        SStorageAttachmentInfoLib attachment;
        CreateVolumeAttachmentToInstance(disk, vm, limitReached, attachment);
    }
    return true;
}

bool COracleCloudInfrastructureOperations::changeInstancePowerState(const std::string& instanceId,
                                                                    const std::string& action,
                                                                    const std::string& endState) {
    const std::string path = CorePath("/instances", instanceId);
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, path + "?action=" + action, std::string(), response)) return false;

    SVMInfoLib instance;
    if (!m_parser->ParseObject(response, instance)) {
        return OCI_OPS_FAIL("Failed to parse response JSON");
    }
    return WaitForObjectToReachEndState(path, instance, endState, std::string());
}

bool COracleCloudInfrastructureOperations::PowerOffInstance(const std::string& instanceId) {
    return changeInstancePowerState(instanceId, "STOP", "STOPPED");
}

bool COracleCloudInfrastructureOperations::PowerOnInstance(const std::string& instanceId) {
    return changeInstancePowerState(instanceId, "START", "RUNNING");
}

bool COracleCloudInfrastructureOperations::RebootInstance(const std::string& instanceId) {
    // Lower case as the agent has always sent it; the service reads actions
    // without regard to case.
    return changeInstancePowerState(instanceId, "reset", "RUNNING");
}

bool COracleCloudInfrastructureOperations::DeleteVM(const std::string& /*vmName*/, const std::string& vmId,
                                                    bool preserveBootVolume, bool wait) {
    const std::string path = CorePath("/instances", vmId);
    const std::string deletePath = preserveBootVolume ? path + "?preserveBootVolume=true" : path;
    m_connection->setService(OCI_SERVICE_CORE);
    return deleteAndWaitUntilGone<SVMInfoLib>(deletePath, path, "TERMINATED", wait);
}

bool COracleCloudInfrastructureOperations::AttachVnic(const SVMInfoLib& vm, const SVNicInfoLib& vnic) {
    const std::string body = JsonHelper::Serialize(ocioperations::AttachVnicBody(vm, vnic));
    if (body.empty()) {
        // The volume wording is the one the agent's logs have always shown here.
        return OCI_OPS_FAIL("The Request json could not be formed for creating volume instance");
    }
    std::string response;
    if (!postJson(OCI_SERVICE_CORE, CorePath("/vnicAttachments"), body, response)) return false;

    SVnicAttachmentInfoLib attachment;
    if (!m_parser->ParseObject(response, attachment)) {
        return OCI_OPS_FAIL("Error while parsing json response");
    }
    return WaitForObjectToReachEndState(CorePath("/vnicAttachments", attachment.id), attachment, "ATTACHED",
                                        std::string());
}

}  // namespace OracleCloudSDKWrapper
