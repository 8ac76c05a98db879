// On the top floor, because it knows the exceptions of all others. A new class is entered in Describe.
#include "tarnlib/sdescribeexception.h"

#include <exception>

#include "strings/base/asciichar.h"
#include "strings/text/lineend.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/csiftpexception.h"
#include "tarnlib/csismtpmailexception.h"
#include "tarnlib/frsurlexception.h"
#include "tarnlib/sfileexception.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/sguid.h"
#include "tarnlib/strongencryptionexception.h"

namespace TarnLibA500 {
namespace {

// Made when the library is loaded: sharing it takes no memory. Never destroyed, as handlers may run late.
const SAnsiString& outOfMemory = *new SAnsiString("out of memory");

// The summary, without its colon where nothing comes behind that.
template <class Failure>
SAnsiString Sentence(const Failure& failure) {
    const SAnsiString sentence = failure.toString();
    const SAnsiString summary = failure.summary();
    return summary == sentence + ":" ? sentence : summary;
}

// Some stages of a file's failure have a sentence that does not name the file.
SAnsiString FileSentence(const SFileException& failure) {
    SAnsiString sentence = Sentence(failure);
    if (!sentence.find(failure.fileName()).isAtEnd()) return sentence;
    return sentence + failure.fileName() + ": " + failure.reason();
}

SAnsiString Describe() {
    if (std::current_exception() == nullptr) return "no exception";
    try {
        throw;
    } catch (const SFileException& failure) {
        return FileSentence(failure);
    } catch (const SFileSysException& failure) {
        return Sentence(failure);
    } catch (const CSharedLibraryException& failure) {
        return failure.toString();
    } catch (const StrongEncryptionException& failure) {
        return failure.toString();
    } catch (const SGUID::Error& failure) {
        return failure.toString();
    } catch (const FRSUrlException& failure) {
        return failure.toString();
    } catch (const CSIftpException& failure) {
        return failure.toString();
    } catch (const CSISMTPMailException& failure) {
        return failure.toString();
    } catch (const SString_t<char, 0>& text) {
        return text;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "an exception of an unknown type";
    }
}

// A blank in place of each run of line ends. Line ends are no trail bytes in any code page.
SAnsiString OneLine(const SAnsiString& text) {
    SAnsiString line;
    const std::uint32_t length = LengthWithoutLineEnd(text.getString(), text.getLength());
    for (std::uint32_t i = 0; i < length; ++i) {
        const char c = text.getString()[i];
        if (!IsLineEnd(c)) {
            line.concat(c);
        } else if (!IsLineEnd(text.getString()[i + 1])) {
            line.concat(' ');
        }
    }
    return line;
}

}  // namespace

SAnsiString SDescribeException() noexcept {
    try {
        return OneLine(Describe());
    } catch (...) {
        return outOfMemory;
    }
}

}  // namespace TarnLibA500
