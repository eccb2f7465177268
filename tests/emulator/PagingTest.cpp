// List paging: opaque tokens that need URL-encoding, limits, and the service's
// answers to bad paging input, a missing compartment or an unknown one.
#include "EmulatorClient.h"
#include "EmulatorFixture.h"
#include "common/Base64.h"
#include "oci/Paging.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace ocwtest {
namespace {

TEST(PageToken, RoundTripsAndAlwaysCarriesPaddingButNoPlusOrSlash) {
    for (size_t offset : {0u, 1u, 9u, 10u, 99u, 123u, 1000u, 98765u, 1234567u}) {
        const std::string t = ocwemu::EncodePageToken(offset);
        EXPECT_NE(t.find('='), std::string::npos) << t;
        EXPECT_EQ(t.find_first_of("+/"), std::string::npos) << t;
        size_t back = 0;
        ASSERT_TRUE(ocwemu::DecodePageToken(t, back)) << t;
        EXPECT_EQ(back, offset);
    }
}

TEST(PageToken, RejectsForeignAndTruncatedTokens) {
    size_t offset = 0;
    const std::string t = ocwemu::EncodePageToken(42);
    EXPECT_FALSE(ocwemu::DecodePageToken(t.substr(0, t.size() - 2), offset));  // '=' lost by a careless client
    EXPECT_FALSE(ocwemu::DecodePageToken("", offset));
    EXPECT_FALSE(ocwemu::DecodePageToken(ocwemu::Base64Encode("other:5"), offset));
    EXPECT_FALSE(ocwemu::DecodePageToken("!!!!", offset));
}

class PagingTest : public EmulatorTest {
protected:
    void SetUp() override {
        EmulatorTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        client_ = std::make_unique<EmulatorClient>(info());
        demo_ = client_->compartment("ocw-demo");
    }
    std::unique_ptr<EmulatorClient> client_;
    std::string demo_;
};

TEST_F(PagingTest, DefaultPageSizeMakesOrdinaryListsPage) {
    const size_t seeded = client_->listAll("/20160918/volumes?compartmentId=" + demo_).size();
    const std::string ad = ocwemu::JStr(
        client_->get("/20160918/availabilityDomains?compartmentId=" + info().tenancy).array().at(0).as_object(), "name");
    for (size_t i = seeded; i < kEmulatorPageSize + 2; ++i) {
        ASSERT_EQ(client_->post("/20160918/volumes", JObject{{"compartmentId", demo_}, {"availabilityDomain", ad},
                                                             {"sizeInGBs", 50}}).status, 200);
    }
    int pages = 0;
    JArray all = client_->listAll("/20160918/volumes?compartmentId=" + demo_, &pages);
    EXPECT_EQ(all.size(), kEmulatorPageSize + 2);
    EXPECT_EQ(pages, 2);
    std::set<std::string> ids;
    for (const auto& v : all) ids.insert(ocwemu::JStr(v.as_object(), "id"));
    EXPECT_EQ(ids.size(), all.size()) << "no item twice across pages";
}

TEST_F(PagingTest, LimitChoosesThePageSizeAndTheLastPageHasNoToken) {
    Response first = client_->get("/20160918/instances?compartmentId=" + demo_ + "&limit=2");
    ASSERT_EQ(first.status, 200);
    EXPECT_EQ(first.array().size(), 2u);
    const std::string token = first.header("opc-next-page");
    ASSERT_FALSE(token.empty());
    Response second = client_->get("/20160918/instances?compartmentId=" + demo_ + "&limit=2&page=" + UrlEncode(token));
    ASSERT_EQ(second.status, 200);
    EXPECT_EQ(second.header("opc-next-page"), "");
    Response all = client_->get("/20160918/instances?compartmentId=" + demo_ + "&limit=1000");
    EXPECT_EQ(all.header("opc-next-page"), "");
}

TEST_F(PagingTest, BadLimitsAndTokensAre400InvalidParameter) {
    for (const char* bad : {"&limit=0", "&limit=1001", "&limit=abc", "&page=not-a-token", "&page="}) {
        Response r = client_->get("/20160918/instances?compartmentId=" + demo_ + bad);
        EXPECT_EQ(r.status, 400) << bad;
        EXPECT_EQ(ocwemu::JStr(r.object(), "code"), "InvalidParameter") << bad;
    }
}

TEST_F(PagingTest, MissingCompartmentIs400MissingParameter) {
    Response r = client_->get("/20160918/instances");
    EXPECT_EQ(r.status, 400);
    EXPECT_EQ(ocwemu::JStr(r.object(), "code"), "MissingParameter");
}

TEST_F(PagingTest, UnknownCompartmentIs404NotAuthorizedOrNotFoundOnEveryList) {
    const std::string ad =
        ocwemu::JStr(client_->get("/20160918/availabilityDomains?compartmentId=" + client_->info().tenancy)
                         .array()
                         .at(0)
                         .as_object(),
                     "name");
    const std::string ns = "/n/" + client_->info().namespaceName;
    const std::vector<std::string> lists{
        "/20160918/instances?compartmentId=",
        "/20160918/images?compartmentId=",
        "/20160918/shapes?compartmentId=",
        "/20160918/vnicAttachments?compartmentId=",
        "/20160918/volumes?compartmentId=",
        "/20160918/bootVolumes?compartmentId=",
        "/20160918/volumeAttachments?compartmentId=",
        "/20160918/bootVolumeAttachments?availabilityDomain=" + UrlEncode(ad) + "&compartmentId=",
        "/20160918/volumeBackups?compartmentId=",
        "/20160918/bootVolumeBackups?compartmentId=",
        "/20160918/vcns?compartmentId=",
        "/20160918/subnets?compartmentId=",
        "/20160918/dbSystems?compartmentId=",
        "/20160918/dbHomes?compartmentId=",
        "/20160918/databases?compartmentId=",
        "/20160918/backups?compartmentId=",
        "/20160918/dbNodes?compartmentId=",
        "/20160918/compartments?compartmentId=",
        "/20160918/availabilityDomains?compartmentId=",
        ns + "/b?compartmentId=",
    };
    const std::string unknown = "ocid1.compartment.oc1..aaaaaaaanosuchcompartment";
    for (const auto& list : lists) {
        Response known = client_->get(list + demo_);
        EXPECT_EQ(known.status, 200) << list << demo_ << " " << known.body;
        Response r = client_->get(list + unknown);
        EXPECT_EQ(r.status, 404) << list << unknown << " " << r.body;
        EXPECT_EQ(ocwemu::JStr(r.object(), "code"), "NotAuthorizedOrNotFound") << list;
        EXPECT_EQ(r.header("opc-next-page"), "") << list;
    }
    // The tenancy is the root compartment; lists whose compartment is optional
    // still answer without one.
    EXPECT_EQ(client_->get("/20160918/instances?compartmentId=" + client_->info().tenancy).status, 200);
    EXPECT_EQ(client_->get("/20160918/volumes").status, 200);
    EXPECT_EQ(client_->get("/20160918/backups").status, 400) << "databaseId or compartmentId is required";
}

}  // namespace
}  // namespace ocwtest
