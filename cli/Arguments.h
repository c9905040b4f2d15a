// Command-line arguments of one subcommand: options declared by the command,
// positional arguments in order. Unknown options are a usage error.
#pragma once
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace teskcolor {

struct SOptionSpec {
    const char* name;  // "--json"
    bool takesValue;
};

class CArguments {
public:
    // Throws CCliError(Usage) for an unknown option or a missing value.
    CArguments(const std::string& command, const std::vector<std::string>& args,
               const std::vector<SOptionSpec>& options);

    bool Has(const std::string& option) const { return m_flags.count(option) || m_values.count(option); }
    std::optional<std::string> Value(const std::string& option) const;
    // The value converted; a usage error names the option when it is not a number in [low, high].
    std::optional<double> Number(const std::string& option, double low, double high) const;
    const std::vector<std::string>& Positional() const { return m_positional; }
    // Exactly `count` positional arguments, or a usage error quoting `usage`.
    void ExpectPositional(size_t count, const std::string& usage) const;
    bool WantsHelp() const { return m_bHelp; }

private:
    std::string m_command;
    std::vector<std::string> m_positional;
    std::map<std::string, std::string> m_values;
    std::set<std::string> m_flags;
    bool m_bHelp = false;
};

}  // namespace teskcolor
