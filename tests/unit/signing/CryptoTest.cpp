#include <gtest/gtest.h>

#include <string>

#include "TestRsaKeys.h"
#include "platform/ByteBucket.h"
#include "platform/PlatformException.h"
#include "platform/RsaSigner.h"
#include "platform/SafeString.h"
#include "platform/Sha256Hasher.h"

using namespace OracleCloudSDKWrapper;
using ocw_test::KeyFormat;

namespace {

EVP_PKEY* sharedRsaKey()
{
    static ocw_test::PkeyPtr key = ocw_test::generateRsaKey();
    return key.get();
}

std::string exceptionText(const std::function<void()>& fn)
{
    try {
        fn();
    } catch (const PlatformException& e) {
        return e.what();
    }
    return "<no exception>";
}

}  // namespace

TEST(Sha256Hasher, MatchesKnownVectorsAndRestartsAfterFinish)
{
    EXPECT_EQ(Sha256Hasher::digest("abc").toHex(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Sha256Hasher::digest("").toHex(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");

    Sha256Hasher hasher;
    hasher.update("a");
    hasher.update(std::string("bc"));
    EXPECT_EQ(hasher.finish(), Sha256Hasher::digest("abc"));
    // A second text digested by the same object must not carry the first one.
    hasher.update("abc");
    EXPECT_EQ(hasher.finish(), Sha256Hasher::digest("abc"));
}

TEST(RsaSigner, SignatureVerifiesForEveryPemFormatAndPaddingMode)
{
    const std::string message = "date: Tue, 07 Mar 2023 09:05:01 GMT\n(request-target): get /20160918/instances";
    ByteBucket digest = Sha256Hasher::digest(message);
    const SafeString passphrase("correct horse");
    for (KeyFormat format : {KeyFormat::Pkcs1, KeyFormat::Pkcs1Encrypted, KeyFormat::Pkcs8, KeyFormat::Pkcs8Encrypted}) {
        SCOPED_TRACE(static_cast<int>(format));
        SafeString pem(ocw_test::toPem(sharedRsaKey(), format, passphrase.str()));
        RsaSigner withPadding;
        withPadding.setPriKeyPEM(pem, passphrase);
        RsaSigner withoutPadding;
        withoutPadding.enablePadding(false);
        withoutPadding.setPriKeyPEM(pem, passphrase);

        EXPECT_EQ(withPadding.getSignatureSize(), 256u);
        ByteBucket a = withPadding.sign(digest);
        ByteBucket b = withoutPadding.sign(digest);
        ASSERT_EQ(a.size(), 256u);
        // PKCS#1 v1.5 is deterministic: both ways of building the DigestInfo must agree byte for byte.
        EXPECT_EQ(a, b);
        EXPECT_TRUE(ocw_test::verifyRsaSha256(sharedRsaKey(), message, b.toString()));
        EXPECT_FALSE(ocw_test::verifyRsaSha256(sharedRsaKey(), message + "x", b.toString()));
    }
}

TEST(RsaSigner, WrongOrMissingPassPhraseIsAnImportFailure)
{
    for (KeyFormat format : {KeyFormat::Pkcs1Encrypted, KeyFormat::Pkcs8Encrypted}) {
        SafeString pem(ocw_test::toPem(sharedRsaKey(), format, "right"));
        RsaSigner signer;
        std::string wrong = exceptionText([&] { signer.setPriKeyPEM(pem, SafeString("wrong")); });
        EXPECT_NE(wrong.find("Failed to import private key."), std::string::npos) << wrong;
        // An empty pass phrase must fail the same way, not prompt on a terminal.
        std::string empty = exceptionText([&] { signer.setPriKeyPEM(pem, SafeString()); });
        EXPECT_NE(empty.find("Failed to import private key."), std::string::npos) << empty;
        EXPECT_FALSE(signer.hasKey());
        EXPECT_EQ(wrong.find("right"), std::string::npos);
    }
}

TEST(RsaSigner, OtherKeyTypesAndTextAreRefusedWithoutBlamingThePassPhrase)
{
    ocw_test::PkeyPtr ec = ocw_test::generateEcKey();
    RsaSigner signer;
    std::string ecText = exceptionText([&] { signer.setPriKeyPEM(SafeString(ocw_test::toPem(ec.get(), KeyFormat::Pkcs8)), SafeString()); });
    EXPECT_EQ(ecText, "Private key is not an RSA key.");

    std::string garbage = exceptionText([&] { signer.setPriKeyPEM(SafeString("not a key"), SafeString("x")); });
    EXPECT_NE(garbage.find("not a valid PEM private key"), std::string::npos) << garbage;
    EXPECT_EQ(garbage.find("Failed to import private key."), std::string::npos);

    std::string empty = exceptionText([&] { signer.setPriKeyPEM(SafeString(), SafeString()); });
    EXPECT_EQ(empty.find("Failed to import private key."), std::string::npos) << empty;
}

TEST(RsaSigner, DamagedKeyThatStillDecodesIsRefusedAtLoad)
{
    const std::string passphrase = "correct horse";
    for (KeyFormat format : {KeyFormat::Pkcs1, KeyFormat::Pkcs1Encrypted, KeyFormat::Pkcs8, KeyFormat::Pkcs8Encrypted}) {
        SCOPED_TRACE(static_cast<int>(format));
        const std::string pem = ocw_test::damagedPem(sharedRsaKey(), format, passphrase);
        // OpenSSL alone decodes it, and its own consistency check refuses it: the
        // damage is in the numbers, which only a key check can see.
        ocw_test::PkeyPtr decoded = ocw_test::decodePem(pem, passphrase);
        ASSERT_TRUE(decoded) << "the damaged key no longer decodes; the test would not reach the check";
        std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> ctx(
            EVP_PKEY_CTX_new_from_pkey(nullptr, decoded.get(), nullptr), &EVP_PKEY_CTX_free);
        EXPECT_NE(EVP_PKEY_pairwise_check(ctx.get()), 1);

        RsaSigner signer;
        std::string text = exceptionText([&] { signer.setPriKeyPEM(SafeString(pem), SafeString(passphrase.c_str())); });
        // Not blamed on the pass phrase: it did decrypt the key.
        EXPECT_EQ(text, "Private key text is not a valid PEM private key. Reason: key parameters are inconsistent");
        EXPECT_FALSE(signer.hasKey());
    }
    // The same key, undamaged, still loads.
    RsaSigner signer;
    signer.setPriKeyPEM(SafeString(ocw_test::toPem(sharedRsaKey(), KeyFormat::Pkcs8Encrypted, passphrase)),
                        SafeString(passphrase.c_str()));
    EXPECT_TRUE(signer.hasKey());
}

TEST(RsaSigner, RefusesToSignWithoutKeyOrWithDigestOfWrongLength)
{
    RsaSigner signer;
    ByteBucket digest = Sha256Hasher::digest("x");
    EXPECT_NE(exceptionText([&] { signer.sign(digest); }), "<no exception>");
    signer.setPriKeyPEM(SafeString(ocw_test::toPem(sharedRsaKey(), KeyFormat::Pkcs8)), SafeString());
    ByteBucket shortDigest(digest.data(), 20);
    EXPECT_NE(exceptionText([&] { signer.sign(shortDigest); }), "<no exception>");
    EXPECT_EQ(signer.sign(digest).size(), 256u);
}

TEST(SafeString, KeepsTextAcrossGrowthCopyAndMove)
{
    SafeString s("pass");
    std::string big(5000, 'k');
    s.append(big.data(), big.size());
    EXPECT_EQ(s.size(), 5004u);
    EXPECT_EQ(std::string(s.c_str()).substr(0, 5), "passk");

    SafeString copy(s);
    EXPECT_TRUE(copy == s);
    SafeString moved(std::move(copy));
    EXPECT_TRUE(moved == s);
    EXPECT_TRUE(copy.empty());
    EXPECT_STREQ(copy.c_str(), "");

    EXPECT_FALSE(SafeString("abc") == SafeString("abd"));
    EXPECT_FALSE(SafeString("abc") == SafeString("ab"));
    s.clear();
    EXPECT_TRUE(s.empty());
}

TEST(SafeString, TakeFromWipesTheSourceString)
{
    std::string secret = "key text";
    SafeString taken = SafeString::takeFrom(secret);
    EXPECT_EQ(taken.str(), "key text");
    EXPECT_TRUE(secret.empty());
}

TEST(ByteBucket, HexAndStringViewsKeepEveryByte)
{
    const unsigned char raw[] = {0x00, 0x7f, 0xff, 0x10};
    ByteBucket b(raw, sizeof(raw));
    EXPECT_EQ(b.toHex(), "007fff10");
    EXPECT_EQ(b.toString(), std::string("\x00\x7f\xff\x10", 4));
    b.append(raw, 1);
    EXPECT_EQ(b.size(), 5u);
}
