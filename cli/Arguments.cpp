#include "cli/Arguments.h"

#include <cstdio>
#include <cstdlib>

#include "cli/Errors.h"
#include "cli/imageio/DeclaredSize.h"

namespace teskcolor {

namespace {

// Every command that reads images takes it; it holds for the whole run.
void SetPixelBudget(const std::string& command, const std::string& text) {
    char* end = nullptr;
    const long long pixels = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || pixels < 1)
        throw CCliError(EExit::Usage, command + ": --max-pixels takes a positive whole number");
    SetDefaultPixelBudget(pixels);
}

}  // namespace

CArguments::CArguments(const std::string& command, const std::vector<std::string>& args,
                       const std::vector<SOptionSpec>& options)
    : m_command(command) {
    bool onlyPositional = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (onlyPositional || arg.size() < 2 || arg[0] != '-') {
            m_positional.push_back(arg);
            continue;
        }
        if (arg == "--") {
            onlyPositional = true;
            continue;
        }
        if (arg == "--help" || arg == "-h") {
            m_bHelp = true;
            continue;
        }
        std::string name = arg;
        std::optional<std::string> inlineValue;
        if (size_t equals = arg.find('='); equals != std::string::npos) {
            name = arg.substr(0, equals);
            inlineValue = arg.substr(equals + 1);
        }
        if (name == "--max-pixels") {
            if (!inlineValue && i + 1 >= args.size()) throw CCliError(EExit::Usage, command + ": --max-pixels needs a value");
            SetPixelBudget(command, inlineValue ? *inlineValue : args[++i]);
            continue;
        }
        const SOptionSpec* optionSpec = nullptr;
        for (const SOptionSpec& option : options)
            if (name == option.name) optionSpec = &option;
        if (!optionSpec) throw CCliError(EExit::Usage, command + ": unknown option " + name + " (see --help)");
        if (!optionSpec->takesValue) {
            if (inlineValue) throw CCliError(EExit::Usage, command + ": " + name + " takes no value");
            m_flags.insert(name);
        } else if (inlineValue) {
            m_values[name] = *inlineValue;
        } else if (i + 1 < args.size()) {
            m_values[name] = args[++i];
        } else {
            throw CCliError(EExit::Usage, command + ": " + name + " needs a value");
        }
    }
}

std::optional<std::string> CArguments::Value(const std::string& option) const {
    auto found = m_values.find(option);
    if (found == m_values.end()) return std::nullopt;
    return found->second;
}

std::optional<double> CArguments::Number(const std::string& option, double low, double high) const {
    std::optional<std::string> text = Value(option);
    if (!text) return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(text->c_str(), &end);
    if (text->empty() || *end != '\0' || !(value >= low && value <= high))
    {
        char range[96];
        std::snprintf(range, sizeof range, " must be a number from %g to %g", low, high);
        throw CCliError(EExit::Usage, m_command + ": " + option + range);
    }
    return value;
}

void CArguments::ExpectPositional(size_t count, const std::string& usage) const {
    if (m_positional.size() != count) throw CCliError(EExit::Usage, "usage: teskcolor " + usage);
}

}  // namespace teskcolor
