// The Cloud Classic facilities of the emulator fixture.
#include "ClassicClient.h"
#include "EmulatorFixture.h"
#include "common/TimeUtil.h"

namespace ocwtest {

using OracleCloudSDKWrapper::COracleCloudWrapper;

std::string EmulatorTest::ClassicUserPath() const {
    return "/Compute-" + info().identityDomain + "/" + info().classicUser;
}

std::unique_ptr<COracleCloudWrapper> EmulatorTest::ConnectClassicFacade(OracleCloudSDKWrapper::EOracleCloudType type) {
    auto facade = std::make_unique<COracleCloudWrapper>(type);
    if (!facade->Connect(info().classicEndpoint, info().identityDomain + "/" + info().classicUser,
                         info().classicPassword, OracleCloudSDKWrapper::ORACLE_SERVICE_COMPUTE)) {
        ADD_FAILURE() << "Classic Connect failed: " << facade->GetLastError();
        return nullptr;
    }
    return facade;
}

std::unique_ptr<COracleCloudWrapper> EmulatorTest::ConnectPaaSFacade(OracleCloudSDKWrapper::EOracleServiceType service) {
    auto facade = std::make_unique<COracleCloudWrapper>(OracleCloudSDKWrapper::ORACLE_CLOUD_CLASSIC_PAAS);
    if (!facade->Connect(info().paasEndpoint, info().identityDomain + "/" + info().classicUser,
                         info().classicPassword, service)) {
        ADD_FAILURE() << "PaaS Connect failed: " << facade->GetLastError();
        return nullptr;
    }
    return facade;
}

void EmulatorTest::ExpireClassicSessions() { emu().expireClassicSessions(); }

std::string EmulatorTest::PaaSPost(const std::string& path, const std::string& body) {
    ClassicClient client(info());
    const Response answer = client.paas("POST", path, body);
    const std::string location = answer.header("Location");
    if (location.empty()) ADD_FAILURE() << "POST " << path << " answered " << answer.status << ": " << answer.body;
    return location;
}

std::string EmulatorTest::ClassicResourceId(const std::string& kind, const std::string& namePrefix) {
    std::lock_guard<std::mutex> lock(emu().store().mutex());
    for (ocwemu::Resource* r : emu().store().list("classic:" + kind, "", ocwemu::NowMs())) {
        if (ocwemu::JStr(r->doc, "name").rfind(namePrefix, 0) == 0) return r->id;
    }
    return {};
}

}  // namespace ocwtest
