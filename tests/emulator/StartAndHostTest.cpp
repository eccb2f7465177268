// What a new user meets first: answers readable by every client whatever
// encodings it accepts, a busy port refused at start, and hosts of regions
// the tenancy cannot reach answered as the cloud answers them.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"

#include <gtest/gtest.h>

namespace ocwtest {
namespace {

TEST(EmulatorAnswers, AreNotCompressedForClientsThatAcceptBrotliOrGzip) {
    const ocwemu::EmulatorInfo& i = SharedEmulator()->info();
    httplib::SSLClient http("127.0.0.1", i.port);
    http.set_ca_cert_path(i.caFile.c_str());
    http.set_decompress(false);
    for (const char* accepted : {"br", "gzip, deflate, br", "gzip"}) {
        httplib::Result r = http.Get("/_emulator/info", {{"Accept-Encoding", accepted}});
        ASSERT_TRUE(r) << accepted;
        EXPECT_FALSE(r->has_header("Content-Encoding")) << accepted;
        EXPECT_EQ(r->body.front(), '{') << accepted;
    }
}

TEST(EmulatorStart, FailsWithAddressInUseOnTheBusyPortOfAnotherEmulator) {
    ocwemu::EmulatorOptions o;
    o.seed = "empty";
    o.port = SharedEmulator()->info().port;
    ocwemu::Emulator second(o);
    EXPECT_FALSE(second.start());
    EXPECT_NE(second.lastError().find("address in use"), std::string::npos) << second.lastError();
}

TEST(EmulatorRegions, UnsubscribedRegionsRefuseTheTenancyAndUnknownOnesCannotBeReached) {
    EmulatorClient c(SharedEmulator()->info());
    const std::string target = "/20160918/tenancies/" + c.info().tenancy;
    struct Case {
        std::string host;
        int status;  // 0: no answer at all
    } cases[] = {{"identity.us-ashburn-1.oraclecloud.com", 200},
                 {"identity.us-phoenix-1.oci.oraclecloud.com", 200},
                 {"identity.eu-frankfurt-1.oraclecloud.com", 401},
                 {"identity.us-ashbur-1.oraclecloud.com", 0}};
    for (const Case& k : cases) {
        SignOptions o;
        o.host = k.host;
        Response r = c.get(target, o);
        EXPECT_EQ(r.status, k.status) << k.host;
        if (k.status == 401) EXPECT_EQ(ocwemu::JStr(r.object(), "code"), "NotAuthenticated");
        if (k.status == 0) c = EmulatorClient(c.info());  // a fresh connection after the dropped one
    }
}

}  // namespace
}  // namespace ocwtest
