#include "tarnlib/sdescribeexception.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/print_strings.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/frsurlexception.h"
#include "tarnlib/sfileexception.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/sguid.h"
#include "tarnlib/strongencryptionexception.h"

using namespace TarnLibA500;

TEST(Exceptions, AreDescribedInOneLine) {
    const struct {
        void (*thrower)();
        const char* text;
    } cases[] = {
        {[] {
             throw SFileException(SFileException::openError, 2, "a.txt", SFileException::notFound,
                                  "Not there.\r\n", "");
         },
         "Failed to open the file a.txt.  Reason: Not there."},
        {[] {
             throw SFileException(SFileException::seekError, 6, "a.txt", SFileException::otherError,
                                  "Why.\r\n", "");
         },
         "Unknown error (exception).  a.txt: Why."},
        {[] {
             throw SFileSysException(SFileSysException::fsRemoveFailed, SFileSysException::reasonOther,
                                     "why\r\n", "P1", "", "more\n");
         },
         "Failed to remove the file P1 in a file system operation. Please check access rights or for a "
         "sharing "
         "violation.  Reason: why :more"},
        {[] { throw CSharedLibraryException("m.dll", "f", 127); }, "m.dll: has no function f (127): "},
        {[] { throw StrongEncryptionException(SCrypt::blankKey); },
         "Encryption/Decryption key passed in is blank."},
        {[] { throw SGUID::Error_InvalidString("x"); }, "\"x\" is no identifier."},
        {[] { throw FRSUrlException(FRSUrlException::frsInvalidUrl, "%1 is not %2", "x%2"); },
         "x%2 is not frs"},
        {[] { throw SAnsiString("two\r\n\r\nlines\n"); }, "two lines"},
        {[] { throw SAnsiStringCI("any case"); }, "any case"},
        {[] { throw std::logic_error("misuse\n"); }, "misuse"},
        {[] { throw 1; }, "an exception of an unknown type"},
    };
    for (const auto& c : cases) {
        try {
            c.thrower();
            ADD_FAILURE() << c.text;
        } catch (...) {
            const SAnsiString text = SDescribeException();
            EXPECT_EQ(text.left(SAnsiString(c.text).getNChars()), c.text);
            EXPECT_TRUE(text.find("\n").isAtEnd() && text.find("\r").isAtEnd());
        }
    }
    EXPECT_EQ(SDescribeException(), "no exception");
}
