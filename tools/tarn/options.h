#pragma once

#include <map>
#include <string>
#include <vector>

#include "command.h"

namespace tarn {

/// Options of a command: "-name value", or "-name" alone for a switch. Names are compared without regard to
/// case; the last of several counts. A value may begin with "-".
class Options {
  public:
    /// The options that a command has.
    struct Names {
        std::vector<const char*> required = {};  ///< with a value, and never left out
        std::vector<const char*> values = {};    ///< with a value
        std::vector<const char*> switches = {};
    };

    /// Throws Failure with a sentence for the user.
    Options(const Words& arguments, const Names& names);

    bool has(const char* name) const { return values_.count(name) != 0; }
    /// How many of these options were given.
    int count(const std::vector<const char*>& names) const;
    /// Empty for an option that was not given.
    std::string value(const char* name) const;
    /// All values of an option that may be given several times, in order.
    Words values(const char* name) const;
    /// Throws Failure when the value is no number of that range.
    int number(const char* name, int least, int most) const;

  private:
    std::map<std::string, Words> values_;  // one empty value for a switch
};

/// True for "-help" and the other spellings that people try.
bool AsksForHelp(const std::string& word);
bool AsksForVersion(const std::string& word);

}  // namespace tarn
