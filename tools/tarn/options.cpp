#include "options.h"

#include <algorithm>

#include "tarnlib/sstring.h"
#include "tarnlib/sstringconv.h"

namespace tarn {
namespace {

bool SameName(const std::string& word, const char* name) {
    return !word.empty() && word[0] == '-' && TarnLibA500::SAnsiStringCI(word.c_str() + 1) == name;
}

const char* Find(const std::string& word, const std::vector<const char*>& names) {
    for (const char* name : names) {
        if (SameName(word, name)) return name;
    }
    return nullptr;
}

}  // namespace

Options::Options(const Words& arguments, const Names& names) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (const char* const name = Find(word, names.switches)) {
            values_[name] = {""};
            continue;
        }
        const char* name = Find(word, names.values);
        if (name == nullptr) name = Find(word, names.required);
        if (name == nullptr)
            throw Failure(word[0] == '-' ? "there is no option " + word : "unexpected \"" + word + "\"");
        if (++i == arguments.size()) throw Failure(std::string("-") + name + " needs a value");
        values_[name].push_back(arguments[i]);
    }
    for (const char* name : names.required) {
        if (value(name).empty()) throw Failure(std::string("-") + name + " is missing");
    }
}

int Options::count(const std::vector<const char*>& names) const {
    return static_cast<int>(
        std::count_if(names.begin(), names.end(), [this](const char* name) { return has(name); }));
}

std::string Options::value(const char* name) const {
    const auto found = values_.find(name);
    return found != values_.end() ? found->second.back() : std::string();
}

Words Options::values(const char* name) const {
    const auto found = values_.find(name);
    return found != values_.end() ? found->second : Words();
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
