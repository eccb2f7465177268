// OCI config files with several profiles and a key protected by a pass phrase.
#include "CliFixture.h"
#include "common/ApiKeys.h"

namespace ocwtest {
namespace {

const char kPassPhrase[] = "correct horse battery staple";

class CliProfiles : public CliTest {
protected:
    static void SetUpTestSuite() {
        lockedState_ = std::make_unique<TempDir>();
        ocwemu::EmulatorOptions options = OwnEmulatorOptions(*lockedState_);
        options.passPhrase = kPassPhrase;
        locked_ = std::make_unique<ocwemu::Emulator>(options);
        if (!locked_->start()) ADD_FAILURE() << locked_->lastError();
    }
    static void TearDownTestSuite() {
        locked_.reset();
        lockedState_.reset();
    }

    // [DEFAULT] holds a key the cloud does not know; [locked] the emulator's
    // encrypted key and its pass phrase; [nopass] the same key without it.
    std::string WriteOciConfig() {
        const ocwemu::EmulatorInfo& i = locked_->info();
        ocwemu::PKeyPtr other = ocwemu::GenerateRsaKey();
        std::string error;
        EXPECT_TRUE(ocwemu::WritePrivateKeyPem(dir_.path() + "/stranger.pem", other.get(), "", error)) << error;
        return dir_.write("config",
                          "# two identities for the same tenancy\n"
                          "[DEFAULT]\n"
                          "user=" + i.user + "\nfingerprint=" + i.fingerprint + "\nkey_file=stranger.pem\n"
                          "tenancy=" + i.tenancy + "\nregion=" + i.region + "\n\n"
                          "[locked]\n"
                          "key_file = " + i.keyFile + "\n"
                          "pass_phrase = " + kPassPhrase + "\n\n"
                          "[nopass]\n"
                          "key_file=" + i.keyFile + "\n");
    }

    CliResult Run(const std::string& config, std::vector<std::string> args) {
        std::vector<std::string> all{"--config-file", config, "--ini", locked_->info().ini};
        all.insert(all.end(), args.begin(), args.end());
        return OcwRaw(all);
    }

    static std::unique_ptr<ocwemu::Emulator> locked_;
    static std::unique_ptr<TempDir> lockedState_;
};

std::unique_ptr<ocwemu::Emulator> CliProfiles::locked_;
std::unique_ptr<TempDir> CliProfiles::lockedState_;

TEST_F(CliProfiles, ProfileInheritsDefaultAndUnlocksItsKeyWithThePassPhrase) {
    const std::string config = WriteOciConfig();
    const CliResult r = Run(config, {"--profile", "locked", "--json", "compartments"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_FALSE(IdOf(Json(r), "name", "ocw-demo").empty()) << r.out;
}

TEST_F(CliProfiles, DefaultProfileWithAStrangersKeyIsRefused) {
    const CliResult r = Run(WriteOciConfig(), {"compartments"});
    EXPECT_EQ(r.exitCode, 3) << r.err;
    EXPECT_NE(r.err.find("profile [DEFAULT]"), std::string::npos) << r.err;
}

TEST_F(CliProfiles, EncryptedKeyWithoutItsPassPhraseIsRefused) {
    const CliResult r = Run(WriteOciConfig(), {"--profile", "nopass", "compartments"});
    EXPECT_EQ(r.exitCode, 3) << r.out << r.err;
}

TEST_F(CliProfiles, WrongPassPhraseIsRefusedBeforeAnyRequestIsSigned) {
    // A profile whose pass phrase is wrong: the key cannot be opened, no
    // request is signed.
    const ocwemu::EmulatorInfo& i = locked_->info();
    const std::string config = dir_.write("wrong", "[DEFAULT]\nuser=" + i.user + "\nfingerprint=" + i.fingerprint +
                                                       "\nkey_file=" + i.keyFile + "\ntenancy=" + i.tenancy +
                                                       "\nregion=" + i.region + "\npass_phrase=not it\n");
    const CliResult r = Run(config, {"regions"});
    EXPECT_EQ(r.exitCode, 3) << r.err;
    EXPECT_NE(r.err.find("pass"), std::string::npos) << r.err;
}

TEST_F(CliProfiles, UnknownProfileNamesTheProfilesThereAre) {
    const CliResult r = Run(WriteOciConfig(), {"--profile", "prod", "regions"});
    EXPECT_EQ(r.exitCode, 3);
    EXPECT_NE(r.err.find("profiles: DEFAULT, locked, nopass"), std::string::npos) << r.err;
}

TEST_F(CliProfiles, PassPhraseAndKeyNeverAppearInOutputEvenAtFullVerbosity) {
    const std::string config = WriteOciConfig();
    const CliResult ok = Run(config, {"-vvv", "--profile", "locked", "instances", "list"});
    ASSERT_EQ(ok.exitCode, 0) << ok.err;
    const CliResult failed = Run(config, {"-vvv", "--profile", "nopass", "instances", "list"});
    for (const CliResult* r : {&ok, &failed}) {
        EXPECT_EQ(r->out.find(kPassPhrase), std::string::npos);
        EXPECT_EQ(r->err.find(kPassPhrase), std::string::npos);
        EXPECT_EQ(r->err.find("PRIVATE KEY"), std::string::npos);
    }
    // The verbose log did show the requests.
    EXPECT_NE(ok.err.find("/20160918/instances"), std::string::npos);
}

}  // namespace
}  // namespace ocwtest
