#pragma once
// The one error printer of ocw: failures, usage errors and interrupts all
// leave through it, on stderr. For people: the message, then a line with the
// failed request's ids (the provider's support finds a request by them) and a
// line naming the resource the command left behind with its last state. With
// --json: one JSON document {"error": {...}} with the same facts.
#include <boost/json.hpp>
#include <ostream>

#include "ExitCodes.h"

namespace ocw {

boost::json::object FailureToJson(const FailureReport& report);
void PrintFailure(std::ostream& err, const FailureReport& report, bool json);

// True when the failed request is worth trying again: throttled (429), a
// server or gateway error (500, 502, 503, 504), or no answer at all (a reset,
// a refused or timed-out connection).
bool IsTransient(const OracleCloudSDKWrapper::SOracleCloudFailureInfoLib& request);

}  // namespace ocw
