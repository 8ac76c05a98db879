#include "tarnlib/sdescribeexception.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <utility>

#include "support/print_strings.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/sfileexception.h"
#include "tarnlib/sfilesysexception.h"

using namespace TarnLibA500;

TEST(Exceptions, AreDescribedInOneLine) {
    using File = SFileException;
    using Sys = SFileSysException;
    const std::pair<std::exception_ptr, const char*> cases[] = {
        {std::make_exception_ptr(File(File::openError, 2, "a.txt", File::notFound, "Not there.\r\n", "")),
         "Failed to open the file a.txt.  Reason: Not there."},
        {std::make_exception_ptr(File(File::seekError, 6, "a.txt", File::otherError, "Why.\r\n", "")),
         "Unknown error (exception).  a.txt: Why."},
        {std::make_exception_ptr(Sys(Sys::fsRemoveFailed, Sys::reasonOther, "why\r\n", "P1", "", "more\n")),
         "Failed to remove the file P1 in a file system operation. Please check access rights or for a "
         "sharing violation.  Reason: why :more"},
        {std::make_exception_ptr(CSharedLibraryException("m.dll", "f", 127)),
         "m.dll: has no function f (127): "},
        {std::make_exception_ptr(SAnsiString("two\r\n\r\nlines\n")), "two lines"},
        {std::make_exception_ptr(SAnsiStringCI("any case")), "any case"},
        {std::make_exception_ptr(std::logic_error("misuse\n")), "misuse"},
        {std::make_exception_ptr(1), "an exception of an unknown type"}};
    for (const auto& [failure, expected] : cases) {
        try {
            std::rethrow_exception(failure);
        } catch (...) {
            const SAnsiString text = SDescribeException();
            EXPECT_EQ(text.left(SAnsiString(expected).getNChars()), expected);
            EXPECT_TRUE(text.find("\n").isAtEnd() && text.find("\r").isAtEnd());
        }
    }
    EXPECT_EQ(SDescribeException(), "no exception");
}
