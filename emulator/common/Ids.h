#pragma once
// Identifiers the emulator hands out. Thread-safe.
#include <string>

namespace ocwemu {

// "ocid1.<type>.oc1.<regionKey>.<unique>"; an empty region key gives the
// double dot of global resources ("ocid1.compartment.oc1..aaaa...").
std::string MakeOcid(const std::string& type, const std::string& regionKey);

// An opc-request-id in the service's "A/B/C" form (three groups of 32 hex
// digits, upper case).
std::string MakeRequestId();

// `n` random lower-case letters and digits.
std::string RandomAlnum(size_t n);

// 32 random hex digits grouped 8-4-4-4-12.
std::string RandomUuid();

}  // namespace ocwemu
