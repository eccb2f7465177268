#include "common/Ids.h"

#include <random>

namespace ocwemu {

static std::mt19937_64& Rng() {
    thread_local std::mt19937_64 rng{std::random_device{}()};
    return rng;
}

std::string RandomAlnum(size_t n) {
    static const char kAlphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::uniform_int_distribution<int> pick(0, 35);
    std::string out(n, 'a');
    for (auto& c : out) c = kAlphabet[pick(Rng())];
    return out;
}

static std::string RandomHex(size_t n, bool upper) {
    const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    std::uniform_int_distribution<int> pick(0, 15);
    std::string out(n, '0');
    for (auto& c : out) c = digits[pick(Rng())];
    return out;
}

std::string MakeOcid(const std::string& type, const std::string& regionKey) {
    // Real unique parts start with "aaaaaaaa" and are 60 characters long.
    return "ocid1." + type + ".oc1." + regionKey + ".aaaaaaaa" + RandomAlnum(52);
}

std::string MakeRequestId() {
    return RandomHex(32, true) + "/" + RandomHex(32, true) + "/" + RandomHex(32, true);
}

std::string RandomUuid() {
    std::string h = RandomHex(32, false);
    return h.substr(0, 8) + "-" + h.substr(8, 4) + "-" + h.substr(12, 4) + "-" + h.substr(16, 4) + "-" +
           h.substr(20);
}

}  // namespace ocwemu
