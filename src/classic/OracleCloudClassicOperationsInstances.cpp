// Instances: launch through a launch plan (two forms), deploy under an
// orchestration, power, reboot and delete.
#include <ctime>
#include <vector>

#include "classic/ClassicNames.h"
#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicOperationsBodies.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudBaseConnection.h"
#include "transport/RequestBodyMask.h"

namespace OracleCloudSDKWrapper {

using namespace classicnames;
using namespace classicoperations;

namespace {

// The launch plan collection; creations go to the collection with a trailing "/".
std::string LaunchPlanLink() { return std::string(kLaunchPlan) + "/"; }

}  // namespace

bool COracleCloudClassicOperations::LaunchInstance(SVMInfoLib& vm) {
    JsonObject instance;
    if (!prepareInstanceJson(vm, instance)) {
        // The last error keeps prepareInstanceJson's reason.
        OCW_LOG_ERROR(&m_debugLog, "The Request json could not be formed for launching instance");
        return false;
    }
    return launchAndWaitUntilRunning(LaunchPlanBody(instance), vm);
}

bool COracleCloudClassicOperations::launchAndWaitUntilRunning(const JsonObject& plan, SVMInfoLib& vm) {
    std::string response;
    if (!PostObjectToLinkAndGetResult(LaunchPlanLink(), JsonHelper::Serialize(plan), response)) {
        return false;
    }
    std::vector<SVMInfoLib> launched;
    m_parser->ParseList(response, "instances", launched);
    if (launched.empty()) {
        return OCW_FAIL("New Instance info is empty");
    }
    vm = launched.front();
    return WaitForObjectToReachEndState(ObjectLink(kInstance, vm.fullName), vm, "running");
}

bool COracleCloudClassicOperations::DeployVM(SVMInfoLib& vm, const std::string& /*source*/) {
    // The older launch: the instance goes into the connected user's container.
    return launchAndWaitUntilRunning(DeployVMBody(vm, getUser()), vm);
}

bool COracleCloudClassicOperations::DeployVMFromLaunchPlan(const std::string& body, std::string& result) {
    if (body.empty()) {
        return OCW_FAIL("Launch plan request body is empty");
    }
    // The caller's body may hold an administrator password: it is logged masked.
    OCW_LOG_DEBUG(&m_debugLog, "Request body for launch plan is \n%s", MaskSecretsInBody(body).c_str());
    std::string response;
    if (!PostObjectToLinkAndGetResult(LaunchPlanLink(), body, response)) {
        return false;
    }
    JsonValue document;
    const JsonObject* reply = JsonHelper::Parse(response, document) ? document.if_object() : nullptr;
    const JsonArray* instances = reply != nullptr ? JsonHelper::FindArrayValue(*reply, "instances") : nullptr;
    const JsonObject* first = instances != nullptr && !instances->empty() ? instances->front().if_object() : nullptr;
    if (first == nullptr) {
        return OCW_FAIL("New Instance info is empty");
    }
    result = JsonHelper::GetStringValue(*first, "id");
    return true;
}

bool COracleCloudClassicOperations::DeployVMFromOrchestration(SVMInfoLib& vm, SOrchestrationInfoLib& orchestration) {
    JsonObject instance;
    if (!prepareInstanceJson(vm, instance)) {
        // The last error keeps prepareInstanceJson's reason.
        OCW_LOG_ERROR(&m_debugLog, "The Request json could not be formed for launching instance");
        return false;
    }
    const JsonObject body = OrchestrationBody(instance, vm.vmName, static_cast<long>(std::time(nullptr)),
                                              static_cast<long long>(DebugLog::getJobId(&m_debugLog)));
    if (!PostObjectToLinkAndGetResult(std::string(kOrchestration) + "/", JsonHelper::Serialize(body), orchestration)) {
        return false;
    }
    return WaitForObjectToReachEndState(ObjectLink(kOrchestration, orchestration.name), orchestration, "active");
}

bool COracleCloudClassicOperations::PowerOffInstance(const std::string& instance) {
    return changeInstancePowerState(instance, "shutdown");
}

bool COracleCloudClassicOperations::PowerOnInstance(const std::string& instance) {
    return changeInstancePowerState(instance, "running");
}

bool COracleCloudClassicOperations::RebootInstance(const std::string& instance) {
    SRebootInstanceReqInfoLib request;
    if (!PostObjectToLinkAndGetResult(std::string(kRebootRequest) + "/",
                                      JsonHelper::Serialize(RebootBody(instance)), request)) {
        return false;
    }
    return WaitForObjectToReachEndState(ObjectLink(kRebootRequest, request.name), request, "complete");
}

bool COracleCloudClassicOperations::DeleteVM(const std::string& vmName, const std::string& vmId, bool wait,
                                             bool /*unused*/) {
    // The facade passes the instance's full name second; a caller that
    // names the instance only in the first argument is served as well.
    const std::string& name = !vmId.empty() && vmId.front() == '/' ? vmId : vmName;
    const std::string link = ObjectLink(kInstance, name);
    if (!DeleteObjectFromLink(link)) {
        return false;
    }
    return !wait || WaitForLinkTo404(link);
}

}  // namespace OracleCloudSDKWrapper
