// Configuration capture and orchestration restore: the documents an agent
// saves beside an instance's data at backup time, reading them back into a
// VM record, and recreating a Classic instance under an orchestration.
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oraclecloud/OracleCloudWrapper.h"
#include "parser/OracleCloudParser.h"
#include "platform/DebugLog.h"
#include "platform/StringUtil.h"

namespace OracleCloudSDKWrapper {

bool COracleCloudWrapper::GetInstanceConfigurations(const std::string& instanceName,
                                                    std::map<std::string, std::string>& configs) {
    const bool classic = m_cloudType != ORACLE_CLOUD_INFRASTRUCTURE;
    // Classic instance names are paths; a bare name cannot be one.
    if (instanceName.empty() || (classic && instanceName.find('/') == std::string::npos)) {
        OCW_LOG_ERROR(this, "Instance details are not present to fetch configs");
        return false;
    }
    if (m_queries == nullptr) {
        return false;
    }
    std::string json;
    if (!m_queries->GetInstanceConfigJson(instanceName, json)) {
        OCW_LOG_ERROR(this, "Fetching custom VM Config file for instance [%s] has failed", instanceName.c_str());
        return false;
    }
    configs[".json"] = json;
    if (!classic) {
        return true;
    }
    // The three orchestrations are best effort: an instance launched without
    // them is still backed up, with empty documents.
    const std::string base = instanceName.substr(0, instanceName.rfind('/'));
    std::string master;
    std::string storage;
    std::string instance;
    if (!m_queries->GetOrchestrationForVM(base, "master", master)) {
        OCW_LOG_ERROR(this, "Fetching the master orchestration for instance [%s] has failed", instanceName.c_str());
    }
    if (!m_queries->GetOrchestrationForVM(base, "storage", storage)) {
        OCW_LOG_ERROR(this, "Fetching the storage orchestration for instance [%s] has failed", instanceName.c_str());
    }
    if (!m_queries->GetOrchestrationForVM(base, "instance", instance)) {
        OCW_LOG_ERROR(this, "Fetching the instance orchestration for instance [%s] has failed", instanceName.c_str());
    }
    configs["_master.json"] = master;
    configs["_instance.json"] = instance;
    configs["_storage.json"] = storage;
    return true;
}

bool COracleCloudWrapper::ReadInstanceConfig(const std::string& json, SVMInfoLib& vm) {
    return m_parser != nullptr && m_parser->ParseObject(json, vm);
}

bool COracleCloudWrapper::ReadInstanceOrchestration(const std::string& json, SVMInfoLib& vm) {
    if (m_parser == nullptr) {
        return false;
    }
    // Deliberate: the orchestrations saved by GetInstanceConfigurations come
    // from "platform/v1/orchestration", whose documents hold "objects" with
    // templates (and the instances they started) instead of "oplans". Such a
    // document is read like GetOrchestrationInfo reads one.
    SOrchestrationInfoLib orchestration;
    if (json.find("\"oplans\"") == std::string::npos && m_parser->ParseObject(json, orchestration) &&
        !orchestration.vm.fullName.empty()) {
        vm = orchestration.vm;
        return true;
    }
    // The older form holds launch plans under "oplans"; their instances are
    // requests, named without a uuid.
    std::vector<SVMInfoLib> instances;
    const bool parsed = m_parser->ParseListAlongPath(json, {"oplans", "objects", "instances"}, instances);
    if (!instances.empty()) {
        vm = instances.front();
        COracleCloudParser::ReadAsRequestedInstance(vm);
    }
    return parsed;
}

bool COracleCloudWrapper::DeployVMFromOrchestration(SVMInfoLib& vm) {
    if (!ValidateInstanceInfoForRestore(vm) || m_queries == nullptr || m_operations == nullptr) {
        return false;
    }
    SOrchestrationInfoLib orchestration;
    if (!m_operations->DeployVMFromOrchestration(vm, orchestration)) {
        m_lastError = m_operations->GetLastError();
        OCW_LOG_ERROR(this, "Failed to deploy Instance [%s] from orchestration. REASON : [%s]", vm.vmName.c_str(),
                      m_lastError.c_str());
        return false;
    }
    if (!m_queries->GetOrchestrationInfo(orchestration.name, orchestration)) {
        m_lastError = m_queries->GetLastError();
        OCW_LOG_ERROR(this, "Orchestration [%s] is unavailable", orchestration.name.c_str());
        return false;
    }
    if (orchestration.vm.fullName.empty()) {
        m_lastError = StringUtil::Format("Instance [%s] could not be started under orchestration [%s]",
                                         vm.vmName.c_str(), orchestration.name.c_str());
        OCW_LOG_DEBUG(this, "%s", m_lastError.c_str());
        return false;
    }
    vm = orchestration.vm;
    OCW_LOG_DEBUG(this, "Started instance [%s][%s] under orchestration [%s]", vm.vmName.c_str(), vm.guid.c_str(),
                  orchestration.name.c_str());
    return true;
}

}  // namespace OracleCloudSDKWrapper
