#include "CliFixture.h"

namespace ocwtest {

ocwemu::EmulatorOptions OwnEmulatorOptions(TempDir& stateDir, long long provisionMs) {
    ocwemu::EmulatorOptions options;
    options.provisionMs = provisionMs;
    options.stateDir = stateDir.path();
    return options;
}

const char* const kSeededInstances[4] = {"ocw-web-1", "ocw-web-2", "ocw-win-1", "ocw-app-1"};

CliResult CliTest::OcwRaw(const std::vector<std::string>& args, const CliRunOptions& options) {
    return RunProgram(OcwPath(), args, options);
}

CliResult CliTest::Ocw(const std::vector<std::string>& args, const CliRunOptions& options) {
    std::vector<std::string> all{"--config-file", info().ociConfig, "--ini", info().ini};
    all.insert(all.end(), args.begin(), args.end());
    return OcwRaw(all, options);
}

CliResult CliTest::OcwClassic(const std::vector<std::string>& args, const CliRunOptions& options) {
    std::vector<std::string> all{"--config-file", info().classicProfile, "--ini", info().ini};
    all.insert(all.end(), args.begin(), args.end());
    return OcwRaw(all, options);
}

std::string CliTest::Text(const boost::json::value& v, const std::string& key) {
    const boost::json::value* member = v.is_object() ? v.get_object().if_contains(key) : nullptr;
    return member != nullptr && member->is_string() ? std::string(member->get_string()) : std::string();
}

std::string CliTest::TextOf(const boost::json::value& list, const std::string& match, const std::string& value,
                            const std::string& key) {
    if (!list.is_array()) return std::string();
    for (const boost::json::value& item : list.get_array()) {
        if (Text(item, match) == value) return Text(item, key);
    }
    return std::string();
}

boost::json::value CliTest::Json(const CliResult& result) {
    boost::system::error_code ec;
    boost::json::value v = boost::json::parse(result.out, ec);
    if (ec) {
        ADD_FAILURE() << "stdout is not JSON: " << result.out << "\nstderr: " << result.err;
        return nullptr;
    }
    return v;
}

std::string CliTest::IdOf(const boost::json::value& list, const std::string& key, const std::string& value) {
    return TextOf(list, key, value, "id");
}

}  // namespace ocwtest
