#include "CommandDocs.h"

#include <functional>
#include <sstream>

namespace ocw {

namespace {

// Commands a user can name: hidden ones (empty group) are left out.
std::vector<const CLI::App*> Commands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
}

std::vector<CLI::App*> Commands(CLI::App& app) {
    return app.get_subcommands([](CLI::App* sub) { return !sub->get_group().empty(); });
}

// Options a user can give (hidden ones and the help flag left out).
std::vector<const CLI::Option*> Options(const CLI::App& app) {
    const CLI::Option* help = app.get_help_ptr();
    return app.get_options(
        [help](const CLI::Option* o) { return o != help && !o->get_group().empty() && o->nonpositional(); });
}

std::vector<const CLI::Option*> Positionals(const CLI::App& app) {
    return app.get_options([](const CLI::Option* o) { return o->get_positional(); });
}

bool TakesValue(const CLI::Option* o) { return o->get_items_expected_min() > 0; }

std::string Names(const CLI::Option* o) {
    std::string text;
    for (const std::string& s : o->get_snames()) text += (text.empty() ? "-" : ", -") + s;
    for (const std::string& l : o->get_lnames()) text += (text.empty() ? "--" : ", --") + l;
    return text;
}

std::string Join(const std::vector<std::string>& items, const char* separator) {
    std::string text;
    for (const std::string& item : items) text += (text.empty() ? "" : separator) + item;
    return text;
}

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* sub : Commands(app)) names.push_back(sub->get_name());
    return names;
}

std::string CommandPath(const CLI::App& app) {
    std::string path = app.get_name();
    for (const CLI::App* p = app.get_parent(); p != nullptr; p = p->get_parent()) path = p->get_name() + " " + path;
    return path;
}

// Options of app and of every app above it: ocw's globals fall through.
const CLI::Option* FindOption(CLI::App* app, const std::string& name) {
    for (; app != nullptr; app = app->get_parent()) {
        if (const CLI::Option* o = app->get_option_no_throw(name)) return o;
    }
    return nullptr;
}

void Walk(const CLI::App& app, const std::function<void(const CLI::App&)>& visit) {
    for (const CLI::App* sub : Commands(app)) {
        visit(*sub);
        Walk(*sub, visit);
    }
}

std::string Roff(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\\') out += "\\e";
        else if (c == '-') out += "\\-";
        else out += c;
    }
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out = "\\&" + out;
    return out;
}

void ManOption(std::ostream& out, const CLI::Option* o) {
    out << ".TP\n.B " << Roff(Names(o));
    if (TakesValue(o)) out << " \\fI" << Roff(o->get_type_name()) << "\\fR";
    out << '\n' << Roff(o->get_description()) << (o->get_required() ? " (required)" : "") << '\n';
}

}  // namespace

void AddGlobalOptionsToHelp(CLI::App& app, const std::string& footer) {
    std::ostringstream text;
    text << "Global options (before or after the command):\n";
    for (const CLI::Option* o : Options(app)) {
        std::string names = "  " + Names(o) + (TakesValue(o) ? " " + o->get_type_name() : "");
        if (names.size() < 28) names.resize(28, ' ');
        else names += "  ";
        text << names << o->get_description() << '\n';
    }
    text << '\n' << footer;
    const std::string withGlobals = text.str();
    std::function<void(CLI::App&)> set = [&](CLI::App& parent) {
        for (CLI::App* sub : Commands(parent)) {
            sub->footer(withGlobals);
            set(*sub);
        }
    };
    set(app);
    app.footer(footer);
}

std::string CheckCommandWords(CLI::App& app, const std::vector<std::string>& args) {
    CLI::App* current = &app;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& word = args[i];
        if (word == "--") break;
        if (word.size() > 1 && word[0] == '-') {
            if (word == "-h" || word == "--help" || word == "--version") return std::string();
            const CLI::Option* o = word.find('=') == std::string::npos ? FindOption(current, word) : nullptr;
            if (o != nullptr && TakesValue(o)) ++i;  // its value is not a command word
            continue;
        }
        if (Commands(*current).empty()) return std::string();  // the command's own arguments
        CLI::App* next = nullptr;
        for (CLI::App* sub : Commands(*current)) {
            if (sub->check_name(word)) next = sub;
        }
        if (next == nullptr) {
            return "unknown command '" + word + "' for '" + CommandPath(*current) +
                   "'; choices: " + Join(CommandNames(*current), ", ");
        }
        current = next;
    }
    if (!Commands(*current).empty() && current->get_require_subcommand_min() > 0) {
        return "'" + CommandPath(*current) + "' needs a command: " + Join(CommandNames(*current), ", ");
    }
    return std::string();
}

namespace {

void ManCommands(const CLI::App& app, std::ostream& out) {
    Walk(app, [&out](const CLI::App& command) {
        if (!Commands(command).empty()) return;  // groups: their commands are listed
        std::string usage = CommandPath(command);
        for (const CLI::Option* p : Positionals(command)) {
            usage += p->get_required() ? " " + p->get_name(true) : " [" + p->get_name(true) + "]";
        }
        out << ".SS \"" << Roff(usage) << "\"\n" << Roff(command.get_description()) << '\n';
        for (const CLI::Option* p : Positionals(command)) {
            out << ".TP\n.I " << Roff(p->get_name(true)) << '\n' << Roff(p->get_description()) << '\n';
        }
        for (const CLI::Option* o : Options(command)) ManOption(out, o);
    });
}

}  // namespace

void WriteManPage(const CLI::App& app, const std::string& version, std::ostream& out, const CLI::App* classic) {
    out << ".\\\" Generated by ocw from its command definitions; do not edit.\n";
    out << ".TH OCW 1 \"\" \"" << Roff(version) << "\" \"User Commands\"\n";
    out << ".SH NAME\nocw \\- " << Roff(app.get_description().substr(app.get_description().find(" - ") + 3)) << '\n';
    out << ".SH SYNOPSIS\n.B ocw\n[\\fIGLOBAL OPTIONS\\fR] \\fICOMMAND\\fR [\\fISUBCOMMAND\\fR] "
           "[\\fIARGUMENTS\\fR] [\\fIOPTIONS\\fR]\n";
    out << ".SH GLOBAL OPTIONS\nThey may stand before or after the command.\n";
    for (const CLI::Option* o : Options(app)) ManOption(out, o);
    out << ".TP\n.B \\-h, \\-\\-help\nhelp of ocw or of any command\n";
    out << ".SH COMMANDS\n";
    ManCommands(app, out);
    if (classic != nullptr) {
        out << ".SH CLOUD CLASSIC COMMANDS\nWith a profile that names compute_endpoint or paas_endpoint "
               "(a Cloud Classic account) ocw has these commands instead, plus demo.\n";
        ManCommands(*classic, out);
    }
    std::istringstream footer(app.get_footer());
    out << ".SH EXIT STATUS AND CONFIGURATION\n";
    for (std::string line; std::getline(footer, line);) out << Roff(line) << "\n.br\n";
    out << ".SH ENVIRONMENT\n.TP\n.B OCI_CLI_CONFIG_FILE\nthe OCI config file (default ~/.oci/config)\n"
           ".TP\n.B OCI_CLI_PROFILE\nits profile (default DEFAULT)\n"
           ".TP\n.B OCW_CONFIG\nthe agent configuration of the library\n";
    out << ".SH SEE ALSO\ndocs/cli.md and docs/configuration.md of OracleCloudSDKWrapper\n";
}

void WriteBashCompletion(const CLI::App& app, std::ostream& out) {
    std::string globals;
    for (const CLI::Option* o : Options(app)) {
        for (const std::string& s : o->get_snames()) globals += " -" + s;
        for (const std::string& l : o->get_lnames()) globals += " --" + l;
    }
    globals += " --help";
    std::ostringstream commands;
    std::ostringstream options;
    commands << "        \"\") echo \"" << Join(CommandNames(app), " ") << "\" ;;\n";
    Walk(app, [&](const CLI::App& command) {
        std::string path = CommandPath(command);
        path.erase(0, path.find(' ') + 1);  // without "ocw "
        if (!Commands(command).empty()) {
            commands << "        \"" << path << "\") echo \"" << Join(CommandNames(command), " ") << "\" ;;\n";
        }
        std::string names;
        for (const CLI::Option* o : Options(command)) {
            for (const std::string& s : o->get_snames()) names += " -" + s;
            for (const std::string& l : o->get_lnames()) names += " --" + l;
        }
        if (!names.empty()) options << "        \"" << path << "\") echo \"" << names.substr(1) << "\" ;;\n";
    });
    out << "# bash completion for ocw. Generated by ocw from its command definitions; do not edit.\n"
           "_ocw_commands() {\n    case \"$1\" in\n"
        << commands.str()
        << "    esac\n}\n"
           "_ocw_options() {\n    case \"$1\" in\n"
        << options.str()
        << "    esac\n}\n"
           "_ocw() {\n"
           "    local cur=\"${COMP_WORDS[COMP_CWORD]}\" path=\"\" word i\n"
           "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
           "        word=\"${COMP_WORDS[i]}\"\n"
           "        [[ \"$word\" == -* ]] && continue\n"
           "        case \" $(_ocw_commands \"$path\") \" in *\" $word \"*) path=\"${path:+$path }$word\" ;; esac\n"
           "    done\n"
           "    if [[ \"$cur\" == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$(_ocw_options \"$path\")"
        << globals
        << "\" -- \"$cur\"))\n"
           "    else\n"
           "        local commands\n"
           "        commands=\"$(_ocw_commands \"$path\")\"\n"
           "        if [[ -n \"$commands\" ]]; then\n"
           "            COMPREPLY=($(compgen -W \"$commands\" -- \"$cur\"))\n"
           "        else\n"
           "            COMPREPLY=($(compgen -f -- \"$cur\"))\n"
           "        fi\n"
           "    fi\n"
           "}\n"
           "complete -F _ocw ocw\n";
}

}  // namespace ocw
