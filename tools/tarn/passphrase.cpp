#include "passphrase.h"

#include "tarnlib/senvironment.h"
#include "tarnlib/sfile.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SEnvironment;
using TarnLibA500::SFile;

SAnsiString ReadPhrase(const Options& options) {
    if (options.count({"pass-env", "pass-file"}) != 1)
        throw Failure("one of -pass-env and -pass-file must be given");
    if (options.has("pass-file"))
        return SFile(options.value("pass-file").c_str(), SFile::readOnly, SFile::readWriteMask,
                     SFile::denyNothing)
            .readLine();
    SAnsiString value;
    const std::string name = options.value("pass-env");
    if (!SEnvironment::Get(name.c_str(), value)) throw Failure("there is no variable " + name);
    return value;
}

}  // namespace

PassPhrase::PassPhrase(const Options& options) : SAnsiString(ReadPhrase(options)) {
    if (isEmpty()) throw Failure("the pass phrase is empty");
}

}  // namespace tarn
