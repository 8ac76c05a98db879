#include "options.h"

#include "tarnlib/sstring.h"
#include "tarnlib/sstringconv.h"

namespace tarn {
namespace {

bool SameName(const std::string& word, const char* name) {
    return !word.empty() && word[0] == '-' && TarnLibA500::SAnsiStringCI(word.c_str() + 1) == name;
}

const Options::Rule& FindRule(const std::string& word, const std::vector<Options::Rule>& rules) {
    for (const Options::Rule& rule : rules) {
        if (SameName(word, rule.name)) return rule;
    }
    throw Failure(word[0] == '-' ? "there is no option " + word : "unexpected \"" + word + "\"");
}

}  // namespace

Options::Options(const Words& arguments, const std::vector<Rule>& rules) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Rule& rule = FindRule(arguments[i], rules);
        std::string value;
        if (rule.kind != Kind::Switch) {
            if (++i == arguments.size()) throw Failure(std::string("-") + rule.name + " needs a value");
            value = arguments[i];
        }
        values_[rule.name] = value;
    }
    for (const Rule& rule : rules) {
        if (rule.kind == Kind::RequiredValue && value(rule.name).empty()) {
            throw Failure(std::string("-") + rule.name + " is missing");
        }
    }
}

std::string Options::value(const char* name) const {
    const auto found = values_.find(name);
    return found != values_.end() ? found->second : std::string();
}

int Options::number(const char* name, int least, int most) const {
    int number = 0;
    const std::string word = value(name);
    const bool isNumber =
        !word.empty() && word.find_first_not_of("0123456789") == std::string::npos &&
        TarnLibA500::SStringConv::FromString(TarnLibA500::SAnsiString(word.c_str()), number);
    if (!isNumber || number < least || number > most)
        throw Failure(std::string("-") + name + " must be a number from " + std::to_string(least) + " to " +
                      std::to_string(most));
    return number;
}

bool AsksForHelp(const std::string& word) {
    return SameName(word, "help") || SameName(word, "-help") || SameName(word, "h") || SameName(word, "?");
}

bool AsksForVersion(const std::string& word) {
    return SameName(word, "version") || SameName(word, "-version");
}

}  // namespace tarn
