// Request signatures per second, with and without the private key cache, for
// a plain and a pass-phrase-protected key. Without the cache every signature
// re-reads the PEM file and decodes (and, when encrypted, decrypts) the key,
// which is what a request cost before the cache existed.
//
//   bench_signing --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
//
// Results (Release build, medians, ratios) are kept in docs/benchmarks.md.
// With the cache a signature costs one open+fstat and the RSA operation.
#include <benchmark/benchmark.h>

#include "../tests/support/TempDir.h"
#include "../tests/support/TestKeys.h"
#include "transport/OCIConnectionUtils.h"
#include "transport/PrivateKeyCache.h"

using namespace OracleCloudSDKWrapper;

namespace {

struct KeyFiles {
    ocwtest::TempDir dir;
    std::string plain;
    std::string encrypted;
    KeyFiles()
    {
        ocwtest::PkeyPtr key = ocwtest::GenerateRsaKey(2048);
        plain = dir.write("plain.pem", ocwtest::ToPem(key.get(), ocwtest::KeyFormat::Pkcs1));
        encrypted = dir.write("encrypted.pem", ocwtest::ToPem(key.get(), ocwtest::KeyFormat::Pkcs8Encrypted, "bench-pass"));
    }
};

KeyFiles& keyFiles()
{
    static KeyFiles files;
    return files;
}

// state.range(0): 1 = cache on; state.range(1): 1 = encrypted key.
void BM_SignRequest(benchmark::State& state)
{
    const bool cache = state.range(0) != 0;
    const bool encrypted = state.range(1) != 0;
    const std::string& file = encrypted ? keyFiles().encrypted : keyFiles().plain;
    const SafeString pass(encrypted ? "bench-pass" : "");
    PrivateKeyCache::instance().setEnabled(cache);
    SOCISigningParts parts = OCIConnectionUtils::ComposeSigningString(
        "post", OCIConnectionUtils::GetCurrentGMTTimeString(), "post /20160918/volumes",
        "iaas.us-phoenix-1.oraclecloud.com", "{\"sizeInGBs\":50}");
    for (auto _ : state) {
        bool decryptFailed = false;
        ByteBucket signature;
        if (!OCIConnectionUtils::SignWithRSA_SHA256(file, parts.signingString, pass, decryptFailed, signature)) {
            state.SkipWithError("signing failed");
            break;
        }
        benchmark::DoNotOptimize(signature.data());
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(std::string(cache ? "cache" : "no cache") + (encrypted ? ", encrypted PKCS#8" : ", plain PKCS#1"));
    PrivateKeyCache::instance().setEnabled(true);
}

}  // namespace

BENCHMARK(BM_SignRequest)->ArgNames({"cache", "encrypted"})->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
