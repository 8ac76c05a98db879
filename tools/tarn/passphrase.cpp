#include "passphrase.h"

#include "tarnlib/senvironment.h"
#include "tarnlib/sfile.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SEnvironment;
using TarnLibA500::SFile;

SAnsiString FirstLineOf(const std::string& file) {
    return SFile(file.c_str(), SFile::readOnly, SFile::readWriteMask, SFile::denyNothing).readLine();
}

SAnsiString ValueOf(const std::string& variable) {
    SAnsiString value;
    if (!SEnvironment::Get(variable.c_str(), value))
        throw Failure("there is no environment variable " + variable);
    return value;
}

SAnsiString Read(const Options& options, const std::string& prefix, bool isNeeded) {
    const std::string variable = prefix + "-env";
    const std::string file = prefix + "-file";
    const int count = options.count({variable.c_str(), file.c_str()});
    if (count == 0 && !isNeeded) return SAnsiString();
    if (count != 1) throw Failure("one of -" + variable + " and -" + file + " must be given");
    const bool isInFile = options.has(file.c_str());
    const SAnsiString text =
        isInFile ? FirstLineOf(options.value(file.c_str())) : ValueOf(options.value(variable.c_str()));
    if (text.isEmpty() && isNeeded)
        throw Failure("what -" + (isInFile ? file : variable) + " names is empty");
    return text;
}

}  // namespace

PassPhrase::PassPhrase(const Options& options, const std::string& prefix, bool isNeeded)
    : SAnsiString(Read(options, prefix, isNeeded)) {}

}  // namespace tarn
