#include "Failure.h"

namespace ocw {

namespace {

std::string StatusText(const OracleCloudSDKWrapper::SOracleCloudFailureInfoLib& r) {
    if (r.httpStatus != 0) return "HTTP " + std::to_string(r.httpStatus);
    if (!r.transferError.empty()) return "no answer: " + r.transferError;
    return r.attempts == 0 ? "not sent" : "no answer";
}

}  // namespace

bool IsTransient(const OracleCloudSDKWrapper::SOracleCloudFailureInfoLib& r) {
    if (r.request.empty() || r.attempts == 0) return false;
    const long s = r.httpStatus;
    return s == 429 || s == 500 || s == 502 || s == 503 || s == 504 || (s == 0 && !r.transferError.empty());
}

boost::json::object FailureToJson(const FailureReport& report) {
    boost::json::object error{{"message", report.message}, {"exitCode", static_cast<int>(report.code)}};
    const auto& r = report.request;
    if (!r.request.empty()) {
        error["request"] = r.request;
        error["httpStatus"] = r.httpStatus;
        if (!r.serviceCode.empty()) error["code"] = r.serviceCode;
        if (!r.serviceMessage.empty()) error["serviceMessage"] = r.serviceMessage;
        if (!r.serviceRequestId.empty()) error["opcRequestId"] = r.serviceRequestId;
        if (!r.clientRequestId.empty()) error["clientRequestId"] = r.clientRequestId;
        if (!r.transferError.empty()) error["transferError"] = r.transferError;
        error["attempts"] = r.attempts;
    }
    if (!report.resource.id.empty()) {
        error["resource"] = boost::json::object{{"id", report.resource.id}, {"lastState", report.resource.lastState}};
    }
    return boost::json::object{{"error", std::move(error)}};
}

void PrintFailure(std::ostream& err, const FailureReport& report, bool json) {
    if (json) {
        err << boost::json::serialize(FailureToJson(report)) << '\n';
        err.flush();
        return;
    }
    err << "ocw: " << report.message << '\n';
    const auto& r = report.request;
    if (!r.request.empty()) {
        // The service's id is the one its support looks up; it echoes or
        // extends the one the library sent.
        const std::string id = !r.serviceRequestId.empty() ? r.serviceRequestId : r.clientRequestId;
        err << "ocw: " << r.request << ": " << StatusText(r) << ", " << r.attempts
            << (r.attempts == 1 ? " attempt" : " attempts");
        if (!id.empty()) err << ", opc-request-id " << id;
        if (!r.clientRequestId.empty() && r.clientRequestId != id) err << " (sent as " << r.clientRequestId << ")";
        err << '\n';
    }
    if (!report.resource.id.empty()) {
        err << "ocw: resource " << report.resource.id << ", last state "
            << (report.resource.lastState.empty() ? "not read yet" : report.resource.lastState)
            << "; it may still change in the cloud\n";
    }
    err.flush();
}

}  // namespace ocw
