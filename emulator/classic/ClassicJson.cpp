#include "classic/ClassicJson.h"

#include <cstdio>

namespace ocwemu {

static void Write(const JValue& v, std::string& out) {
    switch (v.kind()) {
        case boost::json::kind::object: {
            out += '{';
            bool first = true;
            for (const auto& kv : v.get_object()) {
                if (!first) out += ", ";
                first = false;
                out += boost::json::serialize(boost::json::string_view(kv.key()));
                out += ": ";
                Write(kv.value(), out);
            }
            out += '}';
            break;
        }
        case boost::json::kind::array: {
            out += '[';
            bool first = true;
            for (const auto& e : v.get_array()) {
                if (!first) out += ", ";
                first = false;
                Write(e, out);
            }
            out += ']';
            break;
        }
        case boost::json::kind::double_: {
            // Compute Classic writes "cpus": 2.0; Boost.JSON would write 2E0.
            char buf[32];
            std::snprintf(buf, sizeof buf, "%.15g", v.get_double());
            const std::string text = buf;
            out += text;
            if (text.find_first_of(".eEn") == std::string::npos) out += ".0";
            break;
        }
        default:
            out += boost::json::serialize(v);
    }
}

std::string SpacedJson(const JValue& v) {
    std::string out;
    Write(v, out);
    return out;
}

void ClassicMessage(ApiResponse& res, int status, const std::string& message) {
    res.status = status;
    res.body = SpacedJson(JObject{{"message", message}});
    res.contentType = kComputeJson;
}

void ClassicError(ApiResponse& res, int status, const std::string&, const std::string& message) {
    ClassicMessage(res, status, message);
}

}  // namespace ocwemu
