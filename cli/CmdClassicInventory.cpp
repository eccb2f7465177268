// Cloud Classic: keypairs, security-lists, networks (the account's SSH key
// pairs, security lists and IP networks).
#include <functional>
#include <iostream>
#include <memory>

#include "ClassicJson.h"
#include "Commands.h"
#include "Output.h"

namespace ocw {

using OracleCloudSDKWrapper::COracleCloudWrapper;

namespace {

template <class Record>
void PrintAll(Session& s, const std::string& what, const std::vector<Column>& columns,
              const std::function<bool(COracleCloudWrapper&, std::vector<Record>&)>& list,
              boost::json::object (*toJson)(const Record&)) {
    std::vector<Record> records;
    s.call("list " + what, [&](COracleCloudWrapper& c) { return list(c, records); });
    ListOutput out(columns);
    for (const Record& r : records) out.add(toJson(r));
    out.print(std::cout, s.json());
}

}  // namespace

CLI::App* AddOneArgumentCommand(CLI::App& group, Action& action, const std::string& name, const std::string& help,
                                const std::string& argument, const std::string& argumentHelp,
                                std::function<void(Session&, const std::string&)> run) {
    auto value = std::make_shared<std::string>();
    CLI::App* cmd = group.add_subcommand(name, help);
    cmd->add_option(argument, *value, argumentHelp)->required();
    cmd->callback([&action, value, run] { action = [value, run](Session& s) { run(s, *value); }; });
    return cmd;
}

void RegisterClassicInventoryCommands(CLI::App& app, Action& action) {
    app.add_subcommand("keypairs", "the account's SSH key pairs")->callback([&action] {
        action = [](Session& s) {
            PrintAll<OracleCloudSDKWrapper::SKeyPairInfoLib>(
                s, "SSH key pairs", {{"name", "NAME"}, {"fullName", "FULL_NAME"}},
                [](COracleCloudWrapper& c, auto& out) { return c.GetKeyPairList(out); }, &ClassicKeyPairJson);
        };
    });
    app.add_subcommand("security-lists", "the account's security lists")->callback([&action] {
        action = [](Session& s) {
            PrintAll<OracleCloudSDKWrapper::SSecurityGroupInfoLib>(
                s, "security lists", {{"name", "NAME"}, {"fullName", "FULL_NAME"}},
                [](COracleCloudWrapper& c, auto& out) { return c.GetSecurityGroupList(out, ""); },
                &ClassicSecurityListJson);
        };
    });
    app.add_subcommand("networks", "the account's IP networks")->callback([&action] {
        action = [](Session& s) {
            PrintAll<OracleCloudSDKWrapper::SNetworkInfoLib>(
                s, "IP networks", {{"name", "NAME"}, {"ipAddressPrefix", "PREFIX"}, {"fullName", "FULL_NAME"}},
                [](COracleCloudWrapper& c, auto& out) { return c.GetNetworkList(out, "", "", ""); },
                &ClassicNetworkJson);
        };
    });
}

}  // namespace ocw
